#include "platform/xmlstream/expat_pool.h"

#include <expat.h>

#include <memory>
#include <vector>

#include "platform/foundation/out_of_memory.h"

namespace {

struct FreeParser {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using OwnedParser = std::unique_ptr<XML_ParserStruct, FreeParser>;

// A thread seldom has more than one stream open, so more than a few parsers are not worth keeping.
constexpr std::size_t kMostIdleParsers = 4;

constexpr const char* kEncoding = "UTF-8";

std::vector<OwnedParser>& IdleParsers() {
    thread_local std::vector<OwnedParser> parsers;
    return parsers;
}

}  // namespace

PooledExpatParser::PooledExpatParser() {
    std::vector<OwnedParser>& idle = IdleParsers();
    idle.reserve(kMostIdleParsers);
    OwnedParser parser;
    if (idle.empty()) {
        parser.reset(XML_ParserCreate(kEncoding));
    } else {
        parser = std::move(idle.back());
        idle.pop_back();
        if (XML_ParserReset(parser.get(), kEncoding) == XML_FALSE) {
            parser.reset();
        }
    }
    if (parser == nullptr) {
        ThrowOutOfMemory();
    }
    m_parser = parser.release();
}

PooledExpatParser::~PooledExpatParser() {
    OwnedParser parser(m_parser);
    std::vector<OwnedParser>& idle = IdleParsers();
    if (m_reuse && idle.size() < idle.capacity()) {
        idle.push_back(std::move(parser));
    }
}
