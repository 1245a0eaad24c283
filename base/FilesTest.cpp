#include "base/Files.h"

#include "base/FailPoint.h"
#include "base/Text.h"
#include "tests/support/Child.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace tesserine {
namespace {

namespace fs = std::filesystem;
using test::contentOf;
using test::putContent;

std::vector<std::string> namesIn(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename());
    }
    std::ranges::sort(names);
    return names;
}

mode_t modeOf(const fs::path& path) {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 0777;
}

/// What the operation's `FileError` says.
template <class Operation>
std::string failure(const Operation& operation) {
    try {
        operation();
    } catch (const FileError& error) {
        return error.what();
    }
    return "no failure";
}

class Files : public testing::Test {
protected:
    void TearDown() override { failpoint::disarmAll(); }

    const test::TemporaryFolder folder_;
    const fs::path file_ = folder_ / "plan.md";
};

#ifdef TESSERINE_FAIL_POINTS  // what users run has none
TEST_F(Files, WritingLeavesTheOldContentOrTheNewWhereverTheProcessDies) {
    for (const char* place : {"files.written", "files.synced", "files.renamed"}) {
        SCOPED_TRACE(place);
        putContent(file_, "old");
        const int status = test::runInChild([&] {
            failpoint::arm(place, 1, [] { ::_exit(137); });
            files::writeAtomically(file_, bytesOf("the new content"));
        });
        EXPECT_EQ(status, 137);
        const bool isRenamed = std::string_view(place) == "files.renamed";
        EXPECT_EQ(contentOf(file_), isRenamed ? "the new content" : "old");
    }
}

TEST_F(Files, WritingThatFailsLeavesTheOldContentAndNoLitter) {
    putContent(file_, "old");
    failpoint::arm("files.synced", 1, [] { throw std::runtime_error("fault"); });
    EXPECT_THROW(files::writeAtomically(file_, bytesOf("new")), std::runtime_error);
    EXPECT_EQ(contentOf(file_), "old");
    EXPECT_EQ(namesIn(folder_.path()), std::vector<std::string>{"plan.md"});

    files::writeAtomically(file_, bytesOf("new"));  // the fail point strikes once
    EXPECT_EQ(contentOf(file_), "new");
    EXPECT_EQ(failpoint::passes("files.synced"), 2);
}
#endif

TEST_F(Files, NewFilesAndFoldersArePrivateWhateverTheUmask) {
    const mode_t before = ::umask(0);
    files::createPrivateFolder(folder_ / "a/b/");
    files::writeAtomically(folder_ / "a/b/one", bytesOf("1"));
    files::writeNew(folder_ / "a/b/two", bytesOf("2"));
    ::umask(before);

    EXPECT_EQ(modeOf(folder_ / "a"), 0700U);
    EXPECT_EQ(modeOf(folder_ / "a/b"), 0700U);
    EXPECT_EQ(modeOf(folder_ / "a/b/one"), 0600U);
    EXPECT_EQ(modeOf(folder_ / "a/b/two"), 0600U);
    EXPECT_NO_THROW(files::createPrivateFolder(folder_ / "a/b"));
    putContent(file_, "");
    EXPECT_THROW(files::createPrivateFolder(file_), FileError);
}

TEST_F(Files, ALinkIsReplacedAndWhatItPointsToIsLeftAlone) {
    putContent(folder_ / "victim", "precious");
    fs::create_symlink(folder_ / "victim", file_);
    files::writeAtomically(file_, bytesOf("new"));
    EXPECT_EQ(contentOf(folder_ / "victim"), "precious");
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(file_)));

    fs::create_symlink(folder_ / "nowhere", folder_ / "link");
    EXPECT_EQ(
        failure([&] { files::writeNew(folder_ / "link", bytesOf("x")); }),
        "“link” could not be written: it exists already.");
    EXPECT_FALSE(fs::exists(folder_ / "nowhere"));
}

TEST_F(Files, ANewFileNeverReplacesOne) {
    files::writeNew(file_, bytesOf("first"));
    EXPECT_THROW(files::writeNew(file_, bytesOf("second")), FileError);
    EXPECT_EQ(contentOf(file_), "first");
    EXPECT_EQ(namesIn(folder_.path()).size(), 1U);
}

TEST_F(Files, ReadingIsBoundedAndTakesRegularFilesOnly) {
    putContent(file_, "12345");
    EXPECT_EQ(textOf(files::read(file_, 5)), "12345");
    EXPECT_EQ(textOf(files::read(file_, UINT64_MAX)), "12345");
    EXPECT_EQ(
        failure([&] { files::read(file_, 4); }),
        "“plan.md” could not be read: it is larger than 4 bytes.");
    EXPECT_FALSE(files::read("/proc/self/status", 1 << 20).empty());  // says it has 0 bytes
    EXPECT_THROW(files::read("/proc/self/status", 10), FileError);

    fs::create_symlink(file_, folder_ / "link");
    EXPECT_EQ(textOf(files::read(folder_ / "link", 9)), "12345");
    EXPECT_EQ(
        failure([&] { files::read(folder_ / "link", 9, files::Links::refuse); }),
        "“link” could not be read: it is a link.");
    ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(
        failure([&] { files::read(folder_ / "pipe", 9); }),
        "“pipe” could not be read: it is not a regular file.");
    EXPECT_EQ(failure([&] { files::read(folder_.path(), 9); }).substr(0, 3), "“");
    EXPECT_EQ(
        failure([&] { files::read(folder_ / "no\x1b[31m/\xFF", 9); }),
        "“\uFFFD” could not be read: it does not exist.");
}

