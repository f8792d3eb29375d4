#include "recorddb/editing/key_search.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <utility>

#include "recorddb/schema.h"

namespace recorddb {

namespace {

constexpr const char* kNestedTypes = R"(record_types:
  user:
    key: [login]
    fields:
      login: {type: text}
  place:
    key: [town, street, house]
    fields:
      town: {type: text}
      street: {type: text}
      house: {type: text}
  lane:
    key: [place, number]
    fields:
      place: {type: reference, to: place}
      number: {type: integer}
  walk:
    key: [from, to]
    fields:
      from: {type: reference, to: place}
      to: {type: reference, to: place}
  route:
    key: [line, stop, from]
    fields:
      line: {type: text}
      stop: {type: text}
      from: {type: reference, to: place}
  folder:
    key: [name, above]
    fields:
      name: {type: text}
      above: {type: reference, to: folder}
  echo:
    key: [of]
    fields:
      of: {type: reference, to: echo}
)";

// A text of that many words.
std::string Words(int count) {
    std::string text = "w0";
    for (int word = 1; word < count; ++word) {
        text += " w" + std::to_string(word);
    }
    return text;
}

// Answers with the records that a test names, and notes what it is asked for.
class Directory final : public KeyDirectory {
  public:
    using Key = std::pair<std::string, std::vector<FieldValue>>;

    void Add(const std::string& type, std::vector<FieldValue> values, std::int64_t dbid) {
        m_records[{type, std::move(values)}] = dbid;
    }

    std::optional<std::int64_t> Known(const schema::RecordType&, std::string_view) override {
        return std::nullopt;
    }

    void Remember(const schema::RecordType& type, std::string_view key,
                  std::int64_t dbid) override {
        remembered.push_back(type.name + " " + std::string(key) + " " + std::to_string(dbid));
    }

    std::int64_t LookUp(const schema::RecordType& type,
                        const std::vector<FieldValue>& values) override {
        ++asked[{type.name, values}];
        const auto found = m_records.find({type.name, values});
        return found != m_records.end() ? found->second : 0;
    }

    std::map<Key, int> asked;
    std::vector<std::string> remembered;

  private:
    std::map<Key, std::int64_t> m_records;
};

class KeySearchTest : public testing::Test {
  protected:
    KeyMatch Find(std::string_view type, std::string_view text) {
        return KeySearch(m_schema, m_directory, m_limits).Find(*m_schema.FindType(type), text);
    }

    const schema::Schema m_schema = schema::ReadSchema(kNestedTypes, "nested.yaml");
    Directory m_directory;
    KeySearchLimits m_limits;
};

TEST_F(KeySearchTest, TextIsCutInAllWays) {
    m_directory.Add("place", {"a b", "c", "d"}, 7);
    EXPECT_EQ(Find("place", "a b c d").dbid, 7);
    EXPECT_EQ(m_directory.asked.size(), 3U);
    EXPECT_EQ(m_directory.remembered, std::vector<std::string>{"place a b c d 7"});
}

TEST_F(KeySearchTest, NoPartIsEmpty) {
    for (const char* const text : {"", "a", "a b", " a b", "a b ", " a b c"}) {
        EXPECT_EQ(Find("place", text).dbid, 0);
    }
    m_directory.Add("place", {"a", " b", "c"}, 7);
    EXPECT_EQ(Find("place", "a  b c").dbid, 7);
}

TEST_F(KeySearchTest, TextThatFitsSeveralRecordsIsAmbiguous) {
    m_directory.Add("place", {"a b", "c", "d"}, 7);
    m_directory.Add("place", {"a", "b c", "d"}, 8);
    const KeyMatch match = Find("place", "a b c d");
    EXPECT_TRUE(match.several);
    EXPECT_EQ(match.dbid, 0);
}

TEST_F(KeySearchTest, ReferencesInKeysAreFoundByTheirOwnKeys) {
    m_directory.Add("place", {"a b", "c", "d"}, 7);
    m_directory.Add("lane", {std::int64_t{7}, std::int64_t{3}}, 9);
    EXPECT_EQ(Find("lane", "a b c d 3").dbid, 9);
    EXPECT_EQ(Find("lane", "a b c 3").dbid, 0);
}

TEST_F(KeySearchTest, NothingIsLookedForTwice) {
    EXPECT_EQ(Find("route", Words(12)).dbid, 0);
    EXPECT_FALSE(m_directory.asked.empty());
    EXPECT_TRUE(std::all_of(m_directory.asked.begin(), m_directory.asked.end(),
                            [](const auto& asked) { return asked.second == 1; }));
}

TEST_F(KeySearchTest, KeysWithinKeysTakeNoMoreTriesThanThereArePartsOfTheText) {
    m_limits.maxTries = 20 * 20;
    EXPECT_FALSE(Find("folder", Words(20)).undecided);
}

TEST_F(KeySearchTest, SearchOfVeryManyWaysIsGivenUp) {
    for (const char* const type : {"place", "walk", "lane", "folder"}) {
        const KeyMatch match = Find(type, Words(600) + " 1");
        EXPECT_TRUE(match.undecided) << type;
        EXPECT_EQ(match.dbid, 0);
    }
    std::size_t lookUps = 0;
    for (const auto& asked : m_directory.asked) {
        lookUps += static_cast<std::size_t>(asked.second);
    }
    EXPECT_LE(lookUps, 4U * static_cast<std::size_t>(kDefaultMaxReferenceTries));
}

TEST_F(KeySearchTest, RecordFoundBeforeTheSearchIsGivenUpIsNotTakenForTheOnlyOne) {
    m_directory.Add("place", {"w0", "w1", "w2 w3 w4"}, 7);
    EXPECT_EQ(Find("place", Words(5)).dbid, 7);
    m_limits.maxTries = 3;
    const KeyMatch match = Find("place", Words(5));
    EXPECT_TRUE(match.undecided);
    EXPECT_EQ(match.dbid, 0);
}

TEST_F(KeySearchTest, ValuesThatCannotBeAreNotTried) {
    EXPECT_EQ(Find("lane", Words(600)).dbid, 0);
    EXPECT_TRUE(m_directory.asked.empty());
}

TEST_F(KeySearchTest, KeyOfOneFieldIsLookedUpHoweverLongItIs) {
    m_limits.maxTries = 1;
    m_directory.Add("user", {Words(600)}, 7);
    EXPECT_EQ(Find("user", Words(600)).dbid, 7);
}

TEST_F(KeySearchTest, KeyThatIsAReferenceToItsOwnTypeComesToAnEnd) {
    EXPECT_EQ(Find("echo", "a").dbid, 0);
    EXPECT_FALSE(Find("echo", "a").undecided);
}

TEST_F(KeySearchTest, DeepKeysAreGivenUpBeforeTheStackOverflows) {
    m_limits.maxTries = 10'000'000;
    EXPECT_TRUE(Find("folder", Words(2000)).undecided);
}

TEST_F(KeySearchTest, StopsWhenAsked) {
    int tries = 0;
    m_limits.stopRequested = [&tries] { return ++tries == 50; };
    EXPECT_TRUE(Find("walk", Words(300)).undecided);
    EXPECT_EQ(tries, 50);
}

}  // namespace

}  // namespace recorddb
