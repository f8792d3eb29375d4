#ifndef ZTIMPORTER_ADIMPORTER_CAUGHT_EXCEPTIONS_H
#define ZTIMPORTER_ADIMPORTER_CAUGHT_EXCEPTIONS_H

#include "platform/foundation/obx_string.h"

namespace adimporter {

enum class CaughtKind { kMessages, kException, kString, kUnknown };

// What is known of an exception that was caught: its own text without any prefix, empty for an
// unknown one.
struct CaughtException {
    CaughtKind kind;
    Obx_String text;
};

// All of these are called from a catch (...) handler and end the exception being handled: it is
// deleted and must not be thrown on.

CaughtException TakeCaughtException();

// Appends a line feed and the exception's text, with the prefix that tells its kind. All operations
// but two report in this way at their boundary. Without memory for the text, an error text stays as
// it was, and an empty one becomes "\nmemory": a failure never leaves it empty.
void AppendCaughtException(Obx_String& error) noexcept;

// How GetResultSetWhere and ReallyImportHistory report: an exception or a thrown string replaces
// the error text, and the text of a thrown string is dropped. Unknown exceptions are appended as
// everywhere, and so are messages, but ReallyImportHistory takes those before it comes here.
void ReplaceOrAppendCaughtException(const CaughtException& caught, Obx_String& error);

}  // namespace adimporter

#endif
