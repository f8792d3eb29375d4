#include "ztimporter/importrecordparser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "platform/foundation/cexception.h"
#include "tests/platform/thrown_text.h"
#include "tests/support/trace_recorder.h"
#include "tests/ztimporter/declaration.h"
#include "tests/ztimporter/map_pairs.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

const std::string kFirst = "<record><f name='a'>1</f></record>";
const std::string kSecond = "<record><f name='a'>2</f></record>";

// A parser on a packet that the fixture keeps.
class RecordParser : public testing::Test {
  protected:
    void GivenPacket(std::string text) {
        m_text = std::move(text);
        m_parser.SetInputData(m_text.c_str());
    }

    // The fields of the next record; nothing when there is none.
    std::optional<Pairs> NextRecord() {
        if (m_parser.NextRecord() == 0) {
            return std::nullopt;
        }
        return CurrentRecord();
    }

    Pairs CurrentRecord() {
        CMapStringToString map(10);
        const int count = m_parser.GetRecordMap(map);
        EXPECT_EQ(count, map.GetCount());
        return PairsOf(map);
    }

    AdImportRecordParser& Parser() { return m_parser; }

  private:
    std::string m_text;
    AdImportRecordParser m_parser;
};

TEST_F(RecordParser, FindsNothingWithoutAText) {
    CMapStringToString map(10);
    map.SetAt(u"kept", u"yes");
    EXPECT_EQ(Parser().NextRecord(), 0);
    EXPECT_EQ(Parser().GetRecordMap(map), 0);
    EXPECT_THAT(PairsOf(map), ElementsAre(Pair("kept", "yes")));
}

TEST_F(RecordParser, KeepsItsTextWhenItIsGivenNone) {
    GivenPacket(kFirst);
    Parser().SetInputData(nullptr);
    EXPECT_THAT(NextRecord().value(), ElementsAre(Pair("a", "1")));
}

TEST_F(RecordParser, FindsNothingInAnEmptyText) {
    GivenPacket("");
    EXPECT_FALSE(NextRecord());
    EXPECT_FALSE(NextRecord());
}

TEST_F(RecordParser, FindsNothingInADeclaration) {
    GivenPacket(kDeclaration);
    EXPECT_FALSE(NextRecord());
}

TEST_F(RecordParser, WalksFromRecordToRecord) {
    GivenPacket(kDeclaration + kFirst + kSecond);
    EXPECT_THAT(NextRecord().value(), ElementsAre(Pair("a", "1")));
    EXPECT_THAT(NextRecord().value(), ElementsAre(Pair("a", "2")));
    EXPECT_FALSE(NextRecord());
    EXPECT_FALSE(NextRecord());
}

TEST_F(RecordParser, ReadsTheSameRecordAgain) {
    GivenPacket(kFirst + kSecond);
    ASSERT_EQ(Parser().NextRecord(), 1);
    EXPECT_THAT(CurrentRecord(), ElementsAre(Pair("a", "1")));
    EXPECT_THAT(CurrentRecord(), ElementsAre(Pair("a", "1")));
}

TEST_F(RecordParser, DoesNotLookAtWhatStandsOutsideRecords) {
    GivenPacket("<all version=1>\n & <i/>" + kFirst + "</nonsense>" + kSecond + "<<<");
    EXPECT_THAT(NextRecord().value(), ElementsAre(Pair("a", "1")));
    EXPECT_THAT(NextRecord().value(), ElementsAre(Pair("a", "2")));
    EXPECT_FALSE(NextRecord());
}

TEST_F(RecordParser, DoesNotFindARecordWrittenAnyOtherWay) {
    for (const char* start : {"<record attr=\"x\">", "<Record>", "<record >", "<records>",
                              "<record\n>", "<x:record>", "&lt;record>"}) {
        GivenPacket(std::string(start) + "<f name='a'>1</f>");
        EXPECT_FALSE(NextRecord()) << start;
    }
}

