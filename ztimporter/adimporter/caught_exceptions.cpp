#include "ztimporter/adimporter/caught_exceptions.h"

#include <array>

#include "platform/foundation/cexception.h"
#include "platform/messages/pamsgexception.h"

namespace adimporter {

namespace {

constexpr const char16_t* kExceptionPrefix = u"Caught a CException: ";
constexpr const char16_t* kStringPrefix = u"Caught a CString: ";
constexpr const char16_t* kUnknownText = u"Caught an unknown exception";

// So short that a string holds it in itself, without memory of its own.
constexpr std::u16string_view kNoMemoryText = u"\nmemory";

Obx_String TakeMessage(CException* exception) {
    std::array<char16_t, 4096> buffer{};
    exception->GetErrorMessage(buffer.data(), buffer.size());
    exception->Delete();
    return buffer.data();
}

Obx_String TakeText(Obx_String* thrown) {
    Obx_String text = std::move(*thrown);
    delete thrown;
    return text;
}

const char16_t* PrefixOf(CaughtKind kind) {
    switch (kind) {
        case CaughtKind::kException:
            return kExceptionPrefix;
        case CaughtKind::kString:
            return kStringPrefix;
        case CaughtKind::kUnknown:
            return kUnknownText;
        case CaughtKind::kMessages:
            break;
    }
    return u"";
}

void AppendByConvention(const CaughtException& caught, Obx_String& error) {
    error += u"\n" + (PrefixOf(caught.kind) + caught.text);
}

}  // namespace

CaughtException TakeCaughtException() {
    try {
        throw;
    } catch (PaMsgException* exception) {
        return {CaughtKind::kMessages, AdExtractFirstMsgAndDeleteException(exception)};
    } catch (CException* exception) {
        return {CaughtKind::kException, TakeMessage(exception)};
    } catch (Obx_String* thrown) {
        return {CaughtKind::kString, TakeText(thrown)};
    } catch (...) {
        return {CaughtKind::kUnknown, {}};
    }
}

void AppendCaughtException(Obx_String& error) noexcept {
    try {
        AppendByConvention(TakeCaughtException(), error);
    } catch (...) {
        if (error.IsEmpty()) {
            error = Obx_String(kNoMemoryText);
        }
    }
}

void ReplaceOrAppendCaughtException(const CaughtException& caught, Obx_String& error) {
    switch (caught.kind) {
        case CaughtKind::kException:
            error = kExceptionPrefix + (u"\n" + caught.text);
            break;
        case CaughtKind::kString:
            error = kStringPrefix;
            break;
        case CaughtKind::kMessages:
        case CaughtKind::kUnknown:
            AppendByConvention(caught, error);
            break;
    }
}

}  // namespace adimporter
