#ifndef TESTS_TOOL_GUARDED_PACKETS_H
#define TESTS_TOOL_GUARDED_PACKETS_H

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "recorddb/database.h"
#include "tool/guarded/guarded_text.h"
#include "tool/packet/packet_head.h"
#include "tool/packet/xml_text.h"
#include "verify/verify_fixture.h"

namespace tool {

// Values as they stand in guarded packets.
inline std::string Xml(const std::string& value, PacketPlace place = PacketPlace::Text) {
    return EscapedAttribute(Guarded(value, place));
}

inline std::string List(const std::vector<std::string>& items) {
    std::string list;
    for (const std::string& item : items) {
        list += (list.empty() ? "" : ",") + Xml(item, PacketPlace::ListItem);
    }
    return list;
}

inline std::string HistoryLineXml(const std::vector<std::string>& columns) {
    std::string line;
    for (const std::string& column : columns) {
        line += Xml(column, PacketPlace::HistoryColumn) + "\t";
    }
    line.back() = '\n';
    return line;
}

inline std::string AttachmentXml(const std::string& path, const std::string& description) {
    return "1\n" + Xml(path, PacketPlace::AttachmentLine) + "\n\n" +
           Xml(description, PacketPlace::AttachmentLine) + "\n";
}

inline constexpr const char* kMapped =
    "<importstate name=\"TRUE\"/><replacereflist name=\"TRUE\"/><duplicate_id name=\"twin\"/>"
    "<record_reference_mapping_list><m target_field=\"owner\" reference_field=\"email\"/>"
    "<m target_field=\"keywords\" reference_field=\"name\"/></record_reference_mapping_list>";

// Loads of guarded packets that were written by hand.
class GuardedPackets : public OnEachEngine<VerifyFixture> {
  protected:
    std::vector<std::string> Data(const std::string& name, const std::string& type,
                                  const std::string& key, const std::vector<Fields>& records,
                                  const std::string& more = "",
                                  const std::string& data = "record") {
        return {Configuration(name + "-configuration.xml", data, type, key, more),
                GuardedFile(name + ".xml", records)};
    }

    std::string GuardedFile(const std::string& name, const std::vector<Fields>& records) {
        std::string text(kPacketDeclaration);
        text += "\n" + std::string(kGuardedInstruction) + "\n<records>\n";
        for (const Fields& fields : records) {
            text += RecordXml(fields);
        }
        return m_folder.Write(name, text + "</records>\n");
    }

    std::vector<std::string> Bugs(const std::string& name, const std::vector<Fields>& records,
                                  const std::string& more = "",
                                  const std::string& data = "record") {
        return Data(name, "bug", "source_id", records, more, data);
    }

    std::vector<std::string> Column(const std::string& sql) {
        const auto database =
            recorddb::Database::Open(m_database, recorddb::Database::Mode::ReadOnly);
        auto& statement = database->GetConnection().Prepare(sql);
        const recorddb::sql::ResetGuard guard(statement);
        std::vector<std::string> values;
        while (statement.Step()) {
            values.emplace_back(statement.Text(0));
        }
        return values;
    }

    std::string Content(const std::string& path) const {
        std::ifstream file(path);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::string MakeFile(const std::string& name) {
        std::ofstream(m_options.attachments / name) << "content of " << name;
        return name;
    }
};

}  // namespace tool

#endif
