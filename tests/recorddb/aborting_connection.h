#ifndef TESTS_RECORDDB_ABORTING_CONNECTION_H
#define TESTS_RECORDDB_ABORTING_CONNECTION_H

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "recorddb/errors.h"
#include "recorddb/sql.h"

namespace recorddb::sql {

// A connection to an engine that, once a statement failed in a transaction, refuses everything in
// it but a roll-back, of the whole or to a savepoint. It works on another connection, on which
// nothing else may begin transactions.
class AbortingConnection final : public Connection {
  public:
    explicit AbortingConnection(std::unique_ptr<Connection> base) : m_base(std::move(base)) {}

    Statement& Prepare(std::string_view sql) override {
        auto& statement = m_statements[std::string(sql)];
        if (statement == nullptr) {
            statement = PrepareOwn(sql);
        }
        return *statement;
    }
    std::unique_ptr<Statement> PrepareOwn(std::string_view sql) override {
        return std::make_unique<AbortingStatement>(*this, m_base->PrepareOwn(sql));
    }
    void ExecuteScript(std::string_view sql) override {
        Do([&] { m_base->ExecuteScript(sql); });
    }
    bool HasTable(std::string_view name) override { return m_base->HasTable(name); }
    bool HasIndex(std::string_view name) override { return m_base->HasIndex(name); }
    const Dialect& GetDialect() const override { return m_base->GetDialect(); }
    bool IsReadOnly() const override { return m_base->IsReadOnly(); }
    bool TransactionSurvivesErrors() const override { return false; }

  protected:
    void Run(Control control) override {
        const auto run = [this](const char* sql) { m_base->PrepareOwn(sql)->Execute(); };
        switch (control) {
            case Control::Begin:
            case Control::BeginReading:
                run("BEGIN IMMEDIATE");
                m_open = true;
                break;
            case Control::Commit:
                Do([&] { run("COMMIT"); });
                m_open = false;
                break;
            case Control::Rollback:
                run("ROLLBACK");
                m_open = m_aborted = false;
                break;
            case Control::BeginSavepoint:
                Do([&] { run("SAVEPOINT part"); });
                break;
            case Control::ReleaseSavepoint:
                Do([&] { run("RELEASE part"); });
                break;
            case Control::RollbackToSavepoint:
                run("ROLLBACK TO part");
                m_aborted = false;
                break;
        }
    }
    bool EngineInTransaction() const override { return m_open; }

  private:
    class AbortingStatement final : public Statement {
      public:
        AbortingStatement(AbortingConnection& owner, std::unique_ptr<Statement> base)
            : m_owner(owner), m_base(std::move(base)) {}

        void BindInt(int parameter, std::int64_t value) override {
            m_base->BindInt(parameter, value);
        }
        void BindText(int parameter, std::string_view text) override {
            m_base->BindText(parameter, text);
        }
        void BindBlob(int parameter, std::span<const std::byte> data) override {
            m_base->BindBlob(parameter, data);
        }
        void BindNull(int parameter) override { m_base->BindNull(parameter); }
        bool Step() override {
            return m_owner.Do([this] { return m_base->Step(); });
        }
        std::int64_t Execute() override {
            return m_owner.Do([this] { return m_base->Execute(); });
        }
        void Reset() noexcept override { m_base->Reset(); }
        bool IsNull(int column) const override { return m_base->IsNull(column); }
        std::int64_t Int(int column) const override { return m_base->Int(column); }
        std::string_view Text(int column) const override { return m_base->Text(column); }
        std::span<const std::byte> Blob(int column) const override { return m_base->Blob(column); }
        int ColumnCount() const override { return m_base->ColumnCount(); }

      private:
        AbortingConnection& m_owner;
        std::unique_ptr<Statement> m_base;
    };

    template <typename Work>
    auto Do(Work work) -> decltype(work()) {
        if (m_aborted) {
            throw Error(ErrorKind::Other, "the transaction is aborted", "");
        }
        try {
            return work();
        } catch (const Error&) {
            m_aborted = m_open;
            throw;
        }
    }

    std::unique_ptr<Connection> m_base;
    std::unordered_map<std::string, std::unique_ptr<Statement>> m_statements;
    bool m_open = false;
    bool m_aborted = false;
};

}  // namespace recorddb::sql

#endif
