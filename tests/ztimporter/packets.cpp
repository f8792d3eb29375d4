#include "tests/ztimporter/packets.h"

namespace {

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char character : text) {
        switch (character) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default:
                escaped += character;
        }
    }
    return escaped;
}

std::string Item(const std::string& name, const std::string& value) {
    return "<" + name + " name=\"" + Escaped(value) + "\"/>";
}

std::string Item(const std::string& name, bool value) {
    return Item(name, std::string(value ? "TRUE" : "FALSE"));
}

}  // namespace

std::string Configuration::Packet() const {
    std::string list;
    for (const auto& [target, reference] : mapping) {
        list += "<map target_field=\"" + target + "\" reference_field=\"" + reference + "\"/>";
    }
    return "<configuration>" + Item("import_data", importData) + Item("original_id", originalId) +
           Item("duplicate_id", duplicateId) + Item("record_type", recordType) +
           Item("updateinsert", updateInsert) + Item("replacereflist", replaceRefList) +
           Item("updaterecord", updateRecord) + Item("importstate", importState) +
           "<record_reference_mapping_list>" + list +
           "</record_reference_mapping_list></configuration>";
}

std::string Record(const Pairs& fields) {
    std::string record = "<record>";
    for (const auto& [name, value] : fields) {
        record += "<field name=\"" + Escaped(name) + "\">" + Escaped(value) + "</field>";
    }
    return record + "</record>";
}

std::string Packet(const std::vector<std::string>& records) {
    std::string packet = "<records>";
    for (const std::string& record : records) {
        packet += record;
    }
    return packet + "</records>";
}

std::string HistoryLines(const std::vector<std::vector<std::string>>& lines) {
    std::string value;
    for (const auto& columns : lines) {
        const char* separator = "";
        for (const std::string& column : columns) {
            value += separator + column;
            separator = "\t";
        }
        value += "\n";
    }
    return value;
}

std::string ManyHistoryLines(int count) {
    std::vector<std::vector<std::string>> lines;
    for (int number = 1; number <= count; ++number) {
        const std::string digits = std::to_string(number);
        lines.push_back({digits, "2024-01-01 10:00:00", "user " + digits, "modify", "NEW", "OPEN"});
    }
    return HistoryLines(lines);
}

std::string AttachmentLines(const std::string& dbid, const std::string& fileName,
                            const std::string& description) {
    return dbid + "\n" + fileName + "\n12\n" + description + "\n";
}
