#include "platform/messages/pamessage.h"

#include <gtest/gtest.h>

#include "platform/messages/message_ids.h"
#include "tests/platform/printing.h"
#include "tests/platform/thrown_text.h"

namespace {

constexpr int kNobodysId = 19999;

PaMessage RecordNotFound() {
    PaMessage message(message_id::kRecordNotFound);
    message.SetParam(u"_datatype_", u"bug");
    message.SetParam(u"_field_", u"source_id");
    message.SetParam(u"_value_", u"SK-102");
    return message;
}

TEST(PaMessage, HasNothingToSayAtFirst) {
    const PaMessage message;
    EXPECT_EQ(message.ID(), 0);
    EXPECT_EQ(message.Type(), 0);
    EXPECT_EQ(message.FullMsg(), u"");
}

TEST(PaMessage, KeepsItsIdAndType) {
    PaMessage message(message_id::kNoConfiguration);
    message.Type(3);
    EXPECT_EQ(message.ID(), 15867);
    EXPECT_EQ(message.Type(), 3);
}

TEST(PaMessage, PutsTheParametersIntoTheText) {
    EXPECT_EQ(RecordNotFound().FullMsg(),
              u"No record of type \"bug\" has \"SK-102\" in its field \"source_id\".");
}

TEST(PaMessage, TheLastValueOfAParameterCounts) {
    PaMessage message = RecordNotFound();
    message.SetParam(u"_value_", u"SK-103");
    EXPECT_EQ(message.FullMsg(),
              u"No record of type \"bug\" has \"SK-103\" in its field \"source_id\".");
}

TEST(PaMessage, AParameterThatWasNotSetStaysAsItsName) {
    PaMessage message(message_id::kUnknownRecordType);
    EXPECT_EQ(message.FullMsg(), u"The database has no record type \"_datatype_\".");
}

TEST(PaMessage, AnEmptyValueIsAValue) {
    PaMessage message(message_id::kUnknownRecordType);
    message.SetParam(u"_datatype_", u"");
    EXPECT_EQ(message.FullMsg(), u"The database has no record type \"\".");
}

TEST(PaMessage, AValueThatLooksLikeAParameterStaysAsItIs) {
    PaMessage message = RecordNotFound();
    message.SetParam(u"_datatype_", u"_field_ of _value_");
    message.SetParam(u"_value_", u"_datatype_");
    EXPECT_EQ(message.FullMsg(),
              u"No record of type \"_field_ of _value_\" has \"_datatype_\" in its field "
              u"\"source_id\".");
}

TEST(PaMessage, AValueMayHoldTheTextOfAnotherMessage) {
    PaMessage outer(message_id::kValidationFailed);
    outer.SetParam(u"_coreinfo_", RecordNotFound().FullMsg());
    EXPECT_EQ(outer.FullMsg(),
              u"The record is not valid and was not written: " + RecordNotFound().FullMsg());
}

TEST(PaMessage, AMessageThatTheCatalogueLacksListsItsParameters) {
    PaMessage message(kNobodysId);
    EXPECT_EQ(message.FullMsg(), u"Message 19999, which the catalogue does not have");
    message.SetParam(u"_a_", u"1");
    message.SetParam(u"_b_", u"2");
    EXPECT_EQ(message.FullMsg(),
              u"Message 19999, which the catalogue does not have: _a_ = \"1\", _b_ = \"2\"");
}

#ifdef NDEBUG

TEST(PaMessage, IgnoresAParameterThatItsTextDoesNotHave) {
    PaMessage message(message_id::kUnknownRecordType);
    message.SetParam(u"_datatyp_", u"bug");
    EXPECT_EQ(message.FullMsg(), u"The database has no record type \"_datatype_\".");
}

#else

TEST(PaMessage, RefusesAParameterThatItsTextDoesNotHave) {
    for (const char16_t* name : {u"_field_", u"_datatyp_", u"datatype", u""}) {
        PaMessage message(message_id::kUnknownRecordType);
        EXPECT_EQ(ThrownText([&] { message.SetParam(name, u"bug"); }),
                  (u"Message 15873 has no parameter \"" + Obx_String(name) + u"\"").ToUtf8());
    }
}

TEST(PaMessage, RefusesAParameterThatIsOnlyPartOfAnothersName) {
    PaMessage message(message_id::kHistoryFieldEmpty);
    EXPECT_EQ(ThrownText([&] { message.SetParam(u"_field_", u"x"); }),
              "Message 15875 has no parameter \"_field_\"");
}

TEST(PaMessage, RefusesParametersWhenItHasNothingToSay) {
    PaMessage message;
    EXPECT_EQ(ThrownText([&] { message.SetParam(u"_field_", u"x"); }),
              "Message 0 has no parameter \"_field_\"");
}

#endif

}  // namespace
