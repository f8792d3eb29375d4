#ifndef TESTS_PLATFORM_MESSAGES_DECLARED_IDS_H
#define TESTS_PLATFORM_MESSAGES_DECLARED_IDS_H

#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>

// The message ids that platform/messages/message_ids.h declares, by their names.
inline std::map<std::string, int> DeclaredIds() {
    std::ifstream file(ZT_SOURCE_DIR "/platform/messages/message_ids.h");
    std::ostringstream text;
    text << file.rdbuf();
    const std::string header = text.str();
    const std::regex declaration(R"(constexpr int (k\w+) = (\d+);)");
    std::map<std::string, int> ids;
    for (std::sregex_iterator found(header.begin(), header.end(), declaration), end; found != end;
         ++found) {
        ids.emplace((*found)[1], std::stoi((*found)[2]));
    }
    return ids;
}

#endif
