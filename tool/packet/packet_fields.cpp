#include "tool/packet/packet_fields.h"

#include <algorithm>

#include "platform/core/adtext.h"
#include "platform/foundation/cexception.h"
#include "platform/foundation/cmapstringtostring.h"
#include "tool/packet/exception_text.h"
#include "ztimporter/importrecordparser.h"

namespace tool {

namespace {

bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char unit) { return static_cast<unsigned char>(unit) < 0x80U; });
}

bool SameAsciiLetter(char a, char b) {
    const auto lower = [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    };
    return lower(a) == lower(b);
}

}  // namespace

std::string ReadPacketFields(const std::string& packet, PacketFields& fields) {
    fields.clear();
    CMapStringToString map;
    try {
        AdImportRecordParser parser;
        parser.SetInputData(packet.c_str());
        if (parser.NextRecord() == 0) {
            return "no record is found in it";
        }
        parser.GetRecordMap(map);
    } catch (CException* exception) {
        return TakeText(exception);
    }
    Obx_String name;
    Obx_String value;
    for (auto position = map.GetStartPosition(); position != nullptr;) {
        map.GetNextAssoc(position, name, value);
        if (!value.IsEmpty()) {
            fields.emplace_back(name.ToUtf8(), value.ToUtf8());
        }
    }
    return {};
}

FieldRole RoleOf(std::string_view fieldName, const recorddb::schema::RecordType& type,
                 const ImportConfiguration& configuration) {
    if (type.HasStates() && EqualNoCase(fieldName, recorddb::schema::stateName)) {
        return FieldRole::State;
    }
    if (EqualNoCase(fieldName, configuration.OriginalId())) {
        return FieldRole::OriginalId;
    }
    return EqualNoCase(fieldName, configuration.DuplicateId()) ? FieldRole::DuplicateId
                                                               : FieldRole::Value;
}

std::string OriginalIdOf(const PacketFields& fields, const recorddb::schema::RecordType& type,
                         const ImportConfiguration& configuration) {
    if (configuration.OriginalId().empty()) {
        return {};
    }
    std::string id;
    for (const auto& [name, value] : fields) {
        if (RoleOf(name, type, configuration) == FieldRole::OriginalId) {
            id = value;
        }
    }
    return id;
}

const std::string* HistoryValue(const PacketFields& fields) {
    const auto found = std::find_if(fields.begin(), fields.end(), [](const auto& field) {
        return EqualNoCase(field.first, "history");
    });
    return found == fields.end() ? nullptr : &found->second;
}

bool EqualNoCase(std::string_view a, std::string_view b) {
    if (IsAscii(a) && IsAscii(b)) {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(), SameAsciiLetter);
    }
    return Obx_String::FromUtf8(a).CompareNoCase(Obx_String::FromUtf8(b)) == 0;
}

bool IsBlankWord(std::string_view value) {
    // Most values are far longer; no letter's other cases take more than three bytes.
    constexpr std::string_view word = "BLANK";
    return value.size() <= word.size() * 3 && EqualNoCase(value, word);
}

std::string Trimmed(std::string_view text) {
    Obx_String trimmed = Obx_String::FromUtf8(text);
    trimmed.TrimLeft();
    trimmed.TrimRight();
    return trimmed.ToUtf8();
}

}  // namespace tool
