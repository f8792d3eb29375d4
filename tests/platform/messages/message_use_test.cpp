// Looks at the sources, since a wrong parameter shows itself at run time only where the message is
// raised, and an id that nobody uses never.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "platform/foundation/obx_string.h"
#include "platform/messages/catalogue.h"
#include "tests/platform/messages/declared_ids.h"

namespace {

struct Source {
    std::string file;
    std::string text;
};

std::vector<Source> SourcesThatRaiseMessages() {
    std::vector<Source> sources;
    for (const char* layer : {"platform/core", "platform/messages", "ztimporter", "recorddb"}) {
        const auto folder = std::filesystem::path(ZT_SOURCE_DIR) / layer;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            if (entry.path().extension() == ".cpp") {
                std::ifstream file(entry.path());
                std::ostringstream text;
                text << file.rdbuf();
                sources.push_back({entry.path().string(), text.str()});
            }
        }
    }
    return sources;
}

std::vector<std::string> Found(const std::string& text, const char* pattern) {
    const std::regex expression(pattern);
    std::vector<std::string> found;
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end;
         ++match) {
        found.push_back((*match)[1]);
    }
    return found;
}

constexpr const char* kUsedId = R"(message_id::(k\w+))";
constexpr const char* kSetParameter = R"re(u"(_[a-z_]+_)")re";

std::set<std::string> ParametersOf(int id) {
    const CatalogueMessage* message = FindCatalogueMessage(id);
    const std::string text = message == nullptr ? "" : Obx_String(message->text).ToUtf8();
    const std::vector<std::string> names = Found(text, "(_[a-z_]*[a-z]_)");
    return {names.begin(), names.end()};
}

// The statements of the text that name a message id.
std::vector<std::string> StatementsWithIds(const std::string& text) {
    std::vector<std::string> statements;
    std::size_t end = 0;
    for (std::size_t at = text.find("message_id::"); at != std::string::npos;
         at = text.find("message_id::", end)) {
        const std::size_t begin = text.find_last_of(";{}", at) + 1;
        end = std::min(text.find(';', at), text.size());
        statements.push_back(text.substr(begin, end - begin));
    }
    return statements;
}

TEST(MessageUse, EachDeclaredIdIsUsed) {
    std::set<std::string> used;
    for (const Source& source : SourcesThatRaiseMessages()) {
        for (const std::string& id : Found(source.text, kUsedId)) {
            used.insert(id);
        }
    }
    for (const auto& [name, id] : DeclaredIds()) {
        EXPECT_TRUE(used.contains(name)) << "nobody raises message " << id << ", " << name;
    }
}

TEST(MessageUse, EachParameterThatIsSetBelongsToAMessage) {
    std::set<std::string> known;
    for (const CatalogueMessage& message : MessageCatalogue()) {
        known.merge(ParametersOf(message.id));
    }
    std::size_t looked = 0;
    for (const Source& source : SourcesThatRaiseMessages()) {
        for (const std::string& parameter : Found(source.text, kSetParameter)) {
            ++looked;
            EXPECT_TRUE(known.contains(parameter)) << source.file << " sets " << parameter;
        }
    }
    EXPECT_GT(looked, 0U);
}

// Where a message is made with its parameters in one statement, they must be that message's. A
// statement may choose between several messages.
TEST(MessageUse, ParametersInAStatementBelongToItsMessage) {
    const std::map<std::string, int> ids = DeclaredIds();
    std::size_t looked = 0;
    for (const Source& source : SourcesThatRaiseMessages()) {
        for (const std::string& statement : StatementsWithIds(source.text)) {
            std::set<std::string> allowed;
            for (const std::string& id : Found(statement, kUsedId)) {
                allowed.merge(ParametersOf(ids.at(id)));
            }
            for (const std::string& parameter : Found(statement, kSetParameter)) {
                ++looked;
                EXPECT_TRUE(allowed.contains(parameter))
                    << source.file << " sets " << parameter << " in" << statement;
            }
        }
    }
    EXPECT_GT(looked, 0U);
}

}  // namespace
