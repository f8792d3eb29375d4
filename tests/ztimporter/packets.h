#ifndef TESTS_ZTIMPORTER_PACKETS_H
#define TESTS_ZTIMPORTER_PACKETS_H

#include <string>
#include <utility>
#include <vector>

// Packets as UTF-8 text.

// Names and values, in order.
using Pairs = std::vector<std::pair<std::string, std::string>>;

struct Configuration {
    std::string recordType = "bug";
    std::string importData = "record";
    std::string originalId = "source_id";
    std::string duplicateId = "";
    bool updateRecord = false;
    bool updateInsert = false;
    bool replaceRefList = false;
    bool importState = false;
    // Field of the imported type, and field of the referenced type that its values are matched by.
    Pairs mapping = {};

    std::string Packet() const;
};

// A record element. Values are escaped once.
std::string Record(const Pairs& fields);

std::string Packet(const std::vector<std::string>& records);

// A history value of lines and their columns.
std::string HistoryLines(const std::vector<std::vector<std::string>>& lines);

// A history value of `count` valid entries by the users "user 1", "user 2" ...
std::string ManyHistoryLines(int count);

// The four lines of an attachment in an attachments value.
std::string AttachmentLines(const std::string& dbid, const std::string& fileName,
                            const std::string& description);

#endif
