#include "tool/load/waiting/waiting_room.h"

#include <functional>
#include <span>

#include "tool/io/scratch_failure.h"

namespace tool {

namespace {

using recorddb::sql::ResetGuard;
using recorddb::sql::Statement;

constexpr std::size_t kMostHashes = 200'000;

// The column `missing` says how many keys a record lacks; 0: it is ready; -1: it is behind an
// earlier record of its id.
constexpr int kReady = 0;
constexpr int kBehind = -1;

constexpr std::string_view kTables =
    "CREATE TABLE waiting (place INTEGER PRIMARY KEY, id TEXT NOT NULL, missing INTEGER NOT NULL, "
    "bars_creation INTEGER NOT NULL);"
    "CREATE INDEX waiting_id ON waiting (id, place) WHERE id <> '';"
    "CREATE INDEX waiting_bars ON waiting (id) WHERE bars_creation = 1 AND id <> '';"
    "CREATE INDEX waiting_ready ON waiting (place) WHERE missing = 0;"
    "CREATE INDEX waiting_keys ON waiting (place) WHERE missing > 0;"
    "CREATE TABLE record (place INTEGER PRIMARY KEY, bytes BLOB NOT NULL);"
    "CREATE TABLE wanted (key TEXT NOT NULL, place INTEGER NOT NULL, PRIMARY KEY (key, place)) "
    "WITHOUT ROWID;"
    "CREATE INDEX wanted_place ON wanted (place);";

template <typename Work>
decltype(auto) OnRoom(Work&& work) {
    return OnScratchOf("records that wait need", std::forward<Work>(work));
}

}  // namespace

void TextFilter::Add(std::string_view text) {
    m_isFull = m_isFull || m_hashes.size() >= kMostHashes;
    if (!m_isFull) {
        m_hashes.insert(std::hash<std::string_view>()(text));
    }
}

bool TextFilter::MayHold(std::string_view text) const {
    return m_isFull || m_hashes.contains(std::hash<std::string_view>()(text));
}

void TextFilter::Clear() {
    m_hashes.clear();
    m_isFull = false;
}

void WaitingRoom::Open() {
    if (!m_scratch) {
        m_scratch = recorddb::sql::OpenScratch(recorddb::sql::Undoing::Possible);
        m_scratch->ExecuteScript(kTables);
    }
}

Statement& WaitingRoom::Prepare(std::string_view sql) {
    return m_scratch->Prepare(sql);
}

// To be called before anything is changed.
void WaitingRoom::Change() {
    Open();
    if (!m_transaction) {
        m_transaction.emplace(*m_scratch);
    }
}

bool WaitingRoom::Bars(const std::string& id, bool mayCreate) {
    if (IsEmpty() || id.empty() || !m_ids.MayHold(id)) {
        return false;
    }
    return OnRoom([&] {
        Statement& find = Prepare(
            mayCreate ? "SELECT 1 FROM waiting WHERE id = $1 AND id <> '' AND bars_creation = 1"
                      : "SELECT 1 FROM waiting WHERE id = $1 AND id <> ''");
        const ResetGuard guard(find);
        find.BindAll(id);
        return find.Step();
    });
}

// An update whose own record does not exist yet waits for the record that creates it. So neither
// this update nor those that are behind it alone may hold that creation back.
bool WaitingRoom::BarsCreation(const Wait& wait, bool isBehind) {
    if (wait.mayCreate || wait.id.empty()) {
        return true;
    }
    if (isBehind) {
        return Bars(wait.id, true);
    }
    for (const std::string& key : wait.keys) {
        if (key == wait.id) {
            return false;
        }
    }
    return true;
}

void WaitingRoom::Take(Place place, const SourceRecord& record, const Wait& wait) {
    OnRoom([&] {
        Change();
        const bool isBehind = wait.keys.empty() && Bars(wait.id, wait.mayCreate);
        const bool barsCreation = BarsCreation(wait, isBehind);
        m_buffer.clear();
        WaitingRecord::Append(record, m_buffer);
        Statement& keep = Prepare("INSERT INTO record (place, bytes) VALUES ($1, $2)");
        keep.BindAll(place, std::as_bytes(std::span(m_buffer)));
        keep.Execute();
        Statement& add = Prepare(
            "INSERT INTO waiting (place, id, missing, bars_creation) VALUES ($1, $2, $3, $4)");
        add.BindAll(place, wait.id, isBehind ? kBehind : static_cast<int>(wait.keys.size()),
                    barsCreation ? 1 : 0);
        add.Execute();
        AddKeys(place, wait);
    });
    m_ids.Add(wait.id);
    ++m_count;
}

void WaitingRoom::AddKeys(Place place, const Wait& wait) {
    Statement& add = Prepare("INSERT INTO wanted (key, place) VALUES ($1, $2)");
    for (const std::string& key : wait.keys) {
        add.BindAll(key, place);
        add.Execute();
        m_keys.Add(key);
    }
}

bool WaitingRoom::Wants(const std::string& key) {
    if (IsEmpty() || !m_keys.MayHold(key)) {
        return false;
    }
    return OnRoom([&] {
        Statement& find = Prepare("SELECT 1 FROM wanted WHERE key = $1");
        const ResetGuard guard(find);
        find.BindAll(key);
        return find.Step();
    });
}

void WaitingRoom::Arrive(const std::string& key) {
    if (IsEmpty() || !m_keys.MayHold(key)) {
        return;
    }
    OnRoom([&] {
        Change();
        Statement& count = Prepare(
            "UPDATE waiting SET missing = missing - 1 WHERE missing > 0 AND place IN "
            "(SELECT place FROM wanted WHERE key = $1)");
        count.BindAll(key);
        count.Execute();
        Statement& remove = Prepare("DELETE FROM wanted WHERE key = $1");
        remove.BindAll(key);
        remove.Execute();
    });
}

std::optional<Place> WaitingRoom::First(std::string_view sql) {
    if (IsEmpty()) {
        return std::nullopt;
    }
    return OnRoom([&]() -> std::optional<Place> {
        const auto place = recorddb::sql::QueryInt(Prepare(sql));
        return place ? std::optional(static_cast<Place>(*place)) : std::nullopt;
    });
}

std::optional<Place> WaitingRoom::FirstReady() {
    return First("SELECT place FROM waiting WHERE missing = 0 ORDER BY place LIMIT 1");
}

std::optional<Place> WaitingRoom::FirstWaiting() {
    return First("SELECT place FROM waiting WHERE missing > 0 ORDER BY place LIMIT 1");
}

void WaitingRoom::Read(Place place, WaitingRecord& record) {
    OnRoom([&] {
        Statement& read = Prepare("SELECT bytes FROM record WHERE place = $1");
        const ResetGuard guard(read);
        read.BindAll(place);
        read.Step();
        record.Read(read.Blob(0));
    });
}

void WaitingRoom::WaitOn(Place place, const Wait& wait) {
    const bool barsCreation = BarsCreation(wait, false);
    OnRoom([&] {
        Change();
        Statement& update =
            Prepare("UPDATE waiting SET missing = $2, bars_creation = $3 WHERE place = $1");
        update.BindAll(place, wait.keys.size(), barsCreation ? 1 : 0);
        update.Execute();
        AddKeys(place, wait);
    });
}

void WaitingRoom::Leave(Place place) {
    OnRoom([&] {
        Change();
        std::string id;
        {
            Statement& remove = Prepare("DELETE FROM waiting WHERE place = $1 RETURNING id");
            const ResetGuard guard(remove);
            remove.BindAll(place);
            remove.Step();
            id = remove.Text(0);
            remove.Step();
        }
        for (const std::string_view sql :
             {"DELETE FROM record WHERE place = $1", "DELETE FROM wanted WHERE place = $1"}) {
            Statement& remove = Prepare(sql);
            remove.BindAll(place);
            remove.Execute();
        }
        if (!id.empty()) {
            PassOn(id);
        }
    });
    --m_count;
}

// The first record of the id may be tried when nothing else holds it back.
void WaitingRoom::PassOn(const std::string& id) {
    Statement& next = Prepare(
        "UPDATE waiting SET missing = $2 WHERE missing = $3 AND place = "
        "(SELECT place FROM waiting WHERE id = $1 AND id <> '' ORDER BY place LIMIT 1)");
    next.BindAll(id, kReady, kBehind);
    next.Execute();
}

void WaitingRoom::Keep() {
    if (m_transaction) {
        OnRoom([this] { m_transaction->Commit(); });
        m_transaction.reset();
    }
    m_keptCount = m_count;
    if (IsEmpty()) {
        m_keys.Clear();
        m_ids.Clear();
    }
}

void WaitingRoom::Undo() {
    m_transaction.reset();
    m_count = m_keptCount;
}

}  // namespace tool
