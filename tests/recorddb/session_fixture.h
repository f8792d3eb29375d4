#ifndef TESTS_RECORDDB_SESSION_FIXTURE_H
#define TESTS_RECORDDB_SESSION_FIXTURE_H

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "made_database.h"
#include "platform/messages/pamsgexception.h"
#include "recorddb/database.h"
#include "recorddb/schema.h"
#include "recorddb/session.h"
#include "temporary_folder.h"

namespace recorddb {

inline constexpr const char* kTrackerSchema = R"(record_types:
  user:
    key: [login]
    spread: true
    fields:
      login: {type: text, max_length: 10, required: true}
      email: {type: text, unique: true}
      team: {type: text}
  place:
    key: [town, street]
    fields:
      town: {type: text}
      street: {type: text}
      note: {type: text}
  desk:
    key: [dbid, owner]
    fields:
      owner: {type: reference, to: user}
  lane:
    key: [place, number]
    fields:
      place: {type: reference, to: place}
      number: {type: integer}
  bug:
    prefix: BUG
    states: [NEW, ASSIGNED, CLOSED]
    duplicate_state: CLOSED
    fields:
      source_id: {type: text, unique: true}
      title: {type: text, max_length: 20, required: true}
      description: {type: multiline}
      severity: {type: choice, choices: [minor, major]}
      opened: {type: datetime}
      votes: {type: integer}
      owner: {type: reference, to: user}
      place: {type: reference, to: place}
      desk: {type: reference, to: desk}
      lane: {type: reference, to: lane}
      parent: {type: reference, to: bug}
      watchers: {type: reference_list, to: user}
      files: {type: attachments}
      log: {type: history}
  task:
    prefix: TASK
    states: [OPEN, DONE]
    fields:
      title: {type: text}
)";

inline Obx_String Text(std::string_view utf8) {
    return Obx_String::FromUtf8(utf8);
}

// A session with a new database in a folder of its own, and a few verbs to work with it.
class SessionTest : public testing::Test {
  protected:
    explicit SessionTest(Engine engine = Engine::Sqlite)
        : m_place(engine, m_folder.File("tracker.db"), kTrackerSchema) {
        Reopen();
    }

    const std::string& Location() const { return m_place.Location(); }
    bool IsFile() const { return m_place.IsFile(); }

    void Reopen(Database::Mode mode = Database::Mode::ReadWrite) {
        m_session = {};
        m_database.reset();
        m_database = Database::Open(Location(), mode);
        OpenSession({});
    }

    void OpenSession(const SessionOptions& options) {
        m_session = m_database->OpenSession(options);
    }

    // Works on with another session on the same file.
    void UseSession(AdPtr<Session> session) { m_session = std::move(session); }

    Session& Core() { return *m_session; }
    Database& Base() { return *m_database; }
    const TemporaryFolder& Folder() const { return m_folder; }

    AdEntityDef* Type(std::string_view name) { return Core().GetEntityDef(Text(name)); }

    AdEntityPtr New(std::string_view type, std::string_view state = {}) {
        return Core().ImportEntity(Type(type), Text(state).Units(), nullptr);
    }

    AdEntityPtr Open(std::string_view type, std::string_view id, std::string_view state = {}) {
        const std::string dbid = Value(Core().GetEntity(Type(type), Text(id)), "dbid");
        return Core().ImportEntity(Type(type), Text(state).Units(), Text(dbid).Units());
    }

    static std::string Refusal(const AdEntityPtr& record, std::string_view field,
                               std::string_view value) {
        return record->SetFieldValue(Text(field), Text(value), 1).ToUtf8();
    }

    static void Set(const AdEntityPtr& record, std::string_view field, std::string_view value) {
        EXPECT_EQ(Refusal(record, field, value), "");
    }

    static std::string Add(const AdEntityPtr& record, std::string_view field,
                           std::string_view value) {
        return record->AddFieldValue(Text(field), Text(value), 1).ToUtf8();
    }

    static std::string Remove(const AdEntityPtr& record, std::string_view field,
                              std::string_view value) {
        return record->DeleteFieldValue(Text(field), Text(value), 1).ToUtf8();
    }

    static std::string Value(const AdEntityPtr& record, std::string_view field) {
        return record->GetFieldValue(Text(field))->GetValue().ToUtf8();
    }

    static std::vector<std::string> Values(const AdEntityPtr& record, std::string_view field) {
        CStringArray values;
        record->GetFieldValue(Text(field))->GetValue(values);
        std::vector<std::string> texts;
        for (const Obx_String& value : values) {
            texts.push_back(value.ToUtf8());
        }
        return texts;
    }

    static std::string Fault(const AdEntityPtr& record) {
        PaMessage message;
        record->Validate(message);
        return message.FullMsg().ToUtf8();
    }

    static std::string CommitFault(const AdEntityPtr& record) {
        PaMessage message;
        record->Commit(message);
        return message.FullMsg().ToUtf8();
    }

    static void Save(const AdEntityPtr& record) {
        EXPECT_EQ(Fault(record), "");
        EXPECT_EQ(CommitFault(record), "");
    }

    using Fields = std::vector<std::pair<std::string_view, std::string_view>>;

    // A new record with these fields, already committed.
    AdEntityPtr Given(std::string_view type, const Fields& fields) {
        const AdEntityPtr record = New(type);
        for (const auto& [field, value] : fields) {
            Set(record, field, value);
        }
        Save(record);
        return record;
    }

    // The one row of a query, its columns separated by bars, "NULL" for none.
    std::string Row(std::string_view sql) {
        sql::Statement& statement = Base().GetConnection().Prepare(sql);
        const sql::ResetGuard guard(statement);
        std::string row;
        while (statement.Step()) {
            row += row.empty() ? "" : ";";
            for (int column = 0; column < statement.ColumnCount(); ++column) {
                row += column == 0 ? "" : "|";
                row += statement.IsNull(column) ? "NULL" : std::string(statement.Text(column));
            }
        }
        return row;
    }

    // An expression for bytes in a column as the text that they are.
    std::string Content(const std::string& column) const {
        return IsFile() ? "CAST(" + column + " AS TEXT)" : "convert_from(" + column + ", 'UTF8')";
    }

    // The message of the exception that the work throws; empty when it throws none.
    template <typename Work>
    static std::string Thrown(Work work) {
        try {
            work();
        } catch (PaMsgException* exception) {
            return AdExtractFirstMsgAndDeleteException(exception).ToUtf8();
        }
        return {};
    }

  private:
    TemporaryFolder m_folder;
    MadeDatabase m_place;
    std::unique_ptr<Database> m_database;
    AdPtr<Session> m_session;
};

}  // namespace recorddb

#endif
