#include <sys/resource.h>
#include <sys/stat.h>

#include "recorddb/sha256.h"
#include "recorddb/store/content_store.h"
#include "session_fixture.h"

// The address sanitizer keeps freed memory for a while, by default more of it than the test of
// constant memory below allows for.
extern "C" const char* __asan_default_options() {
    return "quarantine_size_mb=1";
}

namespace recorddb {

namespace {

using Strings = std::vector<std::string>;

constexpr const char* kHashOfAbc =
    "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
constexpr const char* kHashOfNothing =
    "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";

class AttachmentsTest : public OnEachEngine<SessionTest> {
  protected:
    AttachmentsTest() {
        std::filesystem::create_directories(Folder().Path() / "files/SK-1");
        Folder().Write("files/SK-1/abc.txt", "abc");
        Folder().Write("files/same.txt", "abc");
        Folder().Write("files/empty.txt", "");
        OpenSession({.attachmentsFolder = Folder().File("files")});
        Given("bug", {{"title", "t"}});
    }

    static std::string Attach(const AdEntityPtr& bug, std::string_view file,
                              std::string_view description = "") {
        return bug->AddAttachment(Text("files"), Text(file), Text(description)).ToUtf8();
    }

    static std::string Detach(const AdEntityPtr& bug, std::string_view attachment) {
        return bug->DeleteAttachment(Text("files"), Text(attachment)).ToUtf8();
    }

    void GivenAttached(std::string_view file, std::string_view description = "") {
        const AdEntityPtr bug = Open("bug", "1");
        EXPECT_EQ(Attach(bug, file, description), "");
        Save(bug);
    }

    std::string Stored() {
        return Row(
            "SELECT dbid, record_type, record, field, filename, filesize, description, "
            "substr(sha256, 1, 6) FROM zt_attachment ORDER BY dbid");
    }

