#include "tool/losses/record_losses.h"

#include <gtest/gtest.h>

#include <string>

#include "finding.h"
#include "tool/sources/xml/packet_reader.h"

namespace {

using finding::Configuration;
using finding::Losses;
using finding::LossesOfFields;
using finding::Record;

struct Case {
    const char* fields;
    const char* losses;
};

std::string Repeated(std::string_view line, int times) {
    std::string text;
    for (int i = 0; i < times; ++i) {
        text += line;
    }
    return text;
}

TEST(RecordLosses, ARecordThatIsReadAsItStandsHasNone) {
    const char* const cleanFields[] = {
        "",
        "<f name='title'>A</f>",
        "<f name='title'>&lt;a href=&quot;x&quot;&gt; &amp; &apos;b&apos;</f>",
        "<f name='description'>one&#xA;two&#xD;three&#x9;four</f>",
        "<f name='description'>one\ntwo</f>",
        "<f name='description'>one\r\ntwo\rthree</f>",
        "<f name='description'>one&#xD;&#xA;two</f>",
        "<f name='title'>  blanks around  </f>",
        "<f name='title'>   </f>",
        "<f name='title'></f><f name='votes'/>",
        "<f name='title'><![CDATA[a < b ]] c]]></f>",
        "<f name='title'>a<!-- not shown -->b<?nor this?>c</f>",
        "<f name='title'>&amp;amp;</f>",
        "<f name='title'>&amp;#10;</f>",
        "<f name='title'>AT&amp;T;</f>",
        "<f name='title'>\xC3\xBC \xF0\x9F\x90\x9E</f>",
        "<?instruction?><!-- comment -->\n<f name='title'>A</f>\n<!-- comment -->\n",
        "<f name='log'>1\t2020-01-01\tann\tsubmit\tnone\tNEW\n2\t2020-01-02</f>",
        "<f name='files'>1\na.txt\n12\nfirst\n2\nb.txt\n13\nsecond\n</f>",
        "<f name='state'>OPEN</f>",
        "<f name='title'>BLANKET</f>",
        "<f name='title'> BLANK</f>",
        "<f name='watchers'>BLANK</f>",
        "<f name='id'></f>",
        "<f name='title'>A</f><f name='title'>A</f>",
        "<f name='title'></f><f name='title'>A</f>",
        "<f name='watchers'>ann</f><f name='Watchers'>bob</f>",
        "<f name='log'>1\ta</f><f name='LOG'>2\tb</f>",
    };
    for (const char* fields : cleanFields) {
        EXPECT_EQ(LossesOfFields(fields), "") << fields;
    }
}

TEST(RecordLosses, OfTextsAreThoseThatTheImporterDecodesOtherwise) {
    const Case cases[] = {
        {"<f name='title'>a &amp;lt; b</f>",
         "changed-text, 2, , title: the text \"&lt;\" is decoded as if it were an escape"},
        {"<f name='title'>&amp;#xA;</f>",
         "changed-text, 2, , title: the text \"&#xA;\" is decoded as if it were an escape"},
        {"<f name='title'>&amp;#xD;</f>",
         "changed-text, 2, , title: the text \"&#xD;\" is decoded as if it were an escape"},
        {"<f name='title'><![CDATA[R&amp;D]]></f>",
         "changed-text, 2, , title: the text \"&amp;\" is decoded as if it were an escape"},
        {"<f name='title'><![CDATA[&lt;b&gt;]]></f>",
         "changed-text, 2, , title: the text \"&lt;\" is decoded as if it were an escape"},
        {"<f name='title'>one&#10;two</f>",
         "changed-text, 2, , title: the reference \"&#10;\" stays as it is written"},
        {"<f name='title'>&#xa;</f>",
         "changed-text, 2, , title: the reference \"&#xa;\" stays as it is written"},
        {"<f name='title'>50 &#8364;</f>",
         "changed-text, 2, , title: the reference \"&#8364;\" stays as it is written"},
        {"<f name='title'>&#38;</f>",
         "changed-text, 2, , title: the reference \"&#38;\" stays as it is written"},
        {"<f name='title'>&#38;lt;</f>",
         "changed-text, 2, , title: the reference \"&#38;\" stays as it is written"},
        {"<f name='title'><![CDATA[&amp;#7;]]></f>",
         "changed-text, 2, , title: the text \"&amp;\" is decoded as if it were an escape"},
        {"<f name='title'>&amp;<!-- -->lt;</f>",
         "changed-text, 2, , title: the text \"&lt;\" is decoded as if it were an escape"},
    };
    for (const Case& one : cases) {
        EXPECT_EQ(LossesOfFields(one.fields), one.losses) << one.fields;
    }
}

TEST(RecordLosses, ArePlacedByLineAndSourceId) {
    EXPECT_EQ(LossesOfFields("<f name='source_id'>core-25</f>\n\n<f name='title'>&#10;</f>"),
              "changed-text, 4, core-25, title: the reference \"&#10;\" stays as it is written");
    const std::string second = "<record/>\n\n" + Record("<f name='title'>&#10;</f>");
    EXPECT_EQ(Losses(second, Configuration("record")),
              "changed-text, 4, , title: the reference \"&#10;\" stays as it is written");
}

TEST(RecordLosses, NameTheirRecordByItsNumber) {
    tool::PacketReader reader(std::make_unique<tool::TextBytes>(
        "<record></record><record><f name='title'>&#10;</f></record>", "bugs.xml"));
    const auto configuration = Configuration("record");
    tool::RecordLosses finder(configuration, *finding::TrackerSchema().FindType("bug"));
    tool::SourceRecord record;
    tool::RecordReadings readings;
    std::vector<tool::Loss> losses;
    while (reader.NextRecord(record)) {
        ASSERT_EQ(readings.Read(record), "");
        finder.Find(record, readings, "bugs.xml",
                    [&](const tool::Loss& loss) { losses.push_back(loss); });
    }
    ASSERT_EQ(losses.size(), 1U);
    EXPECT_EQ(losses[0].record, 2U);
    EXPECT_EQ(losses[0].source, "bugs.xml");
}

TEST(RecordLosses, OfHistoryAreLinesOfSevenOrMoreColumns) {
    EXPECT_EQ(
        LossesOfFields("<f name='log'>1\ta\tb\tc\td\te\n812\ta\tb\tc\td\te\tf\n"
                       "3\ta\tb\tc\td\te\tf\tg</f>"),
        "long-history-line, 2, , log: line 2 of the value (entry \"812\") is dropped: it has 7 "
        "columns, and six are the most\n"
        "long-history-line, 2, , log: line 3 of the value (entry \"3\") is dropped: it has 8 "
        "columns, and six are the most");
}

TEST(RecordLosses, OfHistoryAreEntriesAfterThe501st) {
    const std::string full = "<f name='log'>" + Repeated("1\ta\n", 501) + "</f>";
    EXPECT_EQ(LossesOfFields(full), "");
    EXPECT_EQ(LossesOfFields("<f name='log'>" + Repeated("1\ta\n", 504) + "</f>"),
              "history-beyond-limit, 2, , log: the last 3 of 504 entries are dropped: a record "
              "takes no more than 501 at a time");
    EXPECT_EQ(LossesOfFields(full + "\n<f name='older_log'>1\ta</f>"),
              "history-beyond-limit, 504, , older_log: the last 1 of 1 entries are dropped: a "
              "record takes no more than 501 at a time");
    // A line that is dropped for its columns does not count towards the limit.
    const std::string withLongLine =
        "<f name='log'>1\ta\tb\tc\td\te\tf\n" + Repeated("1\ta\n", 501) + "</f>";
    EXPECT_EQ(LossesOfFields(withLongLine).find("history-beyond-limit"), std::string::npos);
}

TEST(RecordLosses, OfHistoryPacketsAreThoseOfTheFieldHistory) {
    const auto history = Configuration("history");
    EXPECT_EQ(Losses(Record("<f name='source_id'>7</f><f name='History'>1\ta</f>"), history), "");
    EXPECT_EQ(
        Losses(Record("<f name='source_id'>7</f><f name='history'>1\t\t\t\t\t\t</f>"), history),
        "long-history-line, 2, 7, history: line 1 of the value (entry \"1\") is dropped: it "
        "has 7 columns, and six are the most");
    EXPECT_EQ(Losses(Record("<f name='history'>1\ta</f><f name='log'>2\tb</f>"), history),
              "unused-field, 2, , log: \"2 b\" is not read: a history packet uses only "
              "\"source_id\" and the field \"history\"");
    EXPECT_EQ(Losses(Record("<f name='history'>1\ta</f><f name='HISTORY'>2\tb</f>"), history),
              "unused-field, 2, , HISTORY: \"2 b\" is not read: a history packet uses the first "
              "such field only");
}

TEST(RecordLosses, OfAttachmentsAreLinesAfterTheLastGroupOfFour) {
    EXPECT_EQ(LossesOfFields("<f name='files'>1\na.txt\n1\nfirst\n2\nb.txt\n3</f>"),
              "incomplete-attachment, 2, , files: the last 3 lines are dropped: an attachment "
              "takes four lines (id, file name, size, description)");
    EXPECT_EQ(Losses(Record("<f name='MORE_FILES'>1</f>"), Configuration("attachments")),
              "incomplete-attachment, 2, , MORE_FILES: the last line is dropped: an attachment "
              "takes four lines (id, file name, size, description)");
}

TEST(RecordLosses, OfAttachmentPacketsAreAllOtherFields) {
    const auto attachments = Configuration("attachments");
    EXPECT_EQ(
        Losses(Record("<f name='SOURCE_ID'>7</f><f name='files'>1\na\n2\nb</f>"), attachments), "");
    EXPECT_EQ(Losses(Record("<f name='title'>A</f><f name='votes'></f>"), attachments),
              "unused-field, 2, , title: \"A\" is not read: an attachments packet uses only "
              "\"source_id\" and fields of attachments");
}

TEST(RecordLosses, AreFieldsWithoutAName) {
    EXPECT_EQ(LossesOfFields("<f>A</f><f name=''>B</f><f/><f name='title'>C</f>"),
              "nameless-field, 2, , : \"A\" stands in an element without a name, which is no "
              "field\n"
              "nameless-field, 2, , : \"B\" stands in an element without a name, which is no "
              "field");
}

TEST(RecordLosses, AreFieldsInsideAnother) {
    EXPECT_EQ(LossesOfFields("<f name='title'>\n<g name='votes'>3</g></f>"),
              "nested-field, 3, , votes: \"3\" stands in an element inside the field \"title\"; "
              "the importer takes that element for a field of its own");
    EXPECT_EQ(LossesOfFields("<f name='title'>A <b>bold</b></f>"),
              "nested-field, 2, , title: \"bold\" stands in an element inside the field "
              "\"title\"; the importer takes that element for a field of its own");
}

TEST(RecordLosses, AreFieldsAfterTheEndOfAFieldThatHoldsAnother) {
    EXPECT_EQ(LossesOfFields("<f name='title'>\n<g name='votes'/>\n</f><f name='part'>p</f>\n"
                             "<f name='id'></f><f name='owner'>ann</f>"),
              "unread-field, 4, , part: \"p\" is not read: the importer stops reading the record "
              "on line 4, at the end of a field that holds another element\n"
              "unread-field, 5, , owner: \"ann\" is not read: the importer stops reading the "
              "record on line 4, at the end of a field that holds another element");
}

TEST(RecordLosses, AreTextsBetweenFieldsAndTheFieldsAfterThem) {
    EXPECT_EQ(LossesOfFields("<f name='title'>A</f>\nstray\n<f name='votes'>3</f>"),
              "unread-field, 3, , : \"stray \" is not read: the importer stops reading the record "
              "on line 3, at text that stands outside a field or behind an element in one\n"
              "unread-field, 4, , votes: \"3\" is not read: the importer stops reading the record "
              "on line 3, at text that stands outside a field or behind an element in one");
    EXPECT_EQ(LossesOfFields("<f name='title'>A</f>&#32;<f name='votes'>3</f>"),
              "unread-field, 2, , : \" \" is not read: the importer stops reading the record on "
              "line 2, at text that stands outside a field or behind an element in one\n"
              "unread-field, 2, , votes: \"3\" is not read: the importer stops reading the record "
              "on line 2, at text that stands outside a field or behind an element in one");
}

TEST(RecordLosses, AreTextsAfterAnElementInAField) {
    EXPECT_EQ(LossesOfFields("<f name='title'>A<b/> tail</f>"),
              "unread-field, 2, , title: \"tail\" is not read: the importer stops reading the "
              "record on line 2, at text that stands outside a field or behind an element in one");
}

TEST(RecordLosses, AreWhatTheImporterLeavesUnreadForBeingNoXml) {
    EXPECT_EQ(LossesOfFields("<f name='title'>A</f>stray<f name='votes'>3</g>"),
              "unread-field, 2, , : \"stray\" is not read: the importer stops reading the record "
              "on line 2, at text that stands outside a field or behind an element in one\n"
              "unread-field, 2, , votes: \"3\" is not read: the importer stops reading the record "
              "on line 2, at text that stands outside a field or behind an element in one\n"
              "unread-field, 2, , : the rest of the record is not read: the importer stops "
              "reading the record on line 2, at text that stands outside a field or behind an "
              "element in one");
}

TEST(RecordLosses, AreNoneOfARecordThatIsRejectedForItsText) {
    EXPECT_EQ(LossesOfFields("<f name='title'>&#10;</g>"), "");
    EXPECT_EQ(LossesOfFields("<f name='title'>&#10;&nbsp;</f>"), "");
    EXPECT_EQ(Losses("<record><f name='id'>1</f>", Configuration("record")), "");
    EXPECT_EQ(Losses("<record><f name='id'>\xFF</f></record>", Configuration("record")), "");
}

TEST(RecordLosses, AreValuesOfFieldsThatAreNeverWritten) {
    EXPECT_EQ(LossesOfFields("<f name='ID'>BUG7</f><f name='dbid'>7</f>"),
              "skipped-field, 2, , ID: \"BUG7\" is not written: the database itself gives this "
              "field its value\n"
              "skipped-field, 2, , dbid: \"7\" is not written: the database itself gives this "
              "field its value");
}

TEST(RecordLosses, AreNoIdsByWhichARecordIsLookedUp) {
    const std::string byId = "<original_id name=\"id\"/>";
    const auto known = [&](std::string_view data, const std::string& more) {
        tool::ImportConfiguration configuration;
        configuration.Apply("<configuration><import_data name=\"" + std::string(data) + "\"/>" +
                                byId + more + "</configuration>",
                            "c.xml");
        return configuration;
    };
    const std::string record = Record("<f name='id'>BUG7</f>");
    EXPECT_EQ(Losses(record, known("record", "<updaterecord name=\"TRUE\"/>")), "");
    EXPECT_EQ(Losses(record, known("history", "")), "");
    EXPECT_EQ(Losses(record, known("attachments", "")), "");
    EXPECT_NE(Losses(record, known("record", "")), "");
}

TEST(RecordLosses, AreValuesThatALaterFieldOfTheSameNameReplaces) {
    EXPECT_EQ(LossesOfFields("<f name='title'>A</f>\n<f name='title'>B</f>\n"
                             "<f name='title'>C</f>"),
              "repeated-field, 2, , title: \"A\" is dropped: the field is named again on line 4, "
              "and the last one counts\n"
              "repeated-field, 3, , title: \"B\" is dropped: the field is named again on line 4, "
              "and the last one counts");
    EXPECT_EQ(LossesOfFields("<f name='title'>A</f>\n<f name='title'/>"),
              "repeated-field, 2, , title: \"A\" is dropped: the field is named again on line 3, "
              "and the last one counts");
}

TEST(RecordLosses, AreValuesThatAnotherSpellingOfTheNameReplaces) {
    EXPECT_EQ(LossesOfFields("<f name='title'>A</f>\n<f name='Title'>B</f>"),
              "repeated-field, 2, , title: \"A\" is dropped: the record names the same field as "
              "\"Title\", and that one counts");
    // The second value of "title" takes the place of the first one, before "Title".
    EXPECT_EQ(LossesOfFields("<f name='title'></f>\n<f name='Title'>B</f>\n<f name='title'>C</f>"),
              "repeated-field, 4, , title: \"C\" is dropped: the record names the same field as "
              "\"Title\", and that one counts");
    EXPECT_EQ(LossesOfFields("<f name='title'>A</f><f name='Title'></f>"), "");
}

TEST(RecordLosses, AreListsThatAnotherSpellingReplaces) {
    const auto replacing = Configuration("record", "<replacereflist name=\"TRUE\"/>");
    EXPECT_EQ(Losses(Record("<f name='watchers'>ann</f><f name='WATCHERS'>bob</f>"), replacing),
              "repeated-field, 2, , watchers: \"ann\" is dropped: the record names the same field "
              "as \"WATCHERS\", and that one counts");
}

TEST(RecordLosses, AreValuesThatWouldClearAFieldOfANewRecord) {
    EXPECT_EQ(LossesOfFields("<f name='title'>blank</f><f name='owner'> BLANK\n</f>"),
              "cleared-value, 2, , title: \"blank\" stands for the empty value, and the field "
              "stays empty\n"
              "cleared-value, 2, , owner: \" BLANK \" stands for the empty value, and the field "
              "stays empty");
    EXPECT_EQ(Losses(Record("<f name='title'>BLANK</f>"),
                     Configuration("record", "<updaterecord name=\"TRUE\"/>")),
              "");
}

TEST(RecordLosses, AreNoneWhereNothingIsImported) {
    EXPECT_EQ(Losses(Record("<f name='id'>BUG7</f>"), Configuration("none")), "");
}

TEST(RecordLosses, QuoteTheBeginningOfLongValues) {
    const std::string euros = Repeated("\xE2\x82\xAC", 30);
    EXPECT_EQ(LossesOfFields("<f>" + euros + "</f>"),
              "nameless-field, 2, , : \"" + Repeated("\xE2\x82\xAC", 20) +
                  "...\" stands in an element without a name, which is no field");
}

}  // namespace
