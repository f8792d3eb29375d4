#include "tool/io/source_file.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "temporary_folder.h"
#include "tool/io/source_error.h"
#include "tool/io/text_hash.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using tool::SourceFile;

// Longer than two of the blocks that a source is compared in.
std::string LongText() {
    std::string text;
    for (int i = 0; text.size() < 2'500'000; ++i) {
        text += std::to_string(i) + '\n';
    }
    return text;
}

std::string ReadAll(tool::ByteSource& bytes) {
    std::string text;
    std::string piece(100'000, ' ');
    while (const std::size_t got = bytes.Read(piece.data(), piece.size())) {
        text.append(piece, 0, got);
    }
    return text;
}

// Whether reading on ends since the file has changed.
bool EndsAsChanged(tool::ByteSource& bytes) {
    try {
        ReadAll(bytes);
    } catch (const tool::SourceChanged& error) {
        EXPECT_THAT(error.what(), HasSubstr("bugs.xml: "));
        EXPECT_THAT(error.what(), HasSubstr("run again"));
        return true;
    }
    return false;
}

class SourceFileTest : public testing::Test {
  protected:
    // Replaces one byte, and leaves no trace of it in the file's times.
    void ChangeByte(std::size_t at) {
        struct stat before {};
        ASSERT_EQ(::stat(m_path.c_str(), &before), 0);
        std::fstream(m_path, std::ios::in | std::ios::out).seekp(static_cast<long>(at)).put('X');
        const timespec times[] = {before.st_atim, before.st_mtim};
        ASSERT_EQ(::utimensat(AT_FDCWD, m_path.c_str(), times, 0), 0);
    }

    const TemporaryFolder m_folder;
    const std::string m_text = LongText();
    const std::string m_path = m_folder.Write("bugs.xml", m_text);
};

TEST_F(SourceFileTest, IsKnownByTheHashOfItsContent) {
    EXPECT_EQ(SourceFile(m_path, "bugs.xml").Sha256(), tool::HashText(m_text));
}

TEST_F(SourceFileTest, AnEmptyFileHasAHash) {
    const SourceFile file(m_folder.Write("empty.xml", ""), "empty.xml");
    EXPECT_EQ(file.Sha256(), tool::HashText(""));
    EXPECT_EQ(ReadAll(*file.Read()), "");
}

TEST_F(SourceFileTest, IsReadAgainAndAgain) {
    const SourceFile file(m_path, "bugs.xml");
    EXPECT_EQ(ReadAll(*file.Read()), m_text);
    EXPECT_EQ(ReadAll(*file.Read()), m_text);
}

TEST_F(SourceFileTest, AChangedByteIsNotHandedOut) {
    const SourceFile file(m_path, "bugs.xml");
    ChangeByte(2'000'000);
    const auto bytes = file.Read();
    EXPECT_TRUE(EndsAsChanged(*bytes));
}

TEST_F(SourceFileTest, WhatStandsBeforeAChangedByteIsRead) {
    const SourceFile file(m_path, "bugs.xml");
    ChangeByte(2'000'000);
    const auto bytes = file.Read();
    std::string front(1'000'000, ' ');
    ASSERT_EQ(bytes->Read(front.data(), front.size()), front.size());
    EXPECT_EQ(front, m_text.substr(0, front.size()));
}

TEST_F(SourceFileTest, AFileThatGrowsIsNotReadToItsEnd) {
    const SourceFile file(m_path, "bugs.xml");
    const auto bytes = file.Read();
    std::ofstream(m_path, std::ios::app) << "more";
    EXPECT_TRUE(EndsAsChanged(*bytes));
    EXPECT_THROW(file.RequireUnchanged(), tool::SourceError);
}

TEST_F(SourceFileTest, AFileThatIsCutIsNotReadToItsEnd) {
    const SourceFile file(m_path, "bugs.xml");
    fs::resize_file(m_path, 1'500'000);
    EXPECT_TRUE(EndsAsChanged(*file.Read()));
}

TEST_F(SourceFileTest, AnotherFileOfTheSameNameEndsTheReading) {
    const SourceFile file(m_path, "bugs.xml");
    fs::rename(m_folder.Write("other.xml", m_text), m_path);
    EXPECT_TRUE(EndsAsChanged(*file.Read()));
}

TEST_F(SourceFileTest, ARemovedFileIsReadToItsEnd) {
    const SourceFile file(m_path, "bugs.xml");
    fs::remove(m_path);
    EXPECT_NO_THROW(file.RequireUnchanged());
    EXPECT_EQ(ReadAll(*file.Read()), m_text);
}

TEST_F(SourceFileTest, APipeInTheFilesPlaceIsNotWaitedFor) {
    fs::remove(m_path);
    ASSERT_EQ(::mkfifo(m_path.c_str(), 0600), 0);
    EXPECT_THROW(SourceFile(m_path, "bugs.xml"), tool::SourceError);
}

TEST_F(SourceFileTest, NamesAFileThatIsNotThere) {
    try {
        const SourceFile file("/nowhere/bugs.xml", "bugs.xml");
        FAIL();
    } catch (const tool::SourceError& error) {
        EXPECT_STREQ(error.what(),
                     "bugs.xml: there is no such file; check the path and its spelling");
    }
}

}  // namespace
