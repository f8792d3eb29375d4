#include "tool/sources/mapped/key_book.h"

#include <cstddef>
#include <functional>
#include <span>
#include <stdexcept>
#include <utility>

#include "recorddb/errors.h"
#include "tool/io/byte_codec.h"

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
      m_insertKey(m_scratch->Prepare("INSERT INTO known_key VALUES ($1,$2,$3,$4,$5,$6,$7)")),
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
    if (!MayHave(step, key)) {
        Keep(step, key, record);
        return std::nullopt;
    }
    return OnKeyBook([&]() -> std::optional<Known> {
        InsertKept();
        const recorddb::sql::ResetGuard guard(m_selectKey);
        m_selectKey.BindAll(step, key);
        if (!m_selectKey.Step()) {
            Keep(step, key, record);
            return std::nullopt;
        }
        Known known;
        known.first = static_cast<std::uint64_t>(m_selectKey.Int(0));
        known.place.file = static_cast<std::uint32_t>(m_selectKey.Int(1));
        known.place.number = static_cast<std::uint64_t>(m_selectKey.Int(2));
        known.place.line = static_cast<std::uint64_t>(m_selectKey.Int(3));
        known.hash = m_selectKey.Text(4);
        return known;
    });
}

bool KeyBook::MayHave(std::size_t step, std::string_view key) {
    // Keys of different steps are different ones.
    constexpr std::uint64_t odd = 0xD6E8FEB86659FD93U;
    return m_filter.MayHave(std::hash<std::string_view>()(key) + step * odd);
}

void KeyBook::Keep(std::size_t step, std::string_view key, const Known& record) {
    m_kept.Add([&](std::string& bytes) {
        ByteWriter writer(bytes);
        writer.Number(step);
        writer.Text(key);
        writer.Number(record.first);
        writer.Number(record.place.file);
        writer.Number(record.place.number);
        writer.Number(record.place.line);
        writer.Text(record.hash);
    });
}

void KeyBook::InsertKept() {
    m_kept.Finish();
    FrameSpool::Reader reader(m_kept, m_inserted);
    std::string_view kept;
    while (reader.Next(kept)) {
        Insert(kept);
    }
    m_inserted = m_kept.Size();
}

void KeyBook::Insert(std::string_view kept) {
    ByteReader reader(kept);
    const std::uint64_t step = reader.Number();
    const std::string_view key = reader.Text();
    const std::uint64_t first = reader.Number();
    const std::uint64_t file = reader.Number();
    const std::uint64_t number = reader.Number();
    const std::uint64_t line = reader.Number();
    m_insertKey.BindAll(step, key, first, file, number, line, reader.Text());
    m_insertKey.Execute();
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
    AppendOrigin(record, m_buffer);
    AppendContent(record, m_buffer);
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