TEST_F(Files, PiecesMakeUpTheWholeFile) {
    const std::string content(1000, 'x');
    putContent(file_, content);
    std::string joined;
    std::size_t pieces = 0;
    files::readInPieces(file_, 300, [&](auto piece) {
        joined += textOf(piece);
        ++pieces;
    });
    EXPECT_EQ(joined, content);
    EXPECT_EQ(pieces, 4U);
}

TEST_F(Files, CopiesFollowNoLinkAndReplaceNothing) {
    putContent(file_, "content");
    files::linkOrCopy(file_, folder_ / "copy");
    EXPECT_EQ(contentOf(folder_ / "copy"), "content");
    EXPECT_THROW(files::linkOrCopy(file_, folder_ / "copy"), FileError);
    fs::create_symlink(file_, folder_ / "link");
    EXPECT_THROW(files::linkOrCopy(folder_ / "link", folder_ / "other"), FileError);
    EXPECT_THROW(files::linkOrCopy(folder_ / "absent", folder_ / "other"), FileError);

    files::removeIfPresent(file_);
    EXPECT_NO_THROW(files::removeIfPresent(file_));
    EXPECT_EQ(contentOf(folder_ / "copy"), "content");
}

TEST_F(Files, OnlyOldTemporariesOfOursAreSwept) {
    const auto old = fs::file_time_type::clock::now() - std::chrono::hours(2);
    for (const char* name :
         {"a.tmp-0123456789abcdef", "b.tmp-0123456789ABCDEF", "c.tmp-123", "plain"}) {
        putContent(folder_ / name, "x");
        fs::last_write_time(folder_ / name, old);
    }
    putContent(folder_ / "d.tmp-0123456789abcdef", "being written at this moment");
    files::sweepTemporaries(folder_.path());
    EXPECT_EQ(
        namesIn(folder_.path()),
        (std::vector<std::string>{
            "b.tmp-0123456789ABCDEF", "c.tmp-123", "d.tmp-0123456789abcdef", "plain"}));
}

TEST_F(Files, ALockIsHeldAgainstOtherProcessesUntilItGoesAway) {
    using namespace std::chrono_literals;
    const fs::path lockFile = folder_ / "lock";
    const auto triesInChild = [&] {
        return test::runInChild([&] {
            if (!files::FolderLock::acquire(lockFile, 0ms)) ::_exit(1);
        });
    };
    auto lock = files::FolderLock::acquire(lockFile, 0ms);
    ASSERT_TRUE(lock);
    EXPECT_EQ(triesInChild(), 1);
    EXPECT_FALSE(files::FolderLock::acquire(lockFile, 5ms));

    std::optional<files::FolderLock> moved = std::move(*lock);
    lock.reset();
    EXPECT_EQ(triesInChild(), 1);
    moved.reset();
    EXPECT_EQ(triesInChild(), 0);
    EXPECT_THROW(files::FolderLock::acquire(folder_ / "absent/lock", 0ms), FileError);
}

TEST(SafeName, IsOneHarmlessComponentOnEverySystem) {
    struct Case {
        const char* name;
        const char* safe;
    };
    for (const auto& [name, safe] : {
             Case{"Plan 2026.md", "Plan 2026.md"},
             Case{"a/b\\c:d*e?f\"g<h>i|j", "a-b-c-d-e-f-g-h-i-j"},
             Case{"../../etc/passwd", "---..-etc-passwd"},
             Case{"line\nbreak\x7F", "line-break-"},
             Case{".hidden", "-hidden"},
             Case{"name. ", "name--"},
             Case{"", "Untitled"},
             Case{"  ", "Untitled"},
             Case{"\u202E", "Untitled"},
             Case{"photo\u202Egpj.exe", "photogpj.exe"},
             Case{"CON", "CON_"},
             Case{"com1.txt", "com1_.txt"},
             Case{"common.txt", "common.txt"},
             Case{"e\u0301", "é"},
             Case{"bad\xFF", "bad\uFFFD"},
         }) {
        EXPECT_EQ(files::safeName(name), safe) << name;
    }
}

TEST(SafeName, IsCutBetweenCharactersAndKeepsTheExtension) {
    std::string words;
    std::string families;
    for (int i = 0; i < 100; ++i) {
        words += "ab";
        families += "👨‍👩‍👧‍👦";
    }
    const std::string cutWords = files::safeName(words + ".png");
    EXPECT_EQ(cutWords, words.substr(0, 76) + ".png");
    const std::string cutFamilies = files::safeName(families + ".png");
    EXPECT_EQ(cutFamilies, families.substr(0, 175) + ".png");     // 200 bytes at most
    EXPECT_LE(files::safeName(words + "." + words).size(), 80U);  // no extension that long
}

}  // namespace
}  // namespace tesserine
