#include "tool/io/watched_file.h"

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

namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;
using tool::WatchedFile;

constexpr const char* kText = "id,name\n1,rope\n2,oar\n";

class WatchedFileTest : public testing::Test {
  protected:
    static std::string ReadAll(tool::ByteSource& bytes) {
        std::string text;
        char piece[8];
        while (const std::size_t got = bytes.Read(piece, sizeof piece)) {
            text.append(piece, got);
        }
        return text;
    }

    // Why reading the file to its end fails, once something was done to it in the middle.
    template <typename Change>
    std::string ReadDuring(Change change) const {
        WatchedFile file(m_path, "rows.csv");
        char piece[8];
        EXPECT_EQ(file.Read(piece, sizeof piece), sizeof piece);
        change();
        try {
            ReadAll(file);
        } catch (const tool::SourceChanged& error) {
            return error.what();
        }
        return "";
    }

    // Gives the file these times.
    void SetTimes(const struct stat& as) const {
        const timespec times[] = {as.st_atim, as.st_mtim};
        ASSERT_EQ(::utimensat(AT_FDCWD, m_path.c_str(), times, 0), 0);
    }

    const TemporaryFolder m_folder;
    const std::string m_path = m_folder.Write("rows.csv", kText);
};

TEST_F(WatchedFileTest, IsReadFromFrontToBack) {
    WatchedFile file(m_path, "rows.csv");
    EXPECT_EQ(file.Name(), "rows.csv");
    EXPECT_EQ(ReadAll(file), kText);
    EXPECT_EQ(ReadAll(file), "") << "the end stays the end";
}

TEST_F(WatchedFileTest, AnEmptyFileHasAnEnd) {
    WatchedFile file(m_folder.Write("empty.csv", ""), "empty.csv");
    EXPECT_EQ(ReadAll(file), "");
}

TEST_F(WatchedFileTest, WhatIsNotThereCannotBeOpened) {
    try {
        const WatchedFile file(m_folder.File("other.csv"), "other.csv");
        FAIL() << "it was opened";
    } catch (const tool::SourceError& error) {
        EXPECT_THAT(error.what(), StartsWith("other.csv: "));
    }
}

TEST_F(WatchedFileTest, AFileThatGrowsIsNotReadToItsEnd) {
    EXPECT_THAT(ReadDuring([&] { std::ofstream(m_path, std::ios::app) << "3,sail\n"; }),
                AllOf(StartsWith("rows.csv: the file was written to while it was read"),
                      HasSubstr("run again")));
}

TEST_F(WatchedFileTest, ANewLengthIsNoticedThoughTheTimeIsTheFormerOne) {
    struct stat before {};
    ASSERT_EQ(::stat(m_path.c_str(), &before), 0);
    EXPECT_THAT(ReadDuring([&] {
                    fs::resize_file(m_path, 10);
                    SetTimes(before);
                }),
                HasSubstr("was written to"));
}

TEST_F(WatchedFileTest, AByteInAnotherPlaceIsNoticedByTheTime) {
    struct stat later {};
    ASSERT_EQ(::stat(m_path.c_str(), &later), 0);
    ++later.st_mtim.tv_sec;
    EXPECT_THAT(ReadDuring([&] {
                    std::fstream(m_path, std::ios::in | std::ios::out).put('X');
                    SetTimes(later);
                }),
                HasSubstr("was written to"));
    // A part of a second is enough.
    later.st_mtim.tv_nsec = later.st_mtim.tv_nsec == 0 ? 1 : later.st_mtim.tv_nsec - 1;
    EXPECT_THAT(ReadDuring([&] { SetTimes(later); }), HasSubstr("was written to"));
}

TEST_F(WatchedFileTest, AnotherFileOfTheSameNameEndsTheReading) {
    EXPECT_THAT(ReadDuring([&] { fs::rename(m_folder.Write("new.csv", kText), m_path); }),
                StartsWith("rows.csv: another file took its name while it was read"));
}

TEST_F(WatchedFileTest, AFileThatLosesItsNameIsReadToItsEnd) {
    EXPECT_EQ(ReadDuring([&] { fs::remove(m_path); }), "");
}

TEST_F(WatchedFileTest, APipeIsReadAsItIs) {
    const std::string pipe = m_folder.File("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    WatchedFile file(pipe, "pipe");
    std::ofstream(pipe) << kText;
    EXPECT_EQ(ReadAll(file), kText);
}

}  // namespace
