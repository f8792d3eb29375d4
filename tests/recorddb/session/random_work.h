#ifndef TESTS_RECORDDB_SESSION_RANDOM_WORK_H
#define TESTS_RECORDDB_SESSION_RANDOM_WORK_H

#include <fmt/format.h>

#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "random_steps.h"
#include "recorddb/integrity.h"

namespace recorddb {

// Does work at random in transactions on a database of its own, the same for the same seed.
class RandomWork : public RandomSteps {
  public:
    // Whether what the work will need is asked for before each group, too.
    enum class Ahead { Nothing, Much };

    RandomWork(std::uint64_t seed, Writing writing, Ahead ahead = Ahead::Nothing,
               Engine engine = Engine::Sqlite)
        : RandomSteps(engine), m_seed(seed), m_writing(writing), m_ahead(ahead) {
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

  private:
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
        BeginWith((m_seed * 2 + 1) * (2 * static_cast<std::uint64_t>(group) + 1));
        return Below(10) != 0;
    }

    void Work(SessionTransaction& transaction, int group) {
        CloseAll();
        if (m_ahead == Ahead::Much) {
            LookAhead(transaction, group);
        }
        const std::size_t records = m_fewest + Below(m_spread);
        for (std::size_t record = 0; record < records; ++record) {
            WorkUnderSavepoint(transaction, 0);
        }
        CloseAll();
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

    std::uint64_t m_seed;
    std::size_t m_fewest = 5;
    std::size_t m_spread = 20;
    AdPtr<Session> m_turn;                     // that of RunAhead whose transactions count
    const schema::Schema* m_schema = nullptr;  // of the session that works ahead, while it does
    int m_adopted = 0;
    Writing m_writing;
    Ahead m_ahead;
};

}  // namespace recorddb

#endif
