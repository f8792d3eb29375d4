#ifndef TESTS_RECORDDB_SESSION_RANDOM_WORK_H
#define TESTS_RECORDDB_SESSION_RANDOM_WORK_H

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "recorddb/integrity.h"
#include "session_fixture.h"

namespace recorddb {

// Does work at random on the records of a database of its own, the same for the same seed, and
// notes what it is told. There are few values, so that keys collide, lists grow and duplicates
// close circles.
class RandomWork : public SessionTest {
  public:
    // Whether what the work will need is asked for before each group, too.
    enum class Ahead { Nothing, Much };

    RandomWork(std::uint64_t seed, Writing writing, Ahead ahead = Ahead::Nothing,
               Engine engine = Engine::Sqlite)
        : SessionTest(engine), m_seed(seed), m_writing(writing), m_ahead(ahead) {
        std::filesystem::create_directories(Folder().Path() / "files");
        for (const char* const name : {"a", "b", "c"}) {
            Folder().Write(std::string("files/") + name, std::string(name) + "-content");
        }
        OpenSession(Options());
    }

    // Groups of few records from now on.
    void KeepGroupsSmall() {
        m_fewest = 1;
        m_spread = 3;
    }

    // Works through groups, each in a transaction, which is committed or dropped.
    void Run(int groups) {
        for (int group = 0; group < groups; ++group) {
            TakeTurn(group, nullptr);
        }
    }

    // Does the same with another session, which is `lag` groups ahead.
    void RunAhead(int groups, int lag) {
        const auto other = Database::Open(Location(), Database::Mode::ReadWrite);
        m_turn = AdPtr<Session>(&Core());
        m_turn->RememberWrites(static_cast<std::size_t>(lag) + 1);
        m_turn->BeginTransaction(Writing::Gathered)->Commit();
        const AdPtr<Session> ahead = other->OpenSession(Options());
        std::deque<Gathered> gathered;
        for (int group = 0; group < groups + lag; ++group) {
            if (group < groups) {
                UseSession(ahead);
                m_schema = &other->GetSchema();
                gathered.push_back(WorkAhead(group));
                m_schema = nullptr;
                UseSession(m_turn);
            }
            if (group >= lag) {
                TakeTurn(group - lag, &gathered.front());
                gathered.pop_front();
            }
        }
    }
    // How many groups were adopted by RunAhead.
    int Adopted() const { return m_adopted; }

    const std::vector<std::string>& Told() const { return m_told; }

    // All tables, but for what tells the time of day.
    std::vector<std::string> Tables() {
        std::vector<std::string> tables;
        for (const char* const sql :
             {"SELECT * FROM \"user\" ORDER BY dbid", "SELECT * FROM place ORDER BY dbid",
              "SELECT * FROM desk ORDER BY dbid", "SELECT * FROM lane ORDER BY dbid",
              "SELECT * FROM bug ORDER BY dbid", "SELECT * FROM task ORDER BY dbid",
              "SELECT * FROM bug__watchers ORDER BY record, position",
              "SELECT * FROM zt_history ORDER BY record_type, record, entry",
              "SELECT * FROM zt_attachment ORDER BY dbid",
              "SELECT sha256, chunk FROM zt_content ORDER BY sha256, chunk",
              "SELECT record_type, duplicate, original FROM zt_duplicate ORDER BY 1, 2"}) {
            tables.push_back(Row(sql));
        }
        return tables;
    }

    using SessionTest::Base;

    // What the database finds wrong with itself.
    std::vector<std::string> Faults() {
        std::vector<std::string> faults;
        CheckIntegrity(
            Base(),
            [&faults](const recorddb::Fault& fault) {
                faults.push_back(fmt::format("{} {} {} {}: {}", fault.type, fault.id, fault.field,
                                             fault.value, fault.problem));
            },
            [](std::uint64_t) { return true; });
        return faults;
    }

    void TestBody() override {}

  private:
    using Strings = std::vector<std::string>;

    struct Gathered {
        std::unique_ptr<GatheredWork> work;  // null: it cannot be done ahead
        std::uint64_t moment = 0;
    };

    SessionOptions Options() const {
        SessionOptions options;
        options.attachmentsFolder = Folder().File("files");
        return options;
    }

    // What a group does depends on its number and on what it is told.
    bool BeginGroup(int group) {
        m_state = (m_seed * 2 + 1) * (2 * static_cast<std::uint64_t>(group) + 1);
        return Below(10) != 0;
    }

    void Work(SessionTransaction& transaction, int group) {
        m_open.clear();
        if (m_ahead == Ahead::Much) {
            LookAhead(transaction, group);
        }
        const std::size_t records = m_fewest + Below(m_spread);
        for (std::size_t record = 0; record < records; ++record) {
            WorkUnderSavepoint(transaction, 0);
        }
        m_open.clear();
    }

