#ifndef TESTS_RECORDDB_SESSION_RANDOM_STEPS_H
#define TESTS_RECORDDB_SESSION_RANDOM_STEPS_H

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "session_fixture.h"

namespace recorddb {

// Steps of work at random on the records of a session, the same for the same state that they begin
// with; it notes what it is told. There are few values, so that keys collide, lists grow and
// duplicates close circles. The order in which random numbers are taken is fixed by statements of
// their own, since compilers evaluate arguments in different orders.
class RandomSteps : public SessionTest {
  public:
    const std::vector<std::string>& Told() const { return m_told; }

    void TestBody() override {}

  protected:
    using SessionTest::SessionTest;
    using Strings = std::vector<std::string>;

    void BeginWith(std::uint64_t state) { m_state = state; }

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

    // Leaves what the last steps kept open.
    void CloseAll() { m_open.clear(); }

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

  private:
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
            const std::string desk = Numbered("", 4);
            return desk + " " + Numbered("u", 6);
        }
        if (field == "place") {
            const std::string town = Numbered("t", 3);
            return town + " " + Numbered("s", 2);
        }
        if (field == "lane") {
            const std::string place = ValueFor("place");
            return place + " " + Numbered("", 2);
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
        const AdEntityPtr bug = SomeBug();
        return Fill(bug, Below(4) == 0 ? withKey : plain);
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

    std::uint64_t m_state = 1;
    std::vector<AdEntityPtr> m_open;
    std::vector<std::string> m_told;
};

}  // namespace recorddb

#endif
