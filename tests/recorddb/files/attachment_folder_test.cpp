#include "recorddb/attachment_folder.h"

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <functional>
#include <vector>

#include "ordinary_user.h"
#include "temporary_folder.h"

namespace recorddb {

namespace {

namespace fs = std::filesystem;

class AttachmentFolderTest : public testing::Test {
  protected:
    AttachmentFolderTest() {
        fs::create_directories(m_folder.Path() / "files/sub");
        m_folder.Write("files/a.txt", "a");
        m_folder.Write("files/sub/b.txt", "b");
        m_folder.Write("outside.txt", "secret");
    }

    AttachmentFolder Files(std::int64_t maxSize = 100) const {
        return {m_folder.Path() / "files", maxSize};
    }

    static std::string Refusal(const AttachmentFolder& folder, const std::string& name) {
        AttachmentFile file;
        return folder.Open(name, "papers", file).FullMsg().ToUtf8();
    }

    std::string Refusal(const std::string& name) const { return Refusal(Files(), name); }

    // The file's content, or the message with which it is refused.
    std::string Content(const std::string& name) const {
        AttachmentFile file;
        PaMessage problem = Files().Open(name, "papers", file);
        return problem.ID() != 0 ? problem.FullMsg().ToUtf8() : ContentOf(file);
    }

    static std::string ContentOf(const AttachmentFile& file) {
        std::string content;
        const PaMessage problem = file.Read([&content](std::span<const std::byte> piece) {
            content.append(reinterpret_cast<const char*>(piece.data()), piece.size());
        });
        return problem.ID() != 0 ? problem.FullMsg().ToUtf8() : content;
    }

    static std::string Changed(const std::string& name) {
        return "The file \"" + name +
               "\" cannot be attached, because it changed while it was read.";
    }

    static std::string Outside(const std::string& name) {
        return "The file \"" + name +
               "\" cannot be attached, because it lies outside of the folder for attachments.";
    }

    static std::string NotAFile(const std::string& name) {
        return "The name \"" + name + "\" cannot be attached, because it is not that of a file.";
    }

    static std::string Unreadable(const std::string& name, const std::string& why) {
        return "The file \"" + name + "\" cannot be attached, because it cannot be read: " + why +
               ".";
    }

