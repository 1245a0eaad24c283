#include "base/SecretStore.h"
#include "cli/CommandFixture.h"
#include "sync/SyncService.h"
#include "tests/fakeserver/FakeSyncServer.h"

#include <gtest/gtest.h>

namespace tesserine::cli {
namespace {

class SyncCommands : public CommandFixture {
protected:
    SyncCommands() {
        network_ = &service_;
        secrets_ = &keyring_;
    }
    void setUp() {
        mustRun({"account", "service", "https://notes.example.org"});
        mustRun({"account", "sign-in"}, "tesserine://auth?code=abc\n");
    }

    test::FakeSyncServer service_;
    InMemorySecrets keyring_;
};

TEST_F(SyncCommands, TouchNoNetworkUntilAServiceIsNamed) {
    service_.instead = [](const HTTPRequest&) -> std::optional<HTTPReply> {
        ADD_FAILURE() << "the network was touched";
        return std::nullopt;
    };
    mustRun({"init"});
    EXPECT_EQ(run({"sync"}).error, std::string(SyncSetupError::notSetUp().what()) + "\n");
    EXPECT_EQ(run({"account", "status"}).status, ExitStatus::failed);
    for (const char* address :
         {"http://notes.example.org",
          "ftp://a",
          "notes.example.org",
          "https://u@a/",
          "https://a/?b"}) {
        EXPECT_EQ(run({"account", "service", address}).status, ExitStatus::failed) << address;
    }
    mustRun({"account", "service", "http://localhost:8080"});
    EXPECT_EQ(
        run({"sync"}).error, "Your Tesserine session has ended. Sign in again to keep syncing.\n");
    EXPECT_EQ(
        run({"account", "sign-in"}, "https://evil.example/?code=a\n").status, ExitStatus::failed);
}

TEST_F(SyncCommands, ANoteTravelsFromOneLibraryToAnother) {
    setUp();
    addNote("Plan", {"--text", "Buy milk"});
    const auto summary = mustRun({"sync", "--json"}).json();
    EXPECT_EQ(summary.at("sent").as_int64(), 1);
    EXPECT_EQ(mustRun({"sync"}).line(), "Everything is in step.");

    variables_["TESSERINE_LIBRARY"] = (folder_ / "other").string();
    EXPECT_EQ(mustRun({"sync"}).line(), "Received 1 change, sent 0 changes.");
    EXPECT_EQ(mustRun({"note", "show", "Plan", "--text"}).line(), "Buy milk");
    const auto status = mustRun({"account", "status", "--json"}).json();
    EXPECT_EQ(status.at("email").as_string(), "a@b.test");
    EXPECT_EQ(status.at("lastSync").as_string(), "2026-03-14T09:15:00.000Z");
    EXPECT_EQ(status.at("waitingChanges").as_int64(), 0);
}

TEST_F(SyncCommands, ATaskChangedOnTwoDevicesIsShownAndChosen) {
    setUp();
    const std::string id = mustRun({"task", "add", "Call Ada tomorrow"}).line();
    mustRun({"sync"});
    variables_["TESSERINE_LIBRARY"] = (folder_ / "other").string();
    mustRun({"sync"});
    clock_.advance(std::chrono::seconds(1));
    mustRun({"task", "edit", id, "--title", "Call Bob", "--priority", "2"});
    mustRun({"sync"});
    variables_["TESSERINE_LIBRARY"] = library().string();
    EXPECT_EQ(
        run({"task", "resolve", id, "--keep", "this"}).error,
        "There is no other version of “Call Ada” to choose.\n");
    clock_.advance(std::chrono::seconds(1));
    mustRun({"task", "edit", id, "--title", "Call Cleo"});
    mustRun({"sync"});

    const auto conflicts = mustRun({"task", "conflicts", "--json"}).json();
    ASSERT_EQ(conflicts.as_array().size(), 1U);
    EXPECT_EQ(shown(conflicts.at(0).at("id")), id);
    EXPECT_EQ(shown(conflicts.at(0).at("this").at("title")), "Call Cleo");
    EXPECT_EQ(shown(conflicts.at(0).at("this").at("priority")), "2") << "merged: no choice";
    EXPECT_EQ(shown(conflicts.at(0).at("other").at("title")), "Call Bob");
    EXPECT_NE(mustRun({"task", "conflicts"}).output.find("Call Bob"), std::string::npos);
    EXPECT_EQ(run({"task", "resolve", id}).status, ExitStatus::usage);
    EXPECT_EQ(
        mustRun({"task", "resolve", id, "--keep", "other"}).line(),
        "Kept the other version of “Call Bob”.");
    EXPECT_EQ(mustRun({"task", "conflicts", "--json"}).line(), "[]");
    EXPECT_EQ(mustRun({"sync"}).line(), "Received 0 changes, sent 1 change.");
}

TEST_F(SyncCommands, TokensOfOneServiceNeverGoToAnother) {
    EXPECT_EQ(
        SyncService::secretService("https://Notes.example.org/a"),
        "app.tesserine.tokens https://notes.example.org");
    EXPECT_EQ(
        SyncService::secretService("http://localhost:8080"),
        "app.tesserine.tokens http://localhost:8080");
}

}  // namespace
}  // namespace tesserine::cli
