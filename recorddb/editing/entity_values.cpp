#include <fmt/format.h>

#include <string>

#include "recorddb/editing/entity.h"

// The values of an open record as texts.

namespace recorddb {

using schema::Field;
using schema::FieldKind;

std::vector<Obx_String> Entity::ValuesOf(const Field& field) {
    if (field.kind == FieldKind::DbId) {
        return {Obx_String::FromUtf8(std::to_string(DbId()))};
    }
    if (field.kind == FieldKind::DisplayId && m_record.IsNew()) {
        return {Obx_String::FromUtf8(schema::FormatDisplayId(m_record.Type().prefix, DbId()))};
    }
    if (field.kind == FieldKind::History) {
        return m_record.IsNew() ? std::vector<Obx_String>() : HistoryLines();
    }
    if (field.kind == FieldKind::Attachments) {
        std::vector<Obx_String> texts;
        for (const Attachment& attachment : Attachments(field)) {
            texts.push_back(Obx_String::FromUtf8(AttachmentText(attachment)));
        }
        return texts;
    }
    Load(field);
    std::vector<Obx_String> values;
    for (const std::string& text : m_parts->keys.TextsOf(field, m_record.buffer.Get(field.index))) {
        values.push_back(Obx_String::FromUtf8(text));
    }
    return values;
}

// The entries as the lines of a packet's history field.
std::vector<Obx_String> Entity::HistoryLines() {
    std::vector<Obx_String> lines;
    for (const HistoryEntry& entry : m_parts->history.Load(m_record.Type().id, m_record.dbid)) {
        lines.push_back(Obx_String::FromUtf8(
            fmt::format("{}\t{}\t{}\t{}\t{}\t{}", entry.entry, entry.actionTime, entry.userName,
                        entry.actionName, entry.oldState, entry.newState)));
    }
    return lines;
}

std::int64_t Entity::DbId() {
    if (m_record.dbid == 0) {
        m_record.dbid = m_parts->dbids.Reserve(m_record.Type());
    }
    return m_record.dbid;
}

}  // namespace recorddb
