#include "tool/sources/mapped/key_book.h"

#include <cstddef>
#include <span>
#include <stdexcept>
#include <utility>

#include "recorddb/errors.h"

namespace tool {

namespace {

constexpr const char* kTables = R"(
CREATE TABLE known_key(step INTEGER, key TEXT, first INTEGER, file INTEGER, number INTEGER,
                       line INTEGER, hash TEXT, PRIMARY KEY(step, key)) WITHOUT ROWID;
CREATE TABLE known_value(field INTEGER, value TEXT, PRIMARY KEY(field, value)) WITHOUT ROWID;
CREATE TABLE part(first INTEGER, record BLOB);
)";

// A failure of the temporary database is not one of the record database.
template <typename Work>
decltype(auto) OnKeyBook(Work&& work) {
    try {
        return std::forward<Work>(work)();
    } catch (const recorddb::sql::Error& error) {
        throw std::runtime_error("the temporary file that a map needs cannot be used (" +
                                 error.DriverText() +
                                 "); make room in the folder for temporary files, or name another "
                                 "one in TMPDIR");
    }
}

std::unique_ptr<recorddb::sql::Connection> OpenWithTables() {
    return OnKeyBook([] {
        auto scratch = recorddb::sql::OpenScratch();
        scratch->ExecuteScript(kTables);
        return scratch;
    });
}

}  // namespace

KeyBook::KeyBook()
    : m_scratch(OpenWithTables()),
      m_work(*m_scratch),
      m_insertKey(m_scratch->Prepare("INSERT INTO known_key VALUES ($1,$2,$3,$4,$5,$6,$7) "
                                     "ON CONFLICT DO NOTHING")),
      m_selectKey(m_scratch->Prepare("SELECT first, file, number, line, hash FROM known_key "
                                     "WHERE step = $1 AND key = $2")),
      m_insertValue(
          m_scratch->Prepare("INSERT INTO known_value VALUES ($1,$2) ON CONFLICT DO NOTHING")),
      m_selectValue(
          m_scratch->Prepare("SELECT 1 FROM known_value WHERE field = $1 AND value = $2")),
      m_insertPart(m_scratch->Prepare("INSERT INTO part VALUES ($1,$2)")),
      m_deleteParts(m_scratch->Prepare("DELETE FROM part")) {}

KeyBook::~KeyBook() = default;

std::optional<KeyBook::Known> KeyBook::Note(std::size_t step, std::string_view key,
                                            const Known& record) {
    return OnKeyBook([&]() -> std::optional<Known> {
        m_insertKey.BindAll(step, key, record.first, record.place.file, record.place.number,
                            record.place.line, std::string_view(record.hash));
        if (m_insertKey.Execute() > 0) {
            return std::nullopt;
        }
        const recorddb::sql::ResetGuard guard(m_selectKey);
        m_selectKey.BindAll(step, key);
        m_selectKey.Step();
        Known known;
        known.first = static_cast<std::uint64_t>(m_selectKey.Int(0));
        known.place.file = static_cast<std::uint32_t>(m_selectKey.Int(1));
        known.place.number = static_cast<std::uint64_t>(m_selectKey.Int(2));
        known.place.line = static_cast<std::uint64_t>(m_selectKey.Int(3));
        known.hash = m_selectKey.Text(4);
        return known;
    });
}

void KeyBook::AddValue(std::size_t field, std::string_view value) {
    OnKeyBook([&] {
        m_insertValue.BindAll(field, value);
        m_insertValue.Execute();
    });
}

bool KeyBook::HasValue(std::size_t field, std::string_view value) {
    return OnKeyBook([&] {
        m_selectValue.BindAll(field, value);
        return recorddb::sql::QueryInt(m_selectValue).has_value();
    });
}

void KeyBook::Add(const MadeRecord& record) {
    m_buffer.clear();
    AppendRecord(record, m_buffer);
    OnKeyBook([&] {
        m_insertPart.BindAll(record.first, std::as_bytes(std::span(m_buffer)));
        m_insertPart.Execute();
    });
}

bool KeyBook::Next(MadeRecord& record) {
    return OnKeyBook([&] {
        if (!std::exchange(m_isReading, true)) {
            m_parts = m_scratch->PrepareScan("SELECT record FROM part ORDER BY first, rowid");
        }
        if (!m_parts->Step()) {
            m_isReading = false;
            m_parts.reset();
            m_deleteParts.Execute();
            return false;
        }
        const std::span<const std::byte> blob = m_parts->Blob(0);
        ReadRecord({reinterpret_cast<const char*>(blob.data()), blob.size()}, record);
        return true;
    });
}

}  // namespace tool
