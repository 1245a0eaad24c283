#include "app/desktop/SingleInstance.h"

#include "app/desktop/Request.h"
#include "app/state/WindowFixture.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <QFile>
#include <QLocalSocket>

#include <filesystem>
#include <future>
#include <optional>
#include <string>
#include <vector>

namespace tesserine::app {
namespace {

using namespace std::chrono_literals;

class SingleInstanceTest : public ::testing::Test {
public:
    SingleInstance started(const char* library) const {
        return SingleInstance(folder / library, QString::fromStdString(folder.path().string()));
    }
    /// What a second start does, in a thread that stands for its process.
    bool handOver(const SingleInstance& second, const QStringList& arguments) {
        auto done = std::async(std::launch::async, [&] { return second.handOver(arguments); });
        test::WindowFixture::waitUntil(
            [&] { return done.wait_for(0s) == std::future_status::ready; });
        return done.get();
    }
    QString socketFile() const {
        for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
            if (entry.path().extension() == ".socket") return QString(entry.path().c_str());
        }
        return {};
    }

    test::TemporaryFolder folder;
};

TEST_F(SingleInstanceTest, ASecondStartHandsOverItsArguments) {
    SingleInstance first = started("Library");
    ASSERT_TRUE(first.isFirst());
    std::vector<QStringList> asked;
    QObject::connect(&first, &SingleInstance::asked, &first, [&](const QStringList& arguments) {
        asked.push_back(arguments);
    });
    const SingleInstance second = started("./somewhere/../Library");
    EXPECT_FALSE(second.isFirst()) << "one library by two names";
    EXPECT_TRUE(started("Another").isFirst());

    EXPECT_TRUE(handOver(second, {"tesserine://today", "/tmp/ä b\n.md"}));
    EXPECT_TRUE(handOver(second, {}));
    const QString isLong(200'000, 'x');  // comes in pieces
    EXPECT_TRUE(handOver(second, {isLong}));
    EXPECT_FALSE(handOver(second, {isLong, isLong})) << "more than anybody asks for";
    EXPECT_EQ(
        asked,
        (std::vector<QStringList>{
            {"tesserine://today", QString::fromUtf8("/tmp/ä b\n.md")}, {}, {isLong}}));
    using std::filesystem::perms;
    EXPECT_EQ(
        std::filesystem::status(socketFile().toStdString()).permissions(),
        perms::owner_read | perms::owner_write);
}

TEST_F(SingleInstanceTest, WhoeverWaitsForASignInIsFoundWithoutALibrary) {
    using Post = SingleInstance::Post;
    const QString runtime = QString::fromStdString(folder.path().string());
    const SingleInstance window = started("Library");
    SingleInstance waiting(Post::signIn, runtime);
    ASSERT_TRUE(waiting.isFirst()) << "a library is none of its business";
    QStringList asked;
    QObject::connect(&waiting, &SingleInstance::asked, &waiting, [&](const QStringList& given) {
        asked = given;
    });
    const SingleInstance second(Post::signIn, runtime);
    EXPECT_TRUE(handOver(second, {"tesserine://auth?code=1"}));
    EXPECT_EQ(asked, QStringList{"tesserine://auth?code=1"});
}

TEST_F(SingleInstanceTest, TheNextProgramTakesOverWhatAnEndedOneLeft) {
    std::optional<SingleInstance> first(
        std::in_place, folder / "Library", QString(folder.path().c_str()));
    const QString socket = socketFile();
    first.reset();
    ASSERT_TRUE(QFile(socket).open(QIODevice::WriteOnly)) << "as a killed program leaves it";
    SingleInstance next = started("Library");
    EXPECT_TRUE(next.isFirst());
    EXPECT_TRUE(handOver(started("Library"), {"new-note"}));
}

TEST_F(SingleInstanceTest, NonsenseIsRefusedAndNobodyListeningIsNotWaitedForForEver) {
    SingleInstance first = started("Library");
    int asked = 0;
    QObject::connect(&first, &SingleInstance::asked, &first, [&] { ++asked; });
    QLocalSocket visitor;
    visitor.connectToServer(socketFile());
    ASSERT_TRUE(visitor.waitForConnected());
    visitor.write("{\"no\": \"list\"}\n");
    EXPECT_TRUE(test::WindowFixture::waitUntil(
        [&] { return visitor.state() == QLocalSocket::UnconnectedState; }));
    EXPECT_EQ(asked, 0);

    QFile::remove(socketFile());
    EXPECT_FALSE(started("Library").handOver({}, 100ms));
}

TEST(Request, ReadsTheArgumentsOfAStart) {
    const test::TemporaryFolder folder;
    test::putContent(folder / "a note.md", "# A");
    const QString here = QString::fromStdString(folder.path().string());
    struct Case {
        const char* argument;
        std::string read;  // as an argument again
    };
    for (const auto& [argument, read] : {
             Case{"new-note", "new-note"},
             Case{"new-task", "new-task"},
             Case{"tesserine://today", "tesserine://today"},
             Case{"tesserine://nowhere", "none"},
             Case{"tesserine://auth?code=4711&state=a", "tesserine://auth?code=4711&state=a"},
             Case{"a note.md", (folder / "a note.md").string()},
             Case{"../no such file", "none"},
             Case{"", ""},
         }) {
        SCOPED_TRACE(argument);
        const auto request = Request::fromArgument(argument, here);
        EXPECT_EQ(request ? request->argument().toStdString() : "none", read);
    }
    const QString url = "file://" + here + "/a%20note.md";
    EXPECT_EQ(Request::fromArgument(url, "/")->kind, Request::Kind::openFile);
}

}  // namespace
}  // namespace tesserine::app