TEST_F(RecordParser, FindsARecordInsideAnother) {
    GivenPacket("<record><f name='a'><record><f name='b'>2</f></record></f></record>");
    EXPECT_EQ(Parser().NextRecord(), 1);
    EXPECT_THAT(NextRecord().value(), ElementsAre(Pair("b", "2")));
}

TEST_F(RecordParser, DoesNotTakeACutTagForARecord) {
    GivenPacket(kFirst + "<record");
    EXPECT_TRUE(NextRecord());
    EXPECT_FALSE(NextRecord());
}

TEST_F(RecordParser, ReadsTheFirstRecordWhenNoneWasSearched) {
    GivenPacket("<all><head>x</head><i/>" + kFirst + kSecond);
    EXPECT_THAT(CurrentRecord(), ElementsAre(Pair("a", "1")));
}

TEST_F(RecordParser, TellsTheNameOfARecordByCaseWhenNoneWasSearched) {
    GivenPacket("<Record><f name='a'>1</f></Record>");
    EXPECT_THAT(CurrentRecord(), IsEmpty());
}

TEST_F(RecordParser, SkipsTheDeclarationAtTheStart) {
    GivenPacket(kDeclaration + kFirst);
    EXPECT_THAT(CurrentRecord(), ElementsAre(Pair("a", "1")));
}

TEST_F(RecordParser, SkipsAsManyBytesWhereverTheDeclarationStands) {
    GivenPacket("\n" + kDeclaration + kFirst);
    EXPECT_THAT(CurrentRecord(), IsEmpty()) << "the last byte of the declaration remains as text";
    EXPECT_THAT(NextRecord().value(), ElementsAre(Pair("a", "1")));
}

TEST_F(RecordParser, LosesARecordThatBeginsWithinTheSkippedBytes) {
    GivenPacket(kFirst + " " + kSecond + kSecond + kDeclaration);
    EXPECT_THAT(NextRecord().value(), ElementsAre(Pair("a", "2")));
    EXPECT_FALSE(NextRecord());
}

TEST_F(RecordParser, ReadsAPacketWhoseDeclarationIsWrittenDifferently) {
    GivenPacket("<?xml version='1.0' encoding='UTF-8'?>" + kFirst);
    EXPECT_THAT(CurrentRecord(), ElementsAre(Pair("a", "1")));
    EXPECT_THAT(NextRecord().value(), ElementsAre(Pair("a", "1")));
}

TEST_F(RecordParser, LosesTheRecordThatASecondTextBeginsWith) {
    GivenPacket(kFirst);
    ASSERT_TRUE(NextRecord());
    GivenPacket(kSecond + kFirst);
    EXPECT_THAT(NextRecord().value(), ElementsAre(Pair("a", "1")));
}

// What is left of a second text shows in the trace.
TEST_F(RecordParser, LosesTheFirstByteOfASecondTextIfItIsOneOfTheTag) {
    for (int byte = 1; byte < 256; ++byte) {
        GivenPacket(kFirst);
        ASSERT_EQ(Parser().NextRecord(), 1);
        const char first = static_cast<char>(byte);
        GivenPacket(std::string(1, first) + "rest");
        TraceRecorder recorder;
        EXPECT_EQ(Parser().NextRecord(), 0);
        const bool lost = std::string("<record>").find(first) != std::string::npos;
        EXPECT_THAT(recorder.Take(), ElementsAre("AdImportRecordParser: NextRecord, m_strXML "
                                                 "length = " +
                                                 std::to_string(lost ? 4 : 5)))
            << byte;
    }
}

TEST_F(RecordParser, LosesNothingOfASecondTextWhenItStoodOnNoRecord) {
    GivenPacket(kFirst);
    ASSERT_TRUE(NextRecord());
    ASSERT_FALSE(NextRecord());
    GivenPacket(kSecond);
    EXPECT_THAT(NextRecord().value(), ElementsAre(Pair("a", "2")));
}

