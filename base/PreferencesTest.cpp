#include "base/Preferences.h"

#include "base/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <thread>
#include <vector>

namespace tesserine {
namespace {

using test::contentOf;
using test::putContent;

class PreferencesFile : public testing::Test {
protected:
    const test::TemporaryFolder folder_;
    const std::filesystem::path file_ = folder_ / "config/settings.json";
};

TEST_F(PreferencesFile, KeepsTypedValuesForTheNextStart) {
    {
        Preferences preferences(file_);
        EXPECT_EQ(preferences.integer("a"), std::nullopt);
        preferences.set("tesserine.days", 30);
        preferences.set("tesserine.ratio", 7.5);
        preferences.set("tesserine.isOn", true);
        preferences.set("tesserine.name", "Café \"x\"");
        preferences.set("tesserine.names", std::vector<std::string>{"a", "b"});
        preferences.set("gone", 1);
        preferences.remove("gone");
    }
    const Preferences preferences(file_);
    EXPECT_EQ(preferences.integer("tesserine.days"), 30);
    EXPECT_EQ(preferences.number("tesserine.ratio"), 7.5);
    EXPECT_EQ(preferences.boolean("tesserine.isOn"), true);
    EXPECT_EQ(preferences.string("tesserine.name"), "Café \"x\"");
    EXPECT_EQ(preferences.strings("tesserine.names"), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(preferences.json("tesserine.names"), R"(["a","b"])");
    EXPECT_EQ(preferences.keys().size(), 5U);

    struct stat status {};
    ASSERT_EQ(::stat(file_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
}

TEST_F(PreferencesFile, AValueOfAnotherTypeIsNone) {
    files::createPrivateFolder(file_.parent_path());
    putContent(
        file_,
        R"({"whole":30,"point":30.0,"half":7.5,"text":"30","huge":1e18,"more":9223372036854775808,
            "mixed":["a",1],"null":null})");
    const Preferences preferences(file_);
    EXPECT_EQ(preferences.integer("whole"), 30);
    EXPECT_EQ(preferences.integer("point"), 30);
    EXPECT_EQ(preferences.number("whole"), 30.0);
    for (const char* key : {"half", "text", "huge", "more", "mixed", "null", "absent"}) {
        EXPECT_EQ(preferences.integer(key), std::nullopt) << key;
    }
    EXPECT_EQ(preferences.strings("mixed"), std::nullopt);
    EXPECT_EQ(preferences.string("whole"), std::nullopt);
    EXPECT_EQ(preferences.boolean("whole"), std::nullopt);
}

TEST_F(PreferencesFile, SeesWhatOthersWriteAndKeepsTheirKeys) {
    Preferences ours(file_);
    Preferences theirs(file_);
    ours.set("a", 1);
    theirs.set("b", 2);
    EXPECT_EQ(ours.integer("b"), 2);
    ours.set("a", 3);
    EXPECT_EQ(theirs.integer("a"), 3);
    EXPECT_EQ(theirs.integer("b"), 2);
    files::removeIfPresent(file_);
    EXPECT_EQ(ours.integer("a"), std::nullopt);
}

TEST_F(PreferencesFile, SeveralWritersAtOnceLoseNoKey) {
    constexpr int writers = 4;
    constexpr int keysEach = 10;
    {
        // An object each, as processes have: they share nothing but the file and its lock.
        std::vector<std::jthread> threads;
        threads.reserve(4);
        for (int writer = 0; writer < writers; ++writer) {
            threads.emplace_back([&, writer] {
                Preferences preferences(file_);
                for (int i = 0; i < keysEach; ++i) {
                    preferences.set(std::to_string(writer) + "." + std::to_string(i), i);
                }
            });
        }
    }
    EXPECT_EQ(Preferences(file_).keys().size(), static_cast<std::size_t>(writers * keysEach));
}

TEST_F(PreferencesFile, AnUnreadableFileCountsAsEmptyAndIsKeptAside) {
    files::createPrivateFolder(file_.parent_path());
    putContent(file_, "{\"days\": 30,");
    Preferences preferences(file_);
    EXPECT_EQ(preferences.integer("days"), std::nullopt);
    EXPECT_EQ(contentOf(file_), "{\"days\": 30,");  // reading changes nothing

    preferences.set("days", 7);
    EXPECT_EQ(preferences.integer("days"), 7);
    EXPECT_EQ(contentOf(file_.native() + ".unreadable"), "{\"days\": 30,");

    putContent(file_, "[1]");
    preferences.set("days", 8);
    EXPECT_EQ(contentOf(file_.native() + ".unreadable"), "{\"days\": 30,");
    EXPECT_EQ(contentOf(file_.native() + ".unreadable-2"), "[1]");
}

TEST_F(PreferencesFile, AWriteThatCannotBeMadeSaysSo) {
    putContent(folder_ / "file", "");
    Preferences preferences(folder_ / "file/settings.json");
    EXPECT_EQ(preferences.integer("a"), std::nullopt);
    EXPECT_THROW(preferences.set("a", 1), FileError);

    Preferences inMemory = Preferences::inMemory();
    inMemory.set("a", 1);
    EXPECT_EQ(inMemory.integer("a"), 1);
}

}  // namespace
}  // namespace tesserine