    void TakeTurn(int group, Gathered* gathered) {
        const bool isKept = BeginGroup(group);
        const auto transaction = Core().BeginTransaction(m_writing);
        if (gathered != nullptr && gathered->work &&
            transaction->Adopt(*gathered->work, gathered->moment)) {
            ++m_adopted;
        } else {
            Work(*transaction, group);
        }
        if (isKept) {
            transaction->Commit();
        }
        Note("done", Totals());
    }

    Gathered WorkAhead(int group) {
        BeginGroup(group);
        Gathered gathered{.work = {}, .moment = m_turn->Moment()};
        {
            const auto transaction = Core().BeginTransaction(Writing::Ahead);
            Work(*transaction, group);
            gathered.work = Core().Failure() ? nullptr : transaction->Take();
        }
        Core().ForgetFailure();
        return gathered;
    }

    std::size_t Below(std::size_t bound) {
        m_state ^= m_state << 13U;
        m_state ^= m_state >> 7U;
        m_state ^= m_state << 17U;
        return static_cast<std::size_t>((m_state >> 11U) % bound);
    }
    const char* OneOf(const std::vector<const char*>& texts) { return texts[Below(texts.size())]; }
    std::string Numbered(const char* name, std::size_t bound) {
        return name + std::to_string(1 + Below(bound));
    }

    void Note(const std::string& what, const std::string& told) {
        m_told.push_back(what + ": " + told);
    }
    // Notes what the work returns, or throws as a message.
    void Try(const std::string& what, const std::function<std::string()>& work) {
        std::string told;
        const std::string thrown = Thrown([&] { told = work(); });
        Note(what, thrown.empty() ? told : "thrown " + thrown);
    }

    std::string Totals() {
        const Statistics& done = Core().GetStatistics();
        return fmt::format("{} {} {} {} {} {}", done.recordsCreated, done.recordsUpdated,
                           done.historyEntries, done.attachments, done.duplicateLinks,
                           done.commits);
    }

    // All values that the work has for the fields by which it searches; a share of them, another
    // one in each group, with what stands beside the records that are found.
    void LookAhead(SessionTransaction& transaction, int group) {
        std::vector<ExpectedSearch> searches;
        const auto expect = [&](const char* type, const std::vector<const char*>& fields,
                                const Strings& values) {
            const auto share = static_cast<std::size_t>(group) + searches.size();
            ExpectedSearch& search = searches.emplace_back();
            search.type = (m_schema != nullptr ? *m_schema : Base().GetSchema()).FindType(type);
            for (std::size_t i = 0; i < fields.size(); ++i) {
                search.values.emplace_back(search.type->FindField(fields[i]), values[i]);
            }
            search.fields = share % 3 != 0;
            search.listKeys = share % 2 != 0;
            search.history = share % 4 != 0;
            search.attachments = share % 5 != 0;
            search.original = share % 6 != 0;
        };
        for (int i = 1; i <= 12; ++i) {
            const std::string number = std::to_string(i);
            expect("bug", {"source_id"}, {"id" + number});
            expect("bug", {"id"}, {schema::FormatDisplayId("BUG", i)});
            expect("bug", {"dbid"}, {number});
            expect("bug", {"votes"}, {number});
            expect("bug", {"title"}, {"text" + number});
            expect("user", {"login"}, {"u" + number});
            expect("user", {"email"}, {"text" + number});
            expect("place", {"town", "street"}, {"t" + number, "s" + std::to_string(i % 3)});
            expect("lane", {"place", "number"}, {number, number});
        }
        transaction.LookAhead(searches);
    }

    void WorkUnderSavepoint(SessionTransaction& transaction, int depth) {
        const auto savepoint = transaction.Savepoint();
        for (std::size_t steps = 1 + Below(3); steps > 0; --steps) {
            Step();
        }
        if (depth < 2 && Below(8) == 0) {
            WorkUnderSavepoint(transaction, depth + 1);
            Step();
        }
        if (Below(5) == 0) {
            savepoint->Rollback();
        } else {
            savepoint->Release();
        }
    }

    void Step() {
        switch (Below(14)) {
            case 0:
            case 1:
            case 2:
                return Try("create", [&] { return Create(); });
            case 3:
            case 4:
            case 5:
                return Try("update", [&] { return Update(); });
            case 6:
            case 7:
                return Try("history", [&] { return AddHistory(); });
            case 8:
                return Try("duplicate", [&] { return Mark(); });
            case 9:
                return Try("attach", [&] { return ChangeAttachments(); });
            case 10:
                return Try("search", [&] { return Search(); });
            case 11:
                return Try("read", [&] { return Read(); });
            default:
                return Try("again", [&] { return CommitAgain(); });
        }
    }

