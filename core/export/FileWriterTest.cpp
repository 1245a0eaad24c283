#include "core/export/FileWriter.h"

#include "base/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>

namespace tesserine {
namespace {

Bytes bytes(const std::string& text) { return {text.begin(), text.end()}; }

class FileWriterTest : public testing::Test {
public:
    std::filesystem::path file(int number) const { return folder.path() / std::to_string(number); }

    test::TemporaryFolder folder;
};

TEST_F(FileWriterTest, TellsTheFilesInTheOrderOfTheCalls) {
    constexpr int count = 200;
    FileWriter writer;
    for (int i = 0; i < count; ++i) {
        // Every seventh takes longer than the ones after it.
        const std::string text(i % 7 == 0 ? 300'000 : 10, static_cast<char>('a' + i % 26));
        writer.write(file(i), text.size(), [text] { return bytes(text); });
    }
    writer.finish();
    ASSERT_EQ(writer.written().size(), static_cast<std::size_t>(count));
    std::uint64_t size = 0;
    for (int i = 0; i < count; ++i) {
        const auto& [path, digest] = writer.written()[static_cast<std::size_t>(i)];
        EXPECT_EQ(path, file(i));
        EXPECT_EQ(hex(digest), sha256HexOfFile(file(i)));
        size += std::filesystem::file_size(path);
    }
    EXPECT_EQ(writer.bytesWritten(), size);
}

TEST_F(FileWriterTest, HoldsNoMoreThanItMay) {
    std::atomic<std::size_t> held = 0;
    FileWriter writer;
    constexpr std::size_t size = FileWriter::mostWaiting / 4;
    for (int i = 0; i < 30; ++i) {
        // One larger than everything that may wait goes alone.
        const std::size_t own = i == 20 ? FileWriter::mostWaiting * 2 : size;
        writer.write(file(i), own, [&held, own] {
            held -= own;
            return bytes("x");
        });
        EXPECT_LE(held += own, std::max(own, FileWriter::mostWaiting));
    }
    writer.finish();
    EXPECT_EQ(writer.bytesWritten(), 30U);
}

TEST_F(FileWriterTest, BeginsNothingAfterAFailure) {
    test::putContent(file(0), "mine");
    std::atomic<int> made = 0;
    FileWriter writer;
    const auto make = [&made] {
        ++made;
        return bytes("theirs");
    };
    writer.write(file(0), 6, make);
    EXPECT_THROW(writer.finish(), FileError);
    const int madeBefore = made;
    EXPECT_THROW(writer.write(file(1), 6, make), FileError);
    EXPECT_THROW(writer.finish(), FileError);
    EXPECT_EQ(made, madeBefore);
    EXPECT_EQ(test::contentOf(file(0)), "mine");
    EXPECT_FALSE(std::filesystem::exists(file(1)));
}

}  // namespace
}  // namespace tesserine