    std::string Contents() {
        return Row(
            "SELECT substr(sha256, 1, 6), chunk, length(data) FROM zt_content "
            "ORDER BY sha256, chunk");
    }
};

TEST_P(AttachmentsTest, ContentIsExaminedAndNotStoredOnDemand) {
    OpenSession({.attachmentsFolder = Folder().File("files"), .examineAttachments = true});
    GivenAttached("SK-1/abc.txt", "letters");
    EXPECT_EQ(Stored(), "1|5|1|files|abc.txt|3|letters|" + std::string(kHashOfAbc, 6));
    EXPECT_EQ(Contents(), "");
    EXPECT_NE(Attach(Open("bug", "1"), "missing.txt"), "");
}

TEST_P(AttachmentsTest, AreWrittenAtCommitUnderTheirBaseName) {
    const AdEntityPtr bug = Open("bug", "1");
    EXPECT_EQ(Attach(bug, "SK-1/abc.txt", "Zähler"), "");
    EXPECT_EQ(Stored(), "");
    Save(bug);
    EXPECT_EQ(Stored(), "1|5|1|files|abc.txt|3|Zähler|ba7816");
    EXPECT_EQ(Row("SELECT sha256, chunk, " + Content("data") + " FROM zt_content"),
              std::string(kHashOfAbc) + "|0|abc");
    EXPECT_EQ(Row("SELECT zt_version FROM bug"), "2");
    EXPECT_EQ(Core().GetStatistics().attachments, 1);
    EXPECT_EQ(Core().GetStatistics().recordsUpdated, 0);
}

TEST_P(AttachmentsTest, CanComeWithANewRecord) {
    const AdEntityPtr bug = New("bug");
    Set(bug, "title", "new");
    EXPECT_EQ(Attach(bug, "same.txt"), "");
    Save(bug);
    EXPECT_EQ(Stored(), "1|5|2|files|same.txt|3||ba7816");
}

TEST_P(AttachmentsTest, SameContentIsStoredOnce) {
    GivenAttached("SK-1/abc.txt");
    GivenAttached("same.txt");
    EXPECT_EQ(Contents(), "ba7816|0|3");
}

TEST_P(AttachmentsTest, EmptyFileIsOneEmptyChunk) {
    GivenAttached("empty.txt");
    EXPECT_EQ(Row("SELECT sha256, chunk, length(data) FROM zt_content"),
              std::string(kHashOfNothing) + "|0|0");
}

TEST_P(AttachmentsTest, AreDescribedInFourLines) {
    GivenAttached("SK-1/abc.txt", "two\nlines");
    const AdEntityPtr bug = Open("bug", "1");
    EXPECT_EQ(bug->GetFieldValue(Text("files"))->GetValueStatus(), 2);
    EXPECT_EQ(Values(bug, "files"), (Strings{"1\nabc.txt\n3\ntwo\nlines"}));
    GivenAttached("empty.txt");
    EXPECT_EQ(Values(Open("bug", "1"), "files"),
              (Strings{"1\nabc.txt\n3\ntwo\nlines", "2\nempty.txt\n0\n"}));
    EXPECT_EQ(New("bug")->GetFieldValue(Text("files"))->GetValueStatus(), 1);
}

TEST_P(AttachmentsTest, CanBeReplacedInOneCommit) {
    GivenAttached("SK-1/abc.txt");
    Folder().Write("files/SK-1/abc.txt", "other");
    const AdEntityPtr bug = Open("bug", "1");
    EXPECT_EQ(Detach(bug, "1\nabc.txt\n3\n"), "");
    EXPECT_EQ(Attach(bug, "SK-1/abc.txt"), "");
    EXPECT_EQ(Values(bug, "files"), (Strings{"0\nabc.txt\n5\n"}));
    Save(bug);
    EXPECT_EQ(Row("SELECT filename, filesize FROM zt_attachment"), "abc.txt|5");
    EXPECT_EQ(Row("SELECT " + Content("data") + " FROM zt_content"), "other");
}

TEST_P(AttachmentsTest, ContentGoesWithItsLastAttachment) {
    GivenAttached("SK-1/abc.txt");
    GivenAttached("same.txt");
    AdEntityPtr bug = Open("bug", "1");
    EXPECT_EQ(Detach(bug, "1\nabc.txt\n3\n"), "");
    Save(bug);
    EXPECT_EQ(Contents(), "ba7816|0|3");
    EXPECT_EQ(Detach(bug, "2\nsame.txt\n3\n"), "");
    Save(bug);
    EXPECT_EQ(Contents(), "");
    EXPECT_EQ(Stored(), "");
}

TEST_P(AttachmentsTest, OneThatIsNotThereCannotBeRemoved) {
    GivenAttached("same.txt");
    const AdEntityPtr bug = Open("bug", "1");
    EXPECT_EQ(Detach(bug, "2\nsame.txt\n3\n"),
              "The field \"files\" of a record of type \"bug\" has no attachment \"2\nsame.txt\n3\n"
              "\".");
    EXPECT_NE(Detach(bug, ""), "");
    EXPECT_EQ(Detach(bug, "1\nsame.txt\n3\n"), "");
    EXPECT_NE(Detach(bug, "1\nsame.txt\n3\n"), "");
}

TEST_P(AttachmentsTest, OneThatIsNotYetWrittenCanBeTakenBack) {
    const AdEntityPtr bug = Open("bug", "1");
    EXPECT_EQ(Attach(bug, "same.txt"), "");
    EXPECT_EQ(Detach(bug, "0\nsame.txt\n3\n"), "");
    Save(bug);
    EXPECT_EQ(Stored(), "");
}

TEST_P(AttachmentsTest, RevertDropsThem) {
    GivenAttached("same.txt");
    const AdEntityPtr bug = Open("bug", "1");
    EXPECT_EQ(Attach(bug, "empty.txt"), "");
    EXPECT_EQ(Detach(bug, "1\nsame.txt\n3\n"), "");
    bug->Revert();
    Save(bug);
    EXPECT_EQ(Stored(), "1|5|1|files|same.txt|3||ba7816");
}

TEST_P(AttachmentsTest, FileThatVanishesBeforeCommitFailsTheWholeCommit) {
    const AdEntityPtr bug = Open("bug", "1");
    Set(bug, "title", "changed");
    EXPECT_EQ(Attach(bug, "empty.txt"), "");
    EXPECT_EQ(Attach(bug, "same.txt"), "");
    std::filesystem::remove(Folder().Path() / "files/same.txt");
    EXPECT_EQ(CommitFault(bug),
              "The file \"same.txt\" cannot be attached, because it cannot be read: No such file "
              "or directory.");
    EXPECT_EQ(Row("SELECT title, zt_version FROM bug"), "t|1");
    EXPECT_EQ(Contents(), "");
    EXPECT_EQ(Core().GetStatistics().attachments, 0);
}

TEST_P(AttachmentsTest, FileSwappedForALinkBeforeCommitGivesNothingAway) {
    Folder().Write("secret.txt", "secret");
    const AdEntityPtr bug = Open("bug", "1");
    EXPECT_EQ(Attach(bug, "same.txt"), "");
    std::filesystem::remove(Folder().Path() / "files/same.txt");
    std::filesystem::create_symlink("../secret.txt", Folder().Path() / "files/same.txt");
    EXPECT_EQ(CommitFault(bug),
              "The file \"same.txt\" cannot be attached, because it lies outside of the folder for "
              "attachments.");
    EXPECT_EQ(Contents(), "");
}

TEST_P(AttachmentsTest, FileSwappedForAPipeBeforeCommitIsNotWaitedFor) {
    const AdEntityPtr bug = Open("bug", "1");
    EXPECT_EQ(Attach(bug, "same.txt"), "");
    std::filesystem::remove(Folder().Path() / "files/same.txt");
    ASSERT_EQ(mkfifo(Folder().File("files/same.txt").c_str(), 0600), 0);
    EXPECT_EQ(CommitFault(bug),
              "The name \"same.txt\" cannot be attached, because it is not that of a file.");
}

TEST_P(AttachmentsTest, SparseFileOfManyGigabytesIsRefused) {
    Folder().Write("files/hole.bin", "");
    std::filesystem::resize_file(Folder().Path() / "files/hole.bin", std::uintmax_t{3} << 30);
    EXPECT_EQ(Attach(Open("bug", "1"), "hole.bin"),
              "The file \"hole.bin\" cannot be attached to the field \"files\": it has 3221225472 "
              "bytes, and attachments may have 1073741824 (--max-attachment-size).");
}

TEST_P(AttachmentsTest, FileThatGrowsBeyondTheLimitBeforeCommitIsRefused) {
    OpenSession({.attachmentsFolder = Folder().File("files"), .maxAttachmentSize = 3});
    const AdEntityPtr bug = Open("bug", "1");
    EXPECT_EQ(Attach(bug, "same.txt"), "");
    Folder().Write("files/same.txt", "abcd");
    EXPECT_EQ(
        CommitFault(bug),
        "The file \"same.txt\" cannot be attached to the field \"files\": it has 4 bytes, and "
        "attachments may have 3 (--max-attachment-size).");
}

TEST_P(AttachmentsTest, OtherFieldsTakeNone) {
    const AdEntityPtr bug = Open("bug", "1");
    const std::string refusal =
        "The field \"title\" of a record of type \"bug\" does not hold attachments: \"same.txt\" "
        "can be neither attached to it nor removed.";
    EXPECT_EQ(bug->AddAttachment(Text("title"), Text("same.txt"), Text("")).ToUtf8(), refusal);
    EXPECT_EQ(bug->DeleteAttachment(Text("title"), Text("same.txt")).ToUtf8(), refusal);
    EXPECT_NE(bug->AddAttachment(Text("colour"), Text("same.txt"), Text("")).ToUtf8(), "");
}

TEST_P(AttachmentsTest, LargeFileIsStoredInChunksInConstantMemory) {
    const std::string piece(1024 * 1024, 'x');
    {
        std::ofstream file(Folder().Path() / "files/large.bin", std::ios::binary);
        for (int i = 0; i < 64; ++i) {
            file << piece;
        }
        file << "end";
    }
    rusage before{};
    getrusage(RUSAGE_SELF, &before);
    GivenAttached("large.bin");
    rusage after{};
    getrusage(RUSAGE_SELF, &after);
    EXPECT_EQ(Row("SELECT count(*), max(chunk), sum(length(data)), max(length(data)) FROM "
                  "zt_content"),
              "257|256|67108867|262144");
    EXPECT_EQ(Row("SELECT filesize FROM zt_attachment"), "67108867");
    // The engine's own cache of 32 MiB is in it; the file is not.
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 48 * 1024);
}

TEST_P(AttachmentsTest, ContentIsReadBackInOrder) {
    std::string content;
    for (int i = 0; i < 100'000; ++i) {
        content += std::to_string(i) + "\n";
    }
    Folder().Write("files/numbers.txt", content);
    GivenAttached("numbers.txt");
    ContentStore store(Base().GetConnection());
    std::string read;
    Sha256 hash;
    store.Read(Row("SELECT sha256 FROM zt_attachment"), [&](std::span<const std::byte> piece) {
        read.append(reinterpret_cast<const char*>(piece.data()), piece.size());
        hash.Update(piece);
    });
    EXPECT_EQ(read, content);
    EXPECT_EQ(hash.HexDigest(), Row("SELECT sha256 FROM zt_attachment"));
}

ON_EACH_LAYOUT(AttachmentsTest);

}  // namespace

}  // namespace recorddb