    std::string Create() {
        switch (Below(8)) {
            case 0:
                return Fill(New("user"), {"login", "email", "team"});
            case 1:
                return Fill(New("place"), {"town", "street", "note"});
            case 2:
                return Fill(New("desk"), {"owner"});
            case 3:
                return Fill(New("lane"), {"place", "number"});
            case 4:
                return Fill(New("task", OneOf({"", "DONE", "LOST"})), {"title"});
            default:
                return Fill(New("bug", OneOf({"", "ASSIGNED"})),
                            {"source_id", "title", "severity", "owner", "parent", "watchers",
                             "place", "desk", "lane", "votes", "opened"});
        }
    }

    std::string ValueFor(std::string_view field) {
        if (field == "login" || field == "owner") {
            return Numbered("u", 6);
        }
        if (field == "watchers") {
            return Below(6) == 0 ? "" : Numbered("u", 6);
        }
        if (field == "desk") {
            return fmt::format("{} u{}", 1 + Below(4), 1 + Below(6));
        }
        if (field == "place") {
            return fmt::format("t{} s{}", 1 + Below(3), 1 + Below(2));
        }
        if (field == "lane") {
            return fmt::format("t{} s{} {}", 1 + Below(3), 1 + Below(2), 1 + Below(2));
        }
        if (field == "parent") {
            return schema::FormatDisplayId("BUG", static_cast<std::int64_t>(1 + Below(8)));
        }
        if (field == "source_id") {
            return Numbered("id", 12);
        }
        if (field == "town") {
            return Numbered("t", 3);
        }
        if (field == "street") {
            return Numbered("s", 2);
        }
        if (field == "number" || field == "votes") {
            return std::to_string(1 + Below(3));
        }
        if (field == "severity") {
            return OneOf({"minor", "major", "", "odd"});
        }
        if (field == "opened") {
            return OneOf({"2020-01-02", "2021-02-03 04:05:06", "", "never"});
        }
        return Below(8) == 0 ? "" : Numbered("text", 4);
    }

    // Sets some of the fields, and validates and commits.
    std::string Fill(const AdEntityPtr& record, const std::vector<std::string_view>& fields) {
        std::string told;
        for (const std::string_view field : fields) {
            if (Below(4) == 0) {
                continue;
            }
            const std::string value = ValueFor(field);
            const bool isItem = field == "watchers" && !value.empty();
            told += fmt::format("{}={} {} ", field, value,
                                isItem && Below(3) == 0 ? Remove(record, field, value)
                                : isItem                ? Add(record, field, value)
                                                        : Refusal(record, field, value));
        }
        return told + Finish(record);
    }

    std::string Finish(const AdEntityPtr& record) {
        std::string told;
        if (Below(6) != 0) {
            told = Fault(record) + " / ";
        }
        if (Below(8) == 0) {
            m_open.push_back(record);
            return told + "kept";
        }
        told += CommitFault(record);
        if (Below(4) == 0) {
            m_open.push_back(record);
        }
        return told;
    }

    AdEntityPtr SomeBug() {
        if (Below(2) == 0) {
            return Open("bug",
                        schema::FormatDisplayId("BUG", static_cast<std::int64_t>(1 + Below(9))));
        }
        const Strings found = Find("bug", "dbid", "source_id", ValueFor("source_id"), 100);
        return Core().ImportEntity(Type("bug"), Text("").Units(),
                                   Text(found.empty() ? "1" : found.front()).Units());
    }

    std::string Update() {
        switch (Below(8)) {
            case 0:
                return Fill(Open("user", ValueFor("owner")), {"login", "email", "team"});
            case 1:
                return Fill(Open("place", ValueFor("place")), {"town", "street", "note"});
            case 2:
                return Fill(Open("lane", ValueFor("lane")), {"place", "number"});
            default:
                break;
        }
        const std::vector<std::string_view> plain = {"title",  "severity", "owner",
                                                     "parent", "watchers", "votes"};
        const std::vector<std::string_view> withKey = {"source_id", "title", "watchers"};
        return Fill(SomeBug(), Below(4) == 0 ? withKey : plain);
    }

    // Commits a record that was left open, after another change perhaps.
    std::string CommitAgain() {
        if (m_open.empty()) {
            return "none";
        }
        const AdEntityPtr record = m_open[Below(m_open.size())];
        std::string told = Value(record, "dbid") + " ";
        if (record->GetEntityDef()->GetName().ToUtf8() == "bug" && Below(2) == 0) {
            told += Refusal(record, "title", ValueFor("title")) + " ";
        }
        return told + CommitFault(record);
    }

