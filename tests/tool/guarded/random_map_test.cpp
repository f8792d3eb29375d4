#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "platform/foundation/obx_string.h"
#include "random_records.h"
#include "recorddb/database.h"
#include "tool/guarded/guarded_text.h"
#include "verify/verify_fixture.h"

namespace tool {
namespace {

using nlohmann::json;
using testing::HasSubstr;

constexpr const char* kRandomMap = R"(map: 1
sources: {people: {files: people.csv}, bugs: {files: bugs.jsonl}, later: {files: later.jsonl}}
steps:
- {records: user, source: people, key: login, fields: {login: login, email: mail}}
- records: keyword
  source: bugs
  each: [/tags/*]
  same_key: first
  key: name
  fields: {name: .}
- records: bug
  source: bugs
  key: source_id
  fields:
    source_id: /id
    title: /title
    owner: {from: /mail, by: email}
    keywords: {from: /tags/*, by: name}
- records: bug
  source: later
  mode: update
  key: source_id
  fields: {source_id: /id, title: /title, owner: {from: /mail, by: email}}
- history: bug
  source: bugs
  each: [/log/*]
  key: source_id
  fields: {source_id: /id, id: id, when: when, who: who, action: what, before: from, after: to}
- attachments: bug
  source: bugs
  each: [/files/*]
  key: source_id
  field: files
  fields: {source_id: /id, id: path, path: path, description: text}
)";

constexpr const char* kOwnersOnly = R"(map: 1
sources: {people: {files: people.csv}, bugs: {files: bugs.jsonl}}
steps:
- {records: user, source: people, key: login, fields: {login: login, email: mail}}
- records: bug
  source: bugs
  key: source_id
  fields: {source_id: /id, title: /title, owner: {from: /mail, by: email}}
)";

// Random values of all kinds in JSON Lines and CSV, brought in through a map.
class RandomMappedValues : public OnEachEngine<VerifyFixture> {
  protected:
    static constexpr std::size_t kCount = 10;

    RandomMappedValues() {
        m_options.map = m_folder.Write("map.yaml", kRandomMap);
        m_verifyOptions.map = m_options.map;
    }

    std::string Odd(std::size_t most = 100) {
        std::string value = m_random.Value();
        while (Obx_String::FromUtf8(value).GetLength() > static_cast<int>(most)) {
            value = m_random.Value();
        }
        return value;
    }
    std::vector<std::string> Different() {
        std::vector<std::string> values;
        while (values.size() < kCount) {
            std::string value = Odd();
            if (!value.empty() && std::find(values.begin(), values.end(), value) == values.end()) {
                values.push_back(std::move(value));
            }
        }
        return values;
    }
    const std::string& OneOf(const std::vector<std::string>& values) {
        return values[m_random.Below(values.size())];
    }
    std::string FileName(std::size_t number) {
        std::string name = Odd() + "." + std::to_string(number);
        // What no name of a file has, and what the database does not take.
        std::replace_if(
            name.begin(), name.end(), [](char c) { return c == '/' || c == '\r' || c == '\n'; },
            '_');
        std::ofstream(m_options.attachments / name) << "content of " << number;
        return name;
    }
    json Log() {
        json log = json::array();
        for (int entry = 1; entry < 4; ++entry) {
            log.push_back({{"id", "h" + Odd()},
                           {"when", "2020-01-0" + std::to_string(entry)},
                           {"who", "u" + Odd(15)},
                           {"what", "a" + Odd(15)},
                           {"from", "b" + Odd(15)},
                           {"to", "c" + Odd(15)}});
        }
        return log;
    }
    // The mails of people who are numbered from `first`, as CSV.
    void WritePeople(const std::vector<std::string>& mails, std::size_t first, std::size_t end) {
        std::string text = "login,mail\r\n";
        for (std::size_t i = first; i < end; ++i) {
            std::string cell = mails[i];
            for (std::size_t at = cell.find('"'); at != std::string::npos;
                 at = cell.find('"', at + 2)) {
                cell.insert(at, 1, '"');
            }
            text += std::to_string(i) + ",\"" + cell + "\"\r\n";
        }
        m_folder.Write("people.csv", text);
    }
    void WriteRows(const std::string& name, const std::vector<json>& rows) {
        std::string text;
        for (const json& row : rows) {
            // With escapes or without.
            text += row.dump(-1, ' ', m_random.Below(2) == 0) + '\n';
        }
        m_folder.Write(name, text);
    }

    std::vector<std::string> Column(const std::string& sql) {
        const auto database =
            recorddb::Database::Open(m_database, recorddb::Database::Mode::ReadOnly);
        auto& statement = database->GetConnection().Prepare(sql);
        const recorddb::sql::ResetGuard guard(statement);
        std::vector<std::string> values;
        while (statement.Step()) {
            values.emplace_back(statement.Text(0));
        }
        return values;
    }

    const unsigned m_seed = reading::NewSeed();
    reading::RandomText m_random{m_seed};
};

TEST_P(RandomMappedValues, ArriveAsTheyAre) {
    SCOPED_TRACE("seed " + std::to_string(m_seed));
    const auto ids = Different();
    const auto mails = Different();
    const auto tags = Different();
    std::vector<json> bugs;
    std::vector<json> later;
    std::vector<std::string> titles;
    for (std::size_t i = 0; i < kCount; ++i) {
        json files = json::array();
        files.push_back({{"path", FileName(i)}, {"text", Odd()}});
        files.push_back({{"path", FileName(kCount + i)}, {"text", Odd()}});
        titles.push_back("x" + Odd(29));
        bugs.push_back({{"id", ids[i]},
                        {"title", "t" + Odd(29)},
                        {"mail", OneOf(mails)},
                        {"tags", {tags[i], OneOf(tags)}},
                        {"log", Log()},
                        {"files", files}});
        later.push_back({{"id", ids[i]}, {"title", titles.back()}, {"mail", OneOf(mails)}});
    }
    WritePeople(mails, 0, kCount);
    WriteRows("bugs.jsonl", bugs);
    WriteRows("later.jsonl", later);
    EXPECT_EQ(LoadAndVerify({m_folder.Path()}), 0) << Said() << Shown();
    EXPECT_THAT(Shown(), HasSubstr("Verified: everything in the sources is in the database."));
    EXPECT_EQ(Column("SELECT source_id FROM bug ORDER BY dbid"), ids);
    EXPECT_EQ(Column("SELECT title FROM bug ORDER BY dbid"), titles);
    EXPECT_EQ(Column("SELECT email FROM \"user\" ORDER BY dbid"), mails);
    EXPECT_EQ(Query("SELECT count(*) FROM zt_attachment"), std::to_string(2 * kCount));
}

TEST_P(RandomMappedValues, AreSetAsideAndLoadedAgain) {
    SCOPED_TRACE("seed " + std::to_string(m_seed));
    const auto ids = Different();
    const auto mails = Different();
    std::vector<json> bugs;
    std::vector<std::string> titles;
    for (std::size_t i = 0; i < kCount; ++i) {
        titles.push_back("x" + Odd(29));
        bugs.push_back({{"id", ids[i]}, {"title", titles.back()}, {"mail", mails[i]}});
    }
    m_folder.Write("map.yaml", kOwnersOnly);
    WritePeople(mails, 0, 1);
    WriteRows("bugs.jsonl", bugs);
    m_options.rejects = m_folder.File("rejects");
    EXPECT_EQ(Load({m_folder.Path()}), 1);
    EXPECT_THAT(Said(), HasSubstr("bugs.jsonl, row 2 ("));
    EXPECT_FALSE(IsGuarded(Said()));
    const std::vector<std::string> rejects = {m_options.rejects.string()};
    m_options.rejects.clear();
    WritePeople(mails, 1, kCount);
    WriteRows("bugs.jsonl", {});
    EXPECT_EQ(Load({m_folder.Path()}), 0) << Said();
    m_options.map.clear();
    m_verifyOptions.map.clear();
    EXPECT_EQ(LoadAndVerify(rejects), 0) << Said() << Shown();
    EXPECT_EQ(Column("SELECT source_id FROM bug ORDER BY dbid"), ids);
    EXPECT_EQ(Column("SELECT title FROM bug ORDER BY dbid"), titles);
}

ON_EACH_ENGINE(RandomMappedValues);

}  // namespace
}  // namespace tool