TEST_F(RecordParser, DoesNotStepPastTheEndOfAnEmptySecondText) {
    GivenPacket(kFirst);
    ASSERT_TRUE(NextRecord());
    // What stands after the terminator is not the packet's.
    GivenPacket(std::string(1, '\0') + kSecond);
    EXPECT_FALSE(NextRecord());
    EXPECT_FALSE(NextRecord());
}

TEST_F(RecordParser, AddsToTheMapItIsGiven) {
    GivenPacket(kFirst);
    CMapStringToString map(10);
    map.SetAt(u"a", u"old");
    map.SetAt(u"b", u"kept");
    ASSERT_EQ(Parser().NextRecord(), 1);
    EXPECT_EQ(Parser().GetRecordMap(map), 2);
    EXPECT_THAT(PairsOf(map), ElementsAre(Pair("a", "1"), Pair("b", "kept")));
}

TEST_F(RecordParser, PassesTheStreamsExceptionOnAndKeepsTheFieldsBeforeIt) {
    GivenPacket("<record><f name='a'>1</f>\n<f name=b>2</f></record>");
    CMapStringToString map(10);
    ASSERT_EQ(Parser().NextRecord(), 1);
    std::u16string message(200, u' ');
    try {
        Parser().GetRecordMap(map);
        FAIL() << "no exception";
    } catch (CException* exception) {
        exception->GetErrorMessage(message.data(), static_cast<unsigned>(message.size()));
        exception->Delete();
    }
    EXPECT_TRUE(message.starts_with(u"XML, line 2, column 9: not well-formed"));
    EXPECT_THAT(PairsOf(map), ElementsAre(Pair("a", "1")));
}

TEST_F(RecordParser, StoresNoFieldWhoseEndIsMissing) {
    for (const char* end : {"", "<", "</g></record>", "&</f></record>"}) {
        GivenPacket("<record><f name='a'>1</f><f name='b'>2" + std::string(end));
        CMapStringToString map(10);
        EXPECT_NE(ThrownText([&] { Parser().GetRecordMap(map); }), "nothing was thrown") << end;
        EXPECT_THAT(PairsOf(map), ElementsAre(Pair("a", "1"))) << end;
    }
}

TEST_F(RecordParser, FindsRecordsAfterTextThatEndsInACutElement) {
    GivenPacket("tail</x>" + kFirst + kSecond);
    EXPECT_THAT(CurrentRecord(), IsEmpty());
    EXPECT_THAT(NextRecord().value(), ElementsAre(Pair("a", "1")));
    EXPECT_THAT(NextRecord().value(), ElementsAre(Pair("a", "2")));
}

TEST_F(RecordParser, IsNotDisturbedByABrokenRecordAfterTheCurrentOne) {
    GivenPacket(kFirst + "<record><f name=");
    EXPECT_THAT(NextRecord().value(), ElementsAre(Pair("a", "1")));
}

// The fields of a record with that content, which is all its packet holds.
Pairs FieldsOf(const std::string& content) {
    AdImportRecordParser parser;
    const std::string text = "<record>" + content + "</record>";
    parser.SetInputData(text.c_str());
    CMapStringToString map(10);
    EXPECT_EQ(parser.NextRecord(), 1);
    parser.GetRecordMap(map);
    return PairsOf(map);
}

TEST(RecordFields, AreNamedByTheirNameAttribute) {
    EXPECT_THAT(FieldsOf("<f name='Title'>x</f><anything id='1' name='two words'>y</anything>"),
                ElementsAre(Pair("Title", "x"), Pair("two words", "y")));
}

TEST(RecordFields, WithoutANameGoUnderTheEmptyText) {
    EXPECT_THAT(FieldsOf("<f>1</f>"), ElementsAre(Pair("", "1")));
}