    std::string AddHistory() {
        const long record = Below(6) == 0 ? 77 : static_cast<long>(1 + Below(8));
        Obx_String problems;
        for (std::size_t rounds = 1 + Below(2); rounds > 0; --rounds) {
            std::vector<AdHistory> entries;
            for (std::size_t count = 1 + Below(4); count > 0; --count) {
                entries.push_back(Entry(record));
            }
            CEnumArray<int, int> indexes(50);
            Core().ImportHistoryData(entries.data(), static_cast<long>(entries.size()), -1, indexes,
                                     problems, nullptr, nullptr);
            if (Below(8) == 0) {
                Core().RevertImportHistory();
            }
            Core().CommitImportHistory();
        }
        if (Below(2) == 0) {
            Core().UpdateImportHistoryExpiredTimestamp(Type("bug"), record);
        }
        return problems.ToUtf8();
    }

    AdHistory Entry(long record) {
        AdHistory entry{};
        const auto put = [](auto& to, const std::string& text) {
            std::copy(text.begin(), text.end(), to);
        };
        entry.recordId = record;
        entry.recordTypeId = Type("bug")->GetDbId();
        put(entry.sourceIdField, "source_id");
        put(entry.recordTypeName, "bug");
        put(entry.actionTime, fmt::format("2020-01-01 00:00:{:02}", Below(9)));
        if (Below(6) == 0) {
            put(entry.expiryTime, fmt::format("2020-01-01 00:00:{:02}", Below(9)));
        }
        put(entry.userName, Numbered("u", 3));
        put(entry.actionName, "modify");
        return entry;
    }

    std::string Mark() {
        const AdEntityPtr duplicate = SomeBug();
        const AdEntityPtr original = SomeBug();
        Core().MarkEntityAsDuplicate(duplicate, original,
                                     Type("bug")->LookupActionDef(AdActionType_t::kDuplicate), 1);
        return Finish(duplicate);
    }

    std::string ChangeAttachments() {
        const AdEntityPtr bug = SomeBug();
        std::string told;
        const Strings there = Values(bug, "files");
        if (!there.empty() && Below(2) == 0) {
            const std::string& gone = there[Below(there.size())];
            told += bug->DeleteAttachment(Text("files"), Text(gone)).ToUtf8();
        }
        if (Below(4) != 0) {
            const std::string file = OneOf({"a", "b", "c", "missing"});
            told += bug->AddAttachment(Text("files"), Text(file), Text("")).ToUtf8();
        }
        told += Below(3) == 0 ? Refusal(bug, "title", ValueFor("title")) : "";
        return told + Finish(bug);
    }

    Strings Find(std::string_view type, std::string_view column, std::string_view field,
                 std::string_view value, long limit) {
        AdQueryDefPtr query = Core().BuildQueryDef(Type(type), 0);
        query->SelectField(1, Type(type)->GetFieldPath(Text(column), 0));
        query->BuildFilter(nullptr, Text(field), AdCompOp_t::kEqual, Text(value), 1);
        const AdResultSetPtr result = Core().BuildResultSet(query);
        result->SetRowLimit(limit);
        result->Prepare();
        result->Execute();
        Strings found;
        int status = 1;
        for (result->FetchNext(status); status == 1; result->FetchNext(status)) {
            Obx_String text;
            result->GetColumn(1, text, 0);
            found.push_back(text.ToUtf8());
        }
        return found;
    }

    std::string Search() {
        const long limit = Below(2) == 0 ? 0 : static_cast<long>(1 + Below(3));
        const auto field = OneOf({"source_id", "title", "severity", "owner", "votes", "state"});
        const std::string value =
            std::string_view(field) == "state" ? OneOf({"NEW", "CLOSED"}) : ValueFor(field);
        const auto column = OneOf({"dbid", "id", "source_id", "title", "owner"});
        return fmt::format("{} where {}={}: {}", column, field, value,
                           fmt::join(Find("bug", column, field, value, limit), ","));
    }

    std::string Read() {
        const AdEntityPtr bug = SomeBug();
        std::string told;
        for (const char* const field :
             {"dbid", "id", "state", "source_id", "title", "owner", "place", "desk", "lane",
              "parent", "watchers", "files", "log"}) {
            told += fmt::format("{}={} ", field, fmt::join(Values(bug, field), ","));
        }
        return told;
    }

    std::uint64_t m_seed;
    std::uint64_t m_state = 1;
    std::size_t m_fewest = 5;
    std::size_t m_spread = 20;
    AdPtr<Session> m_turn;                     // that of RunAhead whose transactions count
    const schema::Schema* m_schema = nullptr;  // of the session that works ahead, while it does
    int m_adopted = 0;
    Writing m_writing;
    Ahead m_ahead;
    std::vector<AdEntityPtr> m_open;
    std::vector<std::string> m_told;
};

}  // namespace recorddb

#endif
