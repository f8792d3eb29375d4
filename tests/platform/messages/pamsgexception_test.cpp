#include "platform/messages/pamsgexception.h"

#include <gtest/gtest.h>

#include "platform/messages/message_ids.h"
#include "tests/platform/printing.h"
#include "tests/platform/thrown_text.h"

namespace {

PaMessage UnknownRecordType(const char16_t* name) {
    PaMessage message(message_id::kUnknownRecordType);
    message.SetParam(u"_datatype_", name);
    return message;
}

// Tells when it is freed.
class WatchedException : public PaMsgException {
  public:
    WatchedException(PaMessage message, bool& freed)
        : PaMsgException(std::move(message)), m_freed(freed) {}

  protected:
    ~WatchedException() override { m_freed = true; }

  private:
    bool& m_freed;
};

TEST(PaMsgException, GivesItsFirstMessageAsItsText) {
    EXPECT_EQ(ThrownText([] { throw new PaMsgException(UnknownRecordType(u"bog")); }),
              "The database has no record type \"bog\".");
}

TEST(PaMsgException, KeepsMessagesInOrder) {
    auto* exception = new PaMsgException(UnknownRecordType(u"first"));
    exception->AddMessage(UnknownRecordType(u"second"));
    ASSERT_EQ(exception->Messages().size(), 2U);
    EXPECT_EQ(exception->Messages()[1].FullMsg(), UnknownRecordType(u"second").FullMsg());
    exception->Delete();
}

TEST(PaMsgException, ExtractingGivesTheFirstTextAndFreesTheException) {
    bool freed = false;
    auto* exception = new WatchedException(UnknownRecordType(u"first"), freed);
    exception->AddMessage(UnknownRecordType(u"second"));
    EXPECT_EQ(AdExtractFirstMsgAndDeleteException(exception),
              UnknownRecordType(u"first").FullMsg());
    EXPECT_TRUE(freed);
}

TEST(AdThrowMsgExcept, ThrowsOneErrorThatNamesTextFileAndLine) {
    try {
        AdThrowMsgExcept(AdGetBadValue0MsgID(), u"no record type", u"ztimporter/adimporter", 42);
    } catch (PaMsgException* exception) {
        ASSERT_EQ(exception->Messages().size(), 1U);
        const PaMessage& message = exception->Messages().front();
        EXPECT_EQ(message.ID(), message_id::kBadValue);
        EXPECT_EQ(message.Type(), 3);
        EXPECT_EQ(message.FullMsg(),
                  u"A value cannot be used: no record type (ztimporter/adimporter, line 42).");
        exception->Delete();
    }
}

}  // namespace
