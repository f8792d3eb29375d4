#include "recorddb/attachments/attachment_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

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

    std::string Refusal(const std::string& name) const {
        fs::path path;
        return AttachmentFolder(m_folder.Path() / "files").Find(name, path).FullMsg().ToUtf8();
    }

    static std::string Outside(const std::string& name) {
        return "The file \"" + name +
               "\" cannot be attached, because it lies outside of the folder for attachments.";
    }

    static std::string Unreadable(const std::string& name, const std::string& why) {
        return "The file \"" + name + "\" cannot be attached, because it cannot be read: " + why +
               ".";
    }

    TemporaryFolder m_folder;
};

TEST_F(AttachmentFolderTest, FilesBelowItAreFound) {
    m_folder.Write("files/Grüße ø.txt", "u");
    for (const char* const name : {"a.txt", "sub/b.txt", "./sub/../a.txt", "Grüße ø.txt"}) {
        EXPECT_EQ(Refusal(name), "");
    }
    fs::path path;
    AttachmentFolder(m_folder.Path() / "files").Find("sub/../a.txt", path);
    EXPECT_EQ(path, fs::canonical(m_folder.Path() / "files/a.txt"));
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
    EXPECT_EQ(Refusal("link.txt"), "");
}

TEST_F(AttachmentFolderTest, MissingFileIsNamed) {
    EXPECT_EQ(Refusal("no.txt"), Unreadable("no.txt", "No such file or directory"));
    EXPECT_EQ(Refusal("a.txt/b"), Unreadable("a.txt/b", "Not a directory"));
}

TEST_F(AttachmentFolderTest, WhatIsNoFileIsRefused) {
    ASSERT_EQ(mkfifo(m_folder.File("files/pipe").c_str(), 0600), 0);
    for (const std::string name : {"sub", "pipe", "."}) {
        const std::string text = Refusal(name);
        EXPECT_TRUE(text == "The name \"" + name +
                                "\" cannot be attached, because it is not that of a file." ||
                    text == Outside(name))
            << text;
    }
}

TEST_F(AttachmentFolderTest, FileThatMayNotBeReadIsRefused) {
    fs::permissions(m_folder.Path() / "files/a.txt", fs::perms::none);
    if (access(m_folder.File("files/a.txt").c_str(), R_OK) == 0) {
        GTEST_SKIP() << "this user may read everything";
    }
    EXPECT_EQ(Refusal("a.txt"), Unreadable("a.txt", "Permission denied"));
}

TEST_F(AttachmentFolderTest, NamesThatCannotBeNamesAreRefused) {
    EXPECT_EQ(Refusal(""),
              "The file \"\" cannot be attached, because this is not the name of a file.");
    EXPECT_EQ(Refusal("a\nb"),
              "The file \"a\nb\" cannot be attached, because this is not the name of a file.");
}

TEST_F(AttachmentFolderTest, WithoutAFolderEveryNameIsRefused) {
    fs::path path;
    EXPECT_EQ(
        AttachmentFolder("").Find("a.txt", path).FullMsg().ToUtf8(),
        "The file \"a.txt\" cannot be attached, because no folder for attachments was given.");
}

TEST_F(AttachmentFolderTest, FolderThatIsMissingIsReported) {
    fs::path path;
    EXPECT_EQ(AttachmentFolder(m_folder.Path() / "no").Find("a.txt", path).FullMsg().ToUtf8(),
              Unreadable("a.txt", "No such file or directory"));
}

}  // namespace

}  // namespace recorddb
