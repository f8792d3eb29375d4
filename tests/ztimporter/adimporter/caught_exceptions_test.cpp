#include <gtest/gtest.h>

#include <string>

#include "platform/foundation/cexception.h"
#include "tests/ztimporter/importer_fixture.h"

// How the text of an exception gets into an error text.

namespace {

// An exception that notes how it is asked for its message, and that it is deleted.
class NotedException : public CException {
  public:
    NotedException(CallLog& log, const Obx_String& message) : CException(message), m_log(log) {}

    int GetErrorMessage(char16_t* buffer, unsigned size, unsigned* helpContext) const override {
        m_log.Add(CallLog::Kind::kCall, "GetErrorMessage of " + std::to_string(size) +
                                            (helpContext == nullptr ? "" : " with help"));
        return CException::GetErrorMessage(buffer, size, helpContext);
    }
    void Delete() override {
        m_log.Add(CallLog::Kind::kCall, "Delete");
        CException::Delete();
    }

  private:
    CallLog& m_log;
};

// A sink that throws one such exception at the trace of an operation.
class NotedExceptionSink : public AdDiagnosticSink {
  public:
    NotedExceptionSink(CallLog& log, std::string trace, Obx_String message)
        : m_log(log),
          m_trace(std::move(trace)),
          m_message(std::move(message)),
          m_former(AdDiagnostic::SetSink(this)) {}
    NotedExceptionSink(const NotedExceptionSink&) = delete;
    NotedExceptionSink& operator=(const NotedExceptionSink&) = delete;
    ~NotedExceptionSink() override { AdDiagnostic::SetSink(m_former); }

    bool Wants(int) override { return true; }
    void Write(const Obx_String&, const Obx_String& text) override {
        if (text.ToUtf8().starts_with(m_trace)) {
            throw new NotedException(m_log, m_message);
        }
    }

  private:
    CallLog& m_log;
    std::string m_trace;
    Obx_String m_message;
    AdDiagnosticSink* m_former;
};

class CaughtExceptionsTest : public ImporterTest {
  protected:
    static Obx_String Units(int count) {
        return Obx_String::FromUtf8(std::string(static_cast<std::size_t>(count), 'x'));
    }

    void ImportWith(const Obx_String& message) {
        NotedExceptionSink sink(m_core.Log(), "Import is record data", message);
        Import("<records/>");
    }
};

TEST_F(CaughtExceptionsTest, AreReadIntoABufferWithoutHelpAndThenDeleted) {
    ImportWith(u"cause");
    ExpectErrorText(u"\nCaught a CException: cause");
    ExpectCalls({"GetErrorMessage of 4096", "Delete"});
}

TEST_F(CaughtExceptionsTest, GiveTheirFirst4095Units) {
    ImportWith(Units(4095));
    ExpectErrorText(u"\nCaught a CException: " + Units(4095));
    ImportWith(Units(4096));
    ExpectErrorText(u"\nCaught a CException: " + Units(4095));
}

TEST_F(CaughtExceptionsTest, GiveTheirFirst4095UnitsAlsoWhereTheyReplaceTheText) {
    NotedExceptionSink sink(m_core.Log(), "GetResultSetWhere begins", Units(5000));
    m_error = u"earlier";
    m_importer->GetResultSetWhere(&m_bug, u"source_id", u"core-1", m_error);
    ExpectErrorText(u"Caught a CException: \n" + Units(4095));
    ExpectCalls({"GetErrorMessage of 4096", "Delete"});
}

TEST_F(CaughtExceptionsTest, InTheMiddleOfAConfigurationLeaveWhatWasStoredBefore) {
    GivenConfiguration({.originalId = "former", .duplicateId = "former"});
    m_importer->m_configurationReceived = 0;
    NotedExceptionSink sink(m_core.Log(), "GetConfigString, item = duplicate_id", u"cause");
    Import(Configuration{.recordType = "user", .importData = "history", .originalId = "login"}
               .Packet());
    EXPECT_EQ(m_importer->m_entityDef, &m_user);
    EXPECT_EQ(m_importer->m_originalID, u"login");
    EXPECT_EQ(m_importer->m_duplicateID, u"former");
    EXPECT_EQ(m_importer->m_importDataType, u"record");
    EXPECT_EQ(m_importer->m_configurationReceived, 0);
}

TEST_F(CaughtExceptionsTest, BeforeTheMappingLeaveThePacketUnreceived) {
    NotedExceptionSink sink(m_core.Log(), "GetReferenceMapping", u"cause");
    Import(Configuration{.updateInsert = false, .mapping = {{"owner", "mail"}}}.Packet());
    EXPECT_EQ(m_importer->m_updateInsert, 0);
    EXPECT_EQ(m_importer->m_configurationReceived, 0);
    EXPECT_TRUE(m_importer->m_recordReferenceMapping.IsEmpty());
}

}  // namespace
