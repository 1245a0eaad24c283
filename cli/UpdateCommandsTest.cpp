#include "cli/CommandFixture.h"
#include "updates/UpdateError.h"

#include <gtest/gtest.h>

namespace tesserine::cli {
namespace {

class UpdateCommands : public CommandFixture {
protected:
    std::string feed(const std::string& members) {
        const auto file = folder_ / "appcast.json";
        test::putContent(file, R"({"platforms":{"macos":{)" + members + "}}}");
        return file.string();
    }
};

TEST_F(UpdateCommands, TellWhatAFeedOffers) {
    const std::string newer = feed(
        R"("version":"99.1","releaseNotes":"Better.\n- Faster","releaseNotesURL":"https://tesserine.example/99")");
    EXPECT_EQ(
        mustRun({"update", "check", "--feed", newer}).output,
        "Tesserine 99.1 is available; this is " TESSERINE_VERSION ".\nBetter.\n  • Faster\n"
        "Full release notes: https://tesserine.example/99\n");
    EXPECT_EQ(
        shown(mustRun({"update", "check", "--feed", newer, "--json"})
                  .json()
                  .at("offer")
                  .at("version")),
        "99.1");
    EXPECT_EQ(
        mustRun({"update", "check", "--feed", feed(R"("version":"0.0.1")")}).output,
        "Tesserine " TESSERINE_VERSION " is the newest version.\n");
    const auto evil = run(
        {"update",
         "check",
         "--feed",
         feed(R"("version":"99","releaseNotesURL":"https://evil.example/")")});
    EXPECT_EQ(evil.status, ExitStatus::failed);
    EXPECT_EQ(evil.error, std::string(UpdateError::untrustedHost("evil.example").what()) + "\n");
}

TEST_F(UpdateCommands, SayThatThereIsNoServiceInABuildWithoutOne) {
    for (const char* command : {"check", "download"}) {
        const auto result = run({"update", command});
        EXPECT_EQ(result.status, ExitStatus::failed);
        EXPECT_NE(result.error.find("no service of its own"), std::string::npos);
    }
}

}  // namespace
}  // namespace tesserine::cli
