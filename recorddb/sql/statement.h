#ifndef RECORDDB_SQL_STATEMENT_H
#define RECORDDB_SQL_STATEMENT_H

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace recorddb::sql {

// Text that dies at the end of the expression it stands in, and so cannot be borrowed.
template <typename T>
concept DyingText = std::same_as<T, std::string> || std::same_as<T, std::optional<std::string>>;

// A prepared statement with parameters $1, $2 ... One execution goes:
//
//     statement.BindAll(type, record);          // every parameter that is not to be NULL
//     while (statement.Step()) { ... statement.Text(0) ... }
//
// or BindAll and Execute for a statement that returns no rows. An execution ends, and the
// parameters become NULL again, when Step returns false, when Execute returns, when either throws,
// and at Reset. Who stops stepping early says Reset, best through a ResetGuard: a statement left
// in mid-air keeps its snapshot of the database open.
//
// A statement holds one execution at a time. Binding while one is under way throws Error.
class Statement {
  public:
    Statement() = default;
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    virtual ~Statement() = default;

    // Parameters count from 1. Text (UTF-8) and blobs are borrowed, not copied: the caller keeps
    // them alive and unchanged until the execution ends. Throw Error for a parameter that the
    // statement does not have.
    virtual void BindInt(int parameter, std::int64_t value) = 0;
    virtual void BindText(int parameter, std::string_view text) = 0;
    virtual void BindBlob(int parameter, std::span<const std::byte> data) = 0;
    virtual void BindNull(int parameter) = 0;

    // Advances to the next row; true when there is one. Throws Error.
    virtual bool Step() = 0;

    // Runs the statement to its end and returns the number of rows it inserted, changed or
    // deleted. Throws Error.
    virtual std::int64_t Execute() = 0;

    // Ends the execution under way, if any, and sets the parameters to NULL.
    virtual void Reset() noexcept = 0;

    // Columns of the current row, counted from 0. Views live until the next Step or Reset. A NULL
    // reads as 0 or as an empty view.
    virtual bool IsNull(int column) const = 0;
    virtual std::int64_t Int(int column) const = 0;
    virtual std::string_view Text(int column) const = 0;
    virtual std::span<const std::byte> Blob(int column) const = 0;
    virtual int ColumnCount() const = 0;

    void Bind(int parameter, std::integral auto value) {
        BindInt(parameter, static_cast<std::int64_t>(value));
    }
    void Bind(int parameter, std::string_view text) { BindText(parameter, text); }
    void Bind(int parameter, std::span<const std::byte> data) { BindBlob(parameter, data); }
    void Bind(int parameter, std::nullptr_t) { BindNull(parameter); }
    template <typename T>
    void Bind(int parameter, const std::optional<T>& value) {
        if (value) {
            Bind(parameter, *value);
        } else {
            BindNull(parameter);
        }
    }

    template <DyingText T>
    void Bind(int parameter, T&& text) = delete;

    // Binds $1, $2 ... in turn.
    template <typename... Values>
    void BindAll(Values&&... values) {
        int parameter = 0;
        (Bind(++parameter, std::forward<Values>(values)), ...);
    }
};

// Ends the execution of a statement at the end of a scope.
class ResetGuard {
  public:
    explicit ResetGuard(Statement& statement) : m_statement(statement) {}
    ResetGuard(const ResetGuard&) = delete;
    ResetGuard& operator=(const ResetGuard&) = delete;
    ~ResetGuard() { m_statement.Reset(); }

  private:
    Statement& m_statement;
};

// Runs a query whose parameters are bound and returns the first column of its first row; nothing
// when there is no row or the column is NULL.
inline std::optional<std::int64_t> QueryInt(Statement& statement) {
    const ResetGuard guard(statement);
    if (!statement.Step() || statement.IsNull(0)) {
        return std::nullopt;
    }
    return statement.Int(0);
}

}  // namespace recorddb::sql

#endif