TEST(RecordFields, AreToldApartByCase) {
    EXPECT_THAT(FieldsOf("<f name='a'>1</f><f name='A'>2</f>"),
                ElementsAre(Pair("a", "1"), Pair("A", "2")));
}

TEST(RecordFields, KeepTheLaterOfTwoValues) {
    EXPECT_THAT(FieldsOf("<f name='a'>1</f><f name='b'>2</f><f name='a'>3</f>"),
                ElementsAre(Pair("a", "3"), Pair("b", "2")));
}

TEST(RecordFields, AreEmptyWithoutCharacterData) {
    EXPECT_THAT(FieldsOf("<f name='a'/><f name='b'></f>"),
                ElementsAre(Pair("a", ""), Pair("b", "")));
}

TEST(RecordFields, AreEmptyWithoutCharacterDataAfterAFieldThatHasSome) {
    EXPECT_THAT(FieldsOf("<f name='a'>1</f><f name='b'/><f name='c'>3</f><f name='d'></f>"),
                ElementsAre(Pair("a", "1"), Pair("b", ""), Pair("c", "3"), Pair("d", "")));
}

TEST(RecordFields, HaveTheirNamesDecodedOnce) {
    EXPECT_THAT(FieldsOf("<f name='a &amp;amp; &amp;lt;'>1</f>"),
                ElementsAre(Pair("a &amp; &lt;", "1")));
}

TEST(RecordFields, KeepTheirBlanks) {
    EXPECT_THAT(FieldsOf("<f name='a'>  x </f><f name='b'>   </f>"),
                ElementsAre(Pair("a", "  x "), Pair("b", "   ")));
}

TEST(RecordFields, MayBeIndented) {
    EXPECT_THAT(FieldsOf("\n  <f name='a'>1</f>\r\n\t<f name='b'>2</f>\n"),
                ElementsAre(Pair("a", "1"), Pair("b", "2")));
}

TEST(RecordFields, MayHaveNone) {
    EXPECT_THAT(FieldsOf(""), IsEmpty());
}

TEST(RecordFields, AreUnescaped) {
    EXPECT_THAT(FieldsOf("<f name='a &amp; b'>1 &lt; 2&#xA;&amp;amp;&amp;lt;&#10;</f>"),
                ElementsAre(Pair("a & b", "1 < 2\n&amp;<&#10;")));
}

TEST(RecordFields, MayComeFromCdata) {
    EXPECT_THAT(FieldsOf("<f name='a'><![CDATA[<b>&lt;</b>]]></f>"),
                ElementsAre(Pair("a", "<b><</b>")));
}

TEST(RecordFields, MayBeBeyondAscii) {
    EXPECT_THAT(FieldsOf("<f name='größe'>\xF0\x9F\x8C\x8A</f>"),
                ElementsAre(Pair("größe", "\xF0\x9F\x8C\x8A")));
}

TEST(RecordFields, MayBeHuge) {
    const std::string value(3 << 20, 'x');
    EXPECT_THAT(FieldsOf("<f name='a'>" + value + "</f><f name='b'>2</f>"),
                ElementsAre(Pair("a", value), Pair("b", "2")));
}

TEST(RecordFields, ThatAreNestedAreFurtherFieldsOfAnEmptyOne) {
    EXPECT_THAT(FieldsOf("<f name='a'><g name='b'>2</g></f>"),
                ElementsAre(Pair("a", ""), Pair("b", "2")));
}

TEST(RecordFields, EndAfterNestedElements) {
    EXPECT_THAT(FieldsOf("<f name='a'><g name='b'>2</g></f><f name='c'>3</f>"),
                ElementsAre(Pair("a", ""), Pair("b", "2")));
}

TEST(RecordFields, EndAtTextBetweenThem) {
    EXPECT_THAT(FieldsOf("<f name='a'>1</f>text<f name='b'>2</f>"), ElementsAre(Pair("a", "1")));
}

}  // namespace
