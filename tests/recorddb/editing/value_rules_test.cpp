#include "recorddb/editing/value_rules.h"

#include "session_fixture.h"

namespace recorddb {

namespace {

class ValueRulesTest : public OnEachEngine<SessionTest> {
  protected:
    static std::string Cannot(const std::string& field, const std::string& value,
                              const std::string& why) {
        return "The field \"" + field + "\" of a record of type \"bug\" cannot take \"" + value +
               "\": " + why;
    }
};

TEST_P(ValueRulesTest, MaximalLengthCountsCharacters) {
    const AdEntityPtr bug = New("bug");
    Set(bug, "title", "🎈🎈🎈🎈🎈🎈🎈🎈🎈🎈🎈🎈🎈🎈🎈🎈🎈🎈🎈🎈");
    EXPECT_EQ(
        Refusal(bug, "title", "éééééééééééééééééééé+"),
        Cannot("title", "éééééééééééééééééééé+", "it has 21 characters, and the field takes 20."));
}

TEST_P(ValueRulesTest, RefusedValueLeavesTheFieldAsItWas) {
    const AdEntityPtr bug = New("bug");
    Set(bug, "votes", "7");
    EXPECT_NE(Refusal(bug, "votes", "many"), "");
    EXPECT_EQ(Value(bug, "votes"), "7");
}

TEST_P(ValueRulesTest, IntegersAreWholeNumbersOf64Bits) {
    const AdEntityPtr bug = New("bug");
    for (const char* const good :
         {"0", "-1", "+5", "9223372036854775807", "-9223372036854775808", " 3\n", "007"}) {
        EXPECT_EQ(Refusal(bug, "votes", good), "") << good;
    }
    for (const char* const bad :
         {"1.5", "x", "9223372036854775808", "1 2", "0x10", "+-1", " ", "-", "+", "1e3", "١"}) {
        EXPECT_EQ(Refusal(bug, "votes", bad),
                  Cannot("votes", bad, "it is not a whole number of at most 64 bits."));
    }
}

TEST_P(ValueRulesTest, DatesAreStoredInUtc) {
    const std::vector<std::pair<const char*, const char*>> dates = {
        {"2020-01-02 03:04:05", "2020-01-02 03:04:05"},
        {"0001-01-01 23:59:59", "0001-01-01 23:59:59"},
        {"2024-02-29 00:00:00", "2024-02-29 00:00:00"},
        {"2020-01-02", "2020-01-02 00:00:00"},
        {"2020-01-02T03:04Z", "2020-01-02 03:04:00"},
        {" 2020-01-02 03:04:05.999 ", "2020-01-02 03:04:05"},
        {"2020-01-01T23:30:00-01:00", "2020-01-02 00:30:00"},
    };
    const AdEntityPtr bug = New("bug");
    for (const auto& [given, stored] : dates) {
        Set(bug, "opened", given);
        EXPECT_EQ(Value(bug, "opened"), stored);
    }
    for (const char* const bad :
         {"2023-02-29 00:00:00", "yesterday", "2020-13-01 00:00:00", "2020-01-02 24:00:00",
          "2020-01-02 00:60:00", "2020-01-02 00:00:60", "2020-00-02 00:00:00",
          "2020-01-00 00:00:00", "0000-01-01 00:00:00"}) {
        EXPECT_EQ(Refusal(bug, "opened", bad),
                  Cannot("opened", bad, "it is not a valid date and time."));
    }
}

TEST_P(ValueRulesTest, ChoicesAreExact) {
    const AdEntityPtr bug = New("bug");
    Set(bug, "severity", "major");
    EXPECT_EQ(Refusal(bug, "severity", "Major"),
              Cannot("severity", "Major", "its choices are: minor, major."));
}

TEST_P(ValueRulesTest, TextThatIsNotValidIsRefused) {
    const AdEntityPtr bug = New("bug");
    const std::vector<std::u16string> bad = {{u'a', 0xD800}, {0xDC00, u'a'}, {u'a', u'\0', u'b'}};
    for (const std::u16string& text : bad) {
        EXPECT_NE(bug->SetFieldValue(u"title", Obx_String(std::u16string_view(text)), 1)
                      .ToUtf8()
                      .find("it is not valid text."),
                  std::string::npos);
    }
}

TEST_P(ValueRulesTest, LongValuesAreCutInMessages) {
    const std::string text = Refusal(New("bug"), "severity", std::string(100'000, 'x'));
    EXPECT_LT(text.size(), 400U);
    EXPECT_NE(text.find("xxx ...\""), std::string::npos);
}

TEST_P(ValueRulesTest, FieldsThatTheDatabaseFillsInAreRefused) {
    for (const char* const field : {"dbid", "id"}) {
        EXPECT_EQ(Refusal(New("bug"), field, "5"),
                  std::string("The field \"") + field +
                      "\" of a record of type \"bug\" cannot be set to \"5\": the database fills "
                      "it in.");
    }
}

TEST_P(ValueRulesTest, FieldsOfManyValuesCannotBeSet) {
    for (const char* const field : {"watchers", "files", "log"}) {
        EXPECT_EQ(Refusal(New("bug"), field, "x"),
                  std::string("The field \"") + field +
                      "\" of a record of type \"bug\" cannot be set to \"x\": it does not hold a "
                      "single value.");
    }
}

ON_EACH_LAYOUT(ValueRulesTest);

}  // namespace

}  // namespace recorddb
