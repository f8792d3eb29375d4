#include "platform/foundation/cexception.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/platform/printing.h"

namespace {

class CExceptionTest : public testing::Test {
  protected:
    void TearDown() override { m_exception->Delete(); }

    CException* m_exception = new CException(u"no more paper");
};

TEST_F(CExceptionTest, GivesItsMessage) {
    char16_t buffer[100];
    EXPECT_EQ(m_exception->GetErrorMessage(buffer, 100), 1);
    EXPECT_EQ(Obx_String(buffer), u"no more paper");
}

TEST_F(CExceptionTest, FillsABufferThatFitsExactly) {
    char16_t buffer[14];
    EXPECT_EQ(m_exception->GetErrorMessage(buffer, 14), 1);
    EXPECT_EQ(Obx_String(buffer), u"no more paper");
}

TEST_F(CExceptionTest, CutsAMessageThatIsTooLong) {
    char16_t buffer[9];
    std::fill(std::begin(buffer), std::end(buffer), u'#');
    EXPECT_EQ(m_exception->GetErrorMessage(buffer, 8), 1);
    EXPECT_EQ(Obx_String(buffer), u"no more");
    EXPECT_EQ(buffer[8], u'#');
}

TEST_F(CExceptionTest, GivesAnEmptyTextInABufferOfOne) {
    char16_t buffer[1] = {u'#'};
    EXPECT_EQ(m_exception->GetErrorMessage(buffer, 1), 1);
    EXPECT_EQ(buffer[0], u'\0');
}

TEST_F(CExceptionTest, WritesNothingWithoutRoom) {
    char16_t buffer[1] = {u'#'};
    EXPECT_EQ(m_exception->GetErrorMessage(buffer, 0), 0);
    EXPECT_EQ(buffer[0], u'#');
    EXPECT_EQ(m_exception->GetErrorMessage(nullptr, 100), 0);
}

TEST_F(CExceptionTest, SetsTheHelpContextToNothing) {
    unsigned helpContext = 7;
    char16_t buffer[10];
    m_exception->GetErrorMessage(buffer, 10, &helpContext);
    EXPECT_EQ(helpContext, 0U);
}

}  // namespace
