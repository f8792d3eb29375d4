#ifndef RECORDDB_SESSION_SESSION_OPTIONS_H
#define RECORDDB_SESSION_SESSION_OPTIONS_H

#include <string>

namespace recorddb {

struct SessionOptions {
    // The folder below which the files of attachments are found; empty: attachments are refused.
    std::string attachmentsFolder;
    // The files of attachments are found and read, but their content is not stored: for work that
    // is to be undone in any case.
    bool examineAttachments = false;
};

}  // namespace recorddb

#endif
