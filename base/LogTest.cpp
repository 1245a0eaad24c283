#include "base/Log.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <thread>
#include <vector>

namespace tesserine {
namespace {

namespace fs = std::filesystem;

TEST(Log, NoMessageCanForgeALineOrSteerATerminal) {
    const test::TemporaryFolder folder;
    const Log log(makeFileLogSink(folder / "log/tesserine.log"), "app.tesserine.core", "store");
    log.warning("one\n2026-01-01 error forged\x1b[31m\u0085\u2028é \xFF");
    log.category("import").info("title " + redacted({"My diary"}));

    const std::string written = test::contentOf(folder / "log/tesserine.log");
    EXPECT_EQ(std::ranges::count(written, '\n'), 2);
    EXPECT_NE(
        written.find(" warning app.tesserine.core:store one\\n2026-01-01 error "
                     "forged\\u001b[31m\\u0085\\u2028é \\ufffd\n"),
        std::string::npos)
        << written;
    EXPECT_NE(
        written.find(" info app.tesserine.core:import title <private 8>\n"), std::string::npos)
        << written;
}

TEST(Log, LinesAreCutAtAWholeCharacter) {
    const test::TemporaryFolder folder;
    const Log log(makeFileLogSink(folder / "log"), "app", "x");
    std::string text;
    for (int i = 0; i < 3000; ++i) {
        text += "é";
    }
    log.info(text);
    const std::string written = test::contentOf(folder / "log");
    EXPECT_LE(written.size(), 2000U);
    EXPECT_GE(written.size(), 1998U);
    EXPECT_TRUE(written.ends_with("é\n"));
}

TEST(Log, TheFileIsPrivateRotatedAndKeepsThreeOlderOnes) {
    const test::TemporaryFolder folder;
    const fs::path file = folder / "log";
    const Log log(makeFileLogSink(file), "app", "x");
    const std::string line(1900, 'x');
    for (int i = 0; i < 3000; ++i) {  // about six files full
        log.info(line);
    }

    std::uintmax_t files = 0;
    for (const auto& entry : fs::directory_iterator(folder.path())) {
        ++files;
        EXPECT_LT(entry.file_size(), 1'002'001U) << entry.path();
        struct stat status {};
        ASSERT_EQ(::stat(entry.path().c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0600U) << entry.path();
    }
    EXPECT_EQ(files, 4U);
}

TEST(Log, SeveralWritersOfOneFileLoseNoLineToARotation) {
    const test::TemporaryFolder folder;
    constexpr int writers = 4;
    constexpr int linesEach = 400;
    {
        // A sink each, as processes have.
        std::vector<std::jthread> threads;
        threads.reserve(4);
        for (int i = 0; i < writers; ++i) {
            threads.emplace_back([&] {
                const Log log(makeFileLogSink(folder / "log"), "app", "x");
                const std::string line(1500, 'x');
                for (int j = 0; j < linesEach; ++j) {
                    log.info(line);
                }
            });
        }
    }
    std::ptrdiff_t lines = 0;
    for (const auto& entry : fs::directory_iterator(folder.path())) {
        const std::string content = test::contentOf(entry.path());
        lines += std::ranges::count(content, '\n');
    }
    EXPECT_EQ(lines, writers * linesEach);
}

TEST(Log, ADiskThatDoesNotTakeItIsNoFailure) {
    const Log log(makeFileLogSink("/proc/nowhere/log"), "app", "x");
    EXPECT_NO_THROW(log.error("lost"));
    EXPECT_NO_THROW(Log().error("dropped"));
}

}  // namespace
}  // namespace tesserine
