#include "platform/core/addatetime.h"

#include <gtest/gtest.h>

#include "tests/platform/printing.h"

namespace {

constexpr const char16_t* kPattern = u"%Y-%m-%d %H:%M:%S";

// The text's value, or "refused".
Obx_String Parsed(const Obx_String& text) {
    AdDateTime time;
    return time.ParseDateTime(text, 0) != 0 ? time.Format(kPattern) : Obx_String(u"refused");
}

struct Accepted {
    const char16_t* text;
    const char16_t* value;
};

void ExpectAccepted(std::initializer_list<Accepted> cases) {
    for (const Accepted& accepted : cases) {
        EXPECT_EQ(Parsed(accepted.text), accepted.value) << Obx_String(accepted.text).ToUtf8();
    }
}

void ExpectRefused(std::initializer_list<const char16_t*> texts) {
    for (const char16_t* text : texts) {
        EXPECT_EQ(Parsed(text), u"refused") << Obx_String(text).ToUtf8();
    }
}

TEST(AdDateTime, AcceptsDateAndTime) {
    ExpectAccepted({{u"2011-02-03 04:05:06", u"2011-02-03 04:05:06"},
                    {u"2011-02-03T04:05:06", u"2011-02-03 04:05:06"},
                    {u"0001-01-01 00:00:00", u"0001-01-01 00:00:00"},
                    {u"9999-12-31 23:59:59", u"9999-12-31 23:59:59"}});
}

TEST(AdDateTime, SecondsMayBeMissing) {
    ExpectAccepted({{u"2011-02-03 04:05", u"2011-02-03 04:05:00"},
                    {u"2011-02-03T04:05Z", u"2011-02-03 04:05:00"}});
}

TEST(AdDateTime, ADateAloneIsMidnight) {
    ExpectAccepted({{u"2011-02-03", u"2011-02-03 00:00:00"}});
}

TEST(AdDateTime, DropsFractionsOfASecond) {
    ExpectAccepted({{u"2011-02-03 04:05:06.999999999999", u"2011-02-03 04:05:06"},
                    {u"2011-02-03T04:05:06.1Z", u"2011-02-03 04:05:06"},
                    {u"2011-02-03T04:05:06,5+01:00", u"2011-02-03 03:05:06"}});
}

TEST(AdDateTime, TurnsOffsetsIntoUtc) {
    ExpectAccepted({{u"2011-02-03T04:05:06Z", u"2011-02-03 04:05:06"},
                    {u"2011-02-03T04:05:06+02:00", u"2011-02-03 02:05:06"},
                    {u"2011-02-03T04:05:06-0330", u"2011-02-03 07:35:06"},
                    {u"2011-02-03T04:05:06+01", u"2011-02-03 03:05:06"},
                    {u"2011-02-03 04:05+00:00", u"2011-02-03 04:05:00"},
                    {u"2011-02-03 04:05-00:00", u"2011-02-03 04:05:00"},
                    {u"2011-01-01T00:30:00+14:00", u"2010-12-31 10:30:00"},
                    {u"2012-02-28T23:30:00-12:00", u"2012-02-29 11:30:00"}});
}

TEST(AdDateTime, IgnoresWhiteSpaceAroundTheText) {
    ExpectAccepted({{u" \t2011-02-03 04:05:06\n", u"2011-02-03 04:05:06"}});
}

TEST(AdDateTime, KnowsLeapYears) {
    ExpectAccepted(
        {{u"2012-02-29", u"2012-02-29 00:00:00"}, {u"2000-02-29", u"2000-02-29 00:00:00"}});
    ExpectRefused({u"2011-02-29", u"1900-02-29", u"2100-02-29"});
}

TEST(AdDateTime, RefusesDatesThatDoNotExist) {
    ExpectRefused({u"2011-00-10", u"2011-13-10", u"2011-01-00", u"2011-01-32", u"2011-04-31",
                   u"2011-02-30", u"0000-01-01"});
}

TEST(AdDateTime, RefusesTimesThatDoNotExist) {
    ExpectRefused({u"2011-02-03 24:00:00", u"2011-02-03 24:00", u"2011-02-03 23:60",
                   u"2011-02-03 23:59:60", u"2011-12-31 23:59:61", u"2011-02-03 99:00"});
}

TEST(AdDateTime, RefusesOffsetsThatNoPlaceHas) {
    ExpectRefused({u"2011-02-03 04:05+14:01", u"2011-02-03 04:05+15:00", u"2011-02-03 04:05-12:01",
                   u"2011-02-03 04:05-14:00", u"2011-02-03 04:05+02:60"});
}

TEST(AdDateTime, RefusesATimeWhoseUtcLeavesTheCalendar) {
    ExpectRefused({u"0001-01-01T00:00:00+00:01", u"9999-12-31T23:59:59-00:01"});
    ExpectAccepted({{u"0001-01-01T14:00:00+14:00", u"0001-01-01 00:00:00"},
                    {u"9999-12-31T11:59:59-12:00", u"9999-12-31 23:59:59"}});
}

TEST(AdDateTime, RefusesNumbersThatAreNotWrittenInFull) {
    ExpectRefused({u"11-02-03", u"2011-2-03", u"2011-02-3", u"2011-02-03 4:05", u"2011-02-03 04:5",
                   u"2011-02-03 04:05:6", u"12011-02-03", u"2011-002-03", u"2011-02-03 04:05+2",
                   u"2011-02-03 04:05+2:00", u"2011-02-03 04:05+020"});
}

TEST(AdDateTime, RefusesWhatIsNotADateAndTime) {
    ExpectRefused({u"",
                   u" ",
                   u"now",
                   u"2011",
                   u"2011-02",
                   u"2011-02-",
                   u"20110203",
                   u"2011/02/03 04:05",
                   u"03.02.2011",
                   u"2011-02-03T",
                   u"2011-02-03 04",
                   u"2011-02-03 04:",
                   u"2011-02-03 04:05:",
                   u"2011-02-03 04:05:06.",
                   u"2011-02-03 04:05.5",
                   u"2011-02-03 04:05 pm",
                   u"2011-02-03  04:05",
                   u"2011-02-03t04:05",
                   u"2011-02-03_04:05",
                   u"2011-02-0304:05",
                   u"-2011-02-03",
                   u"+2011-02-03",
                   u"2011-02-03Z",
                   u"2011-02-03+01:00",
                   u"\u0662\u0660\u0661\u0661-02-03"});
}

TEST(AdDateTime, RefusesWhatFollowsADateAndTime) {
    ExpectRefused({u"2011-02-03x", u"2011-02-03 04:05x", u"2011-02-03 04:05:06 x",
                   u"2011-02-03 04:05:06ZZ", u"2011-02-03 04:05:06Z+01:00",
                   u"2011-02-03 04:05:06+01:00x", u"2011-02-03 04:05:06 +01:00",
                   u"2011-02-03 04:05:06+01:000", u"2011-02-03 04:05:06+"});
}

TEST(AdDateTime, StaysAsItWasWhenATextIsRefused) {
    AdDateTime time;
    ASSERT_NE(time.ParseDateTime(u"2011-02-03 04:05:06", 0), 0);
    EXPECT_EQ(time.ParseDateTime(u"2012-12-12 25:00", 0), 0);
    EXPECT_EQ(time.Format(kPattern), u"2011-02-03 04:05:06");
}

TEST(AdDateTime, FormatsByAPattern) {
    AdDateTime time;
    ASSERT_NE(time.ParseDateTime(u"0987-06-05 04:03:02", 0), 0);
    EXPECT_EQ(time.Format(u"%d.%m.%Y, %H.%M.%S"), u"05.06.0987, 04.03.02");
    EXPECT_EQ(time.Format(u"%Y%Y"), u"09870987");
    EXPECT_EQ(time.Format(u""), u"");
}

TEST(AdDateTime, OtherCharactersOfAPatternStandForThemselves) {
    EXPECT_EQ(AdDateTime().Format(u"100%% %x %"), u"100% %x %");
}

}  // namespace
