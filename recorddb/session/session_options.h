#ifndef RECORDDB_SESSION_SESSION_OPTIONS_H
#define RECORDDB_SESSION_SESSION_OPTIONS_H

#include <string>

namespace recorddb {

struct SessionOptions {
    // The folder below which the files of attachments are found; empty: attachments are refused.
    std::string attachmentsFolder;
};

}  // namespace recorddb

#endif
