#include <expat.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <new>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/thrown_text.h"
#include "tests/platform/xmlstream/token_reader.h"

namespace {

// How many blocks expat holds, and how many more it may get before one fails; negative for no
// limit.
long g_blocks = 0;
long g_allowed = -1;

// How many parsers were made, and which of them are there.
int g_parsersMade = 0;
std::set<void*>& Parsers() {
    static std::set<void*> parsers;
    return parsers;
}

bool IsGranted() {
    if (g_allowed > 0) {
        --g_allowed;
        return true;
    }
    return g_allowed < 0;
}

void* Allocate(std::size_t size) {
    void* block = IsGranted() ? std::malloc(size) : nullptr;
    g_blocks += block == nullptr ? 0 : 1;
    return block;
}

void* Reallocate(void* block, std::size_t size) {
    if (block == nullptr) {
        return Allocate(size);
    }
    return IsGranted() ? std::realloc(block, size) : nullptr;
}

void Free(void* block) {
    g_blocks -= block == nullptr ? 0 : 1;
    Parsers().erase(block);
    std::free(block);
}

}  // namespace

// Stands in for expat's own, so that the platform's parsers come from here.
XML_Parser XML_ParserCreate(const XML_Char* encoding) {
    static const XML_Memory_Handling_Suite kMemory = {Allocate, Reallocate, Free};
    XML_Parser parser = XML_ParserCreate_MM(encoding, &kMemory, nullptr);
    if (parser != nullptr) {
        ++g_parsersMade;
        Parsers().insert(parser);
    }
    return parser;
}

namespace {

// Runs the work in a thread of its own, which begins without parsers and keeps none at its end.
template <typename Work>
void InAThread(Work work) {
    std::thread(work).join();
    EXPECT_EQ(Parsers().size(), 0U);
    EXPECT_EQ(g_blocks, 0);
}

void ReadThrough(const std::string& xml) {
    EXPECT_FALSE(FailureOf([&] { TokensOf(xml); }));
}

std::string Nested(int depth) {
    std::string xml;
    for (int i = 0; i < depth; ++i) {
        xml += "<a>";
    }
    for (int i = 0; i < depth; ++i) {
        xml += "</a>";
    }
    return xml;
}

// An element with as much text as makes it that long.
std::string OfLength(std::size_t length) {
    const std::string tags = "<a></a>";
    return "<a>" + std::string(length - tags.size(), 'x') + "</a>";
}

TEST(ParserPool, LendsOneParserToOneStreamAfterTheOther) {
    InAThread([] {
        const int before = g_parsersMade;
        for (int i = 0; i < 10; ++i) {
            ReadThrough("<a>text</a>");
        }
        EXPECT_EQ(g_parsersMade - before, 1);
    });
}

TEST(ParserPool, KeepsFourParsers) {
    InAThread([] {
        const auto openNine = [] {
            std::vector<std::unique_ptr<TokenReader>> readers;
            for (int i = 0; i < 9; ++i) {
                readers.push_back(std::make_unique<TokenReader>("<a/>"));
                EXPECT_EQ(readers.back()->Next(), "<a>");
            }
        };
        openNine();
        EXPECT_EQ(Parsers().size(), 4U);
        const int before = g_parsersMade;
        openNine();
        EXPECT_EQ(g_parsersMade - before, 5);
    });
}

TEST(ParserPool, KeepsNoParserThatHasReadMuch) {
    constexpr std::size_t kMost = std::size_t{256} * 1024;
    InAThread([] {
        ReadThrough(OfLength(kMost));
        EXPECT_EQ(Parsers().size(), 1U);
        ReadThrough(OfLength(kMost + 1));
        EXPECT_EQ(Parsers().size(), 0U);
    });
}

TEST(ParserPool, KeepsNoParserThatHasBeenDeep) {
    InAThread([] {
        ReadThrough(Nested(1000));
        EXPECT_EQ(Parsers().size(), 1U);
        ReadThrough(Nested(1001));
        EXPECT_EQ(Parsers().size(), 0U);
    });
}

TEST(ParserPool, KeepsAParserWhoseInputWasRefused) {
    InAThread([] {
        EXPECT_TRUE(FailureOf([] { TokensOf("<a></b>"); }));
        EXPECT_EQ(Parsers().size(), 1U);
        ReadThrough("<a/>");
    });
}

// What a stream throws that has run out of memory and is asked once more.
std::string TextAfterOutOfMemory(IXmlStream& xml) {
    g_allowed = -1;
    return ThrownText([&] { xml.GetNextTokenType(); });
}

// Reads the text to its end. Returns false when memory is short, which only std::bad_alloc may say.
bool ReadWithLittleMemory(const std::string& xml) {
    std::unique_ptr<TokenReader> reader;
    try {
        reader = std::make_unique<TokenReader>(xml);
        reader->Rest();
        return true;
    } catch (const std::bad_alloc&) {
        if (reader != nullptr) {
            EXPECT_EQ(TextAfterOutOfMemory(reader->Xml()),
                      "Assertion failed: an XML stream is not used after it has failed");
        }
        return false;
    }
}

// Two streams, so that a parser is made and reset, on a text that makes expat ask for memory for
// its buffer, names, attributes and open elements.
TEST(OutOfMemoryInExpat, IsReportedAsSuchWhereverItComes) {
    std::string xml = Nested(40) + "<a name='" + std::string(5000, 'x') + "'>";
    for (int i = 0; i < 40; ++i) {
        xml += "<n" + std::string(100, 'n') + " a" + std::to_string(i) + "='&amp;' b='2'/>";
    }
    xml += "</a>";
    int failures = 0;
    for (bool complete = false; !complete; ++failures) {
        InAThread([&] {
            g_allowed = failures;
            const auto failure = FailureOf(
                [&] { complete = ReadWithLittleMemory(xml) && ReadWithLittleMemory(xml); });
            EXPECT_FALSE(failure) << "after " << failures << " blocks: " << failure->message;
            g_allowed = -1;
        });
        ASSERT_FALSE(HasFailure());
    }
    EXPECT_GT(failures, 50);
}

}  // namespace