    TemporaryFolder m_folder;
};

TEST_F(AttachmentFolderTest, FilesBelowItAreFound) {
    m_folder.Write("files/Grüße ø.txt", "a");
    for (const char* const name : {"a.txt", "sub/../a.txt", "./sub/../a.txt", "Grüße ø.txt"}) {
        EXPECT_EQ(Content(name), "a");
    }
    EXPECT_EQ(Content("sub/b.txt"), "b");
}

TEST_F(AttachmentFolderTest, NamesThatLeaveItAreRefused) {
    for (const std::string& name :
         {std::string("../outside.txt"), std::string("sub/../../outside.txt"),
          std::string("../files/a.txt"), m_folder.File("files/a.txt"), std::string("/etc/passwd"),
          std::string("..")}) {
        EXPECT_EQ(Refusal(name), Outside(name));
    }
}

TEST_F(AttachmentFolderTest, LinksThatLeaveItAreRefused) {
    fs::create_symlink("../outside.txt", m_folder.Path() / "files/link.txt");
    fs::create_directory_symlink("..", m_folder.Path() / "files/up");
    EXPECT_EQ(Refusal("link.txt"), Outside("link.txt"));
    EXPECT_EQ(Refusal("up/outside.txt"), Outside("up/outside.txt"));
}

TEST_F(AttachmentFolderTest, FolderWhoseNameBeginsAlikeIsOutside) {
    fs::create_directory(m_folder.Path() / "files2");
    m_folder.Write("files2/c.txt", "c");
    fs::create_symlink("../files2/c.txt", m_folder.Path() / "files/c.txt");
    EXPECT_EQ(Refusal("c.txt"), Outside("c.txt"));
}

TEST_F(AttachmentFolderTest, LinksThatStayInsideAreFollowed) {
    fs::create_symlink("sub/b.txt", m_folder.Path() / "files/link.txt");
    fs::create_symlink("../files/sub/b.txt", m_folder.Path() / "files/out-and-in.txt");
    fs::create_symlink(m_folder.File("files/sub/b.txt"), m_folder.Path() / "files/absolute.txt");
    for (const char* const name : {"link.txt", "out-and-in.txt", "absolute.txt"}) {
        EXPECT_EQ(Content(name), "b");
    }
}

TEST_F(AttachmentFolderTest, MissingFileIsNamed) {
    EXPECT_EQ(Refusal("no.txt"), Unreadable("no.txt", "No such file or directory"));
    EXPECT_EQ(Refusal("a.txt/b"), Unreadable("a.txt/b", "Not a directory"));
}

TEST_F(AttachmentFolderTest, WhatIsNoFileIsRefused) {
    ASSERT_EQ(mkfifo(m_folder.File("files/pipe").c_str(), 0600), 0);
    for (const std::string name : {"sub", "pipe", "."}) {
        const std::string text = Refusal(name);
        EXPECT_TRUE(text == NotAFile(name) || text == Outside(name)) << text;
    }
}

TEST_F(AttachmentFolderTest, FileThatMayNotBeReadIsRefused) {
    fs::permissions(m_folder.Path(), fs::perms::all);
    fs::permissions(m_folder.Path() / "files/a.txt", fs::perms::none);
    const OrdinaryUser user;
    EXPECT_EQ(Refusal("a.txt"), Unreadable("a.txt", "Permission denied"));
}

TEST_F(AttachmentFolderTest, NamesThatCannotBeNamesAreRefused) {
    EXPECT_EQ(Refusal(""),
              "The file \"\" cannot be attached, because this is not the name of a file.");
    EXPECT_EQ(Refusal("a\nb"),
              "The file \"a\nb\" cannot be attached, because this is not the name of a file.");
    EXPECT_NE(Refusal(std::string("a.txt\0b", 7)), "");
}

TEST_F(AttachmentFolderTest, WithoutAFolderEveryNameIsRefused) {
    EXPECT_EQ(
        Refusal(AttachmentFolder("", 100), "a.txt"),
        "The file \"a.txt\" cannot be attached, because no folder for attachments was given.");
}

TEST_F(AttachmentFolderTest, FolderThatIsMissingIsReported) {
    EXPECT_EQ(Refusal(AttachmentFolder(m_folder.Path() / "no", 100), "a.txt"),
              Unreadable("a.txt", "No such file or directory"));
}

TEST_F(AttachmentFolderTest, FilesBeyondTheLimitAreRefused) {
    m_folder.Write("files/sized", "1234567890");
    EXPECT_EQ(Refusal(Files(10), "sized"), "");
    EXPECT_EQ(Refusal(Files(9), "sized"),
              "The file \"sized\" cannot be attached to the field \"papers\": it has 10 bytes, and "
              "attachments may have 9 (--max-attachment-size).");
}

TEST_F(AttachmentFolderTest, FileCanBeReadAgainInTheSamePieces) {
    const std::string content(AttachmentFile::kPieceSize * 2 + 1, 'x');
    m_folder.Write("files/long", content);
    AttachmentFile file;
    ASSERT_EQ(Files(1'000'000).Open("long", "papers", file).ID(), 0);
    EXPECT_EQ(ContentOf(file), content);
    std::vector<std::size_t> pieces;
    file.Read([&pieces](std::span<const std::byte> piece) { pieces.push_back(piece.size()); });
    EXPECT_EQ(pieces, (std::vector<std::size_t>{AttachmentFile::kPieceSize,
                                                AttachmentFile::kPieceSize, 1}));
}

TEST_F(AttachmentFolderTest, PiecesAreWholeWhereTheFileEndsWithOne) {
    const std::string content(AttachmentFile::kPieceSize, 'x');
    m_folder.Write("files/even", content);
    AttachmentFile file;
    ASSERT_EQ(Files(1'000'000).Open("even", "papers", file).ID(), 0);
    EXPECT_EQ(ContentOf(file), content);
}

TEST_F(AttachmentFolderTest, OpenFileStaysTheSameWhenItsNameBecomesALink) {
    AttachmentFile file;
    ASSERT_EQ(Files().Open("a.txt", "papers", file).ID(), 0);
    fs::remove(m_folder.Path() / "files/a.txt");
    fs::create_symlink("../outside.txt", m_folder.Path() / "files/a.txt");
    EXPECT_EQ(ContentOf(file), "a");
}

TEST_F(AttachmentFolderTest, FileThatGrowsOrShrinksIsRefused) {
    AttachmentFile file;
    ASSERT_EQ(Files().Open("a.txt", "papers", file).ID(), 0);
    m_folder.Write("files/a.txt", "aa");
    EXPECT_EQ(ContentOf(file), Changed("a.txt"));
    m_folder.Write("files/a.txt", "");
    EXPECT_EQ(ContentOf(file), Changed("a.txt"));
}

// Runs the work as in a sandbox, or on a kernel, that answers openat2 with an error; true when it
// has held there.
bool HoldsWithoutOpenat2(int error, const std::function<bool()>& work) {
    const pid_t child = fork();
    if (child == 0) {
        std::array<sock_filter, 4> filter = {
            sock_filter BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
            sock_filter BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_openat2, 0, 1),
            sock_filter BPF_STMT(BPF_RET | BPF_K,
                                 SECCOMP_RET_ERRNO | static_cast<unsigned int>(error)),
            sock_filter BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
        const sock_fprog program = {filter.size(), filter.data()};
        const bool installed = prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
                               prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0 &&
                               syscall(SYS_openat2, -1, "", nullptr, 0) == -1 && errno == error;
        _exit(installed && work() ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST_F(AttachmentFolderTest, FilesAreFoundWithoutTheSystemCallOpenat2) {
    fs::create_symlink("sub/b.txt", m_folder.Path() / "files/in.txt");
    fs::create_symlink("../outside.txt", m_folder.Path() / "files/out.txt");
    fs::create_directory_symlink("..", m_folder.Path() / "files/up");
    ASSERT_EQ(mkfifo(m_folder.File("files/pipe").c_str(), 0600), 0);
    const auto holds = [this] {
        return Content("a.txt") == "a" && Content("sub/b.txt") == "b" && Content("in.txt") == "b" &&
               Content("out.txt") == Outside("out.txt") &&
               Content("up/outside.txt") == Outside("up/outside.txt") &&
               Content("no.txt") == Unreadable("no.txt", "No such file or directory") &&
               Content("pipe") == NotAFile("pipe") && Content("sub") == NotAFile("sub");
    };
    EXPECT_TRUE(HoldsWithoutOpenat2(ENOSYS, holds));
    EXPECT_TRUE(HoldsWithoutOpenat2(EPERM, holds));
    EXPECT_FALSE(HoldsWithoutOpenat2(ENOSYS, [this] { return Content("a.txt") == "b"; }));
}

}  // namespace

}  // namespace recorddb
