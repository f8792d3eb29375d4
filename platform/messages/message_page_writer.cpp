// Writes the manual's page of messages from the catalogue: message_page_writer FILE

#include <cstdio>
#include <fstream>

#include "platform/foundation/obx_string.h"
#include "platform/messages/catalogue.h"

namespace {

constexpr const char* kIntroduction =
    "# Messages\n\n"
    "Each message by its number, with what happened and what to do about it. A word between\n"
    "underscores stands for a value that the message puts in its place.\n";

void WriteMessage(std::ostream& out, const CatalogueMessage& message) {
    out << "\n## " << message.id << "\n\n    " << Obx_String(message.text).ToUtf8() << "\n\n"
        << message.explanation << "\n";
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: message_page_writer FILE\n", stderr);
        return 2;
    }
    std::ofstream page(argv[1]);
    page << kIntroduction;
    for (const CatalogueMessage& message : MessageCatalogue()) {
        WriteMessage(page, message);
    }
    page.close();
    if (!page) {
        std::fprintf(stderr, "%s cannot be written\n", argv[1]);
        return 1;
    }
    return 0;
}
