#ifndef RECORDDB_EDITING_ATTACHMENT_CHANGES_H
#define RECORDDB_EDITING_ATTACHMENT_CHANGES_H

#include <cstdint>
#include <string>
#include <vector>

#include "recorddb/record.h"

namespace recorddb {

// A file that is to become an attachment. It is opened when it is written: a record may have more
// attachments than a process may have open files.
struct NewAttachment {
    Attachment attachment;
    std::string name;  // of the file in its folder
};

// What is to be added to and removed from the attachments of a record.
struct AttachmentChanges {
    std::vector<NewAttachment> added;
    std::vector<Attachment> removed;

    bool Empty() const { return added.empty() && removed.empty(); }
    void Clear();

    // The attachments of a record as they will be: those stored, without those removed, with those
    // added.
    std::vector<Attachment> AppliedTo(std::vector<Attachment> stored) const;
};

// An attachment as the core describes it: four lines, dbid, file name, size and description. The
// description stands last, since it alone may have line ends in it.
std::string AttachmentText(const Attachment& attachment);

}  // namespace recorddb

#endif
