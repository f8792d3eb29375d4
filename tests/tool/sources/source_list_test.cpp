#include "tool/sources/source_list.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "temporary_folder.h"
#include "tool/io/source_error.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using tool::SourceList;

std::string ContentOf(const std::filesystem::path& path) {
    std::ostringstream content;
    content << std::ifstream(path).rdbuf();
    return content.str();
}

class SourceListTest : public testing::Test {
  protected:
    std::string Write(const std::string& name, const std::string& content = "x") {
        return m_folder.Write(name, content);
    }

    std::vector<std::string> NamesIn(const std::vector<std::string>& arguments) {
        SourceList list(arguments);
        std::vector<std::string> names;
        for (const tool::Source& source : list.Sources()) {
            names.push_back(std::filesystem::relative(source.name, m_folder.Path()).string());
        }
        return names;
    }

    // The text with which `arguments` are refused.
    std::string Refusal(const std::vector<std::string>& arguments) {
        try {
            SourceList list(arguments, m_nothing);
        } catch (const tool::SourceError& error) {
            return error.what();
        }
        ADD_FAILURE() << "nothing was refused";
        return {};
    }

    std::string Folder() const { return m_folder.Path().string(); }

    void TearDown() override { ::close(m_nothing); }

    TemporaryFolder m_folder;
    int m_nothing = ::open("/dev/null", O_RDONLY);
};

TEST_F(SourceListTest, KeepsFilesInTheOrderGiven) {
    std::string b = Write("b.xml", "four");
    std::string a = Write("a.txt", "seven77");
    SourceList list({b, a});
    ASSERT_EQ(list.Sources().size(), 2U);
    EXPECT_EQ(list.Sources()[0].path, b);
    EXPECT_EQ(list.Sources()[0].name, b);
    EXPECT_EQ(list.Sources()[0].size, 4U);
    EXPECT_EQ(list.Sources()[1].path, a);
    EXPECT_EQ(list.TotalSize(), 11U);
}

TEST_F(SourceListTest, TakesThePacketsOfADirectoryInBytewiseOrder) {
    for (const char* name : {"b.xml", "B.xml", "a10.xml", "a2.xml", "\xC3\xA4.xml", "_.xml"}) {
        Write(name);
    }
    EXPECT_THAT(NamesIn({Folder()}),
                ElementsAre("B.xml", "_.xml", "a10.xml", "a2.xml", "b.xml", "\xC3\xA4.xml"));
}

TEST_F(SourceListTest, LeavesOtherThingsOfADirectoryOut) {
    for (const char* name : {"a.xml", "a.XML", "a.txt", ".a.xml", ".xml", "a.xml~"}) {
        Write(name);
    }
    std::filesystem::create_directory(m_folder.Path() / "sub.xml");
    EXPECT_THAT(NamesIn({Folder()}), ElementsAre("a.xml"));
}

TEST_F(SourceListTest, MixesFilesAndDirectories) {
    std::filesystem::create_directory(m_folder.Path() / "d");
    Write("d/b.xml");
    Write("d/a.xml");
    std::string z = Write("z.xml");
    EXPECT_THAT(NamesIn({z, Folder() + "/d", z}),
                ElementsAre("z.xml", "d/a.xml", "d/b.xml", "z.xml"));
}

TEST_F(SourceListTest, KeepsStandardInputInAFileAsLongAsItLives) {
    std::string given = Write("input", "<record>a</record>");
    int descriptor = ::open(given.c_str(), O_RDONLY);
    std::filesystem::path spooled;
    {
        SourceList list({"-"}, descriptor);
        ASSERT_EQ(list.Sources().size(), 1U);
        EXPECT_EQ(list.Sources()[0].name, "standard input");
        EXPECT_EQ(list.Sources()[0].size, 18U);
        spooled = list.Sources()[0].path;
        EXPECT_NE(spooled, given);
        EXPECT_EQ(ContentOf(spooled), "<record>a</record>");
    }
    EXPECT_FALSE(std::filesystem::exists(spooled));
    ::close(descriptor);
}

TEST_F(SourceListTest, CopiesANamedPipe) {
    std::string pipe = m_folder.File("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::thread writer([&pipe] { std::ofstream(pipe) << std::string(100000, 'x'); });
    SourceList list({pipe});
    writer.join();
    EXPECT_EQ(list.Sources().at(0).name, pipe);
    EXPECT_EQ(ContentOf(list.Sources().at(0).path), std::string(100000, 'x'));
}

TEST_F(SourceListTest, RefusesAFileThatIsNotThere) {
    std::string missing = m_folder.File("missing.xml");
    const std::string text = Refusal({missing});
    EXPECT_EQ(text, missing + ": there is no such file; check the path and its spelling");
}

TEST_F(SourceListTest, RefusesAFileThatCannotBeOpened) {
    std::filesystem::create_symlink("loop.xml", m_folder.Path() / "loop.xml");
    const std::string text = Refusal({Folder()});
    EXPECT_THAT(text, HasSubstr("loop.xml: cannot be opened: "));
}

TEST_F(SourceListTest, RefusesADirectoryWithoutPackets) {
    Write("notes.txt");
    const std::string text = Refusal({Folder()});
    EXPECT_EQ(text, Folder() +
                        ": there is no *.xml file in this directory; name the directory that holds "
                        "the packets, or the packet files themselves");
}

TEST_F(SourceListTest, RefusesStandardInputTwice) {
    const std::string text = Refusal({"-", "-"});
    EXPECT_THAT(text, HasSubstr("named twice"));
}

TEST_F(SourceListTest, RefusesNoSourceAtAll) {
    const std::string text = Refusal({});
    EXPECT_THAT(text, HasSubstr("no source is given"));
}

}  // namespace
