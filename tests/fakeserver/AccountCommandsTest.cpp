#include "base/SecretStore.h"
#include "cli/CommandFixture.h"
#include "server/Service.h"
#include "tests/support/SeededRandom.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tesserine::cli {
namespace {

/// The terminal program and the real service, without sockets between them.
class AccountCommands : public CommandFixture, public HTTPTransport {
protected:
    AccountCommands() {
        network_ = this;
        secrets_ = &keyring_;
        service_.accounts().setPassword("a@b.test", "secret");
        mustRun({"account", "service", "https://notes.example.org"});
        mustRun({"account", "sign-in"}, callback());
    }

    HTTPReply send(const HTTPRequest& request, const std::stop_token& /*stop*/) override {
        HTTPRequest arriving = request;
        arriving.url = request.url.substr(request.url.find("/api/"));
        return service_.answer(arriving, "192.0.2.1");
    }
    std::string callback() {
        return "tesserine://auth?code=" + *service_.accounts().signIn("a@b.test", "secret") + "\n";
    }

    /// Goes over to the library of the device of that name.
    void use(const std::string& device) {
        variables_["TESSERINE_LIBRARY"] = (folder_ / device).string();
        clock_.advance(std::chrono::seconds(7));
    }
    std::string addFile(const std::string& name, const std::string& bytes) {
        test::putContent(folder_ / name, bytes);
        return (folder_ / name).string();
    }

    InMemorySecrets keyring_;
    test::TemporaryFolder data_;
    test::SeededRandom dice_{3};
    server::Service service_{
        {.folder = data_.path() / "data",
         .publicURL = "https://notes.example.org",
         .quotas = {.files = 10'000'000},
         .passwordRounds = 1},
        {.clock = clock_, .random = dice_}};
};

TEST_F(AccountCommands, StorageShowsWhatIsKeptAndTheLimitIfThereIsOne) {
    addNote("Plan", {"--text", "Buy milk"});
    mustRun({"sync"});
    const auto storage = mustRun({"account", "storage", "--json"}).json();
    EXPECT_EQ(storage.at("records").as_int64(), 1);
    EXPECT_GT(storage.at("recordBytes").as_int64(), 0);
    EXPECT_TRUE(storage.at("recordQuotaBytes").is_null());
    EXPECT_EQ(storage.at("fileQuotaBytes").as_int64(), 10'000'000);
    const std::string text = mustRun({"account", "storage"}).output;
    EXPECT_NE(text.find("0 bytes of 10 MB"), std::string::npos) << text;
}

TEST_F(AccountCommands, SharingShowsItsAddressOnceAndEnds) {
    addNote("Plan", {"--text", "Buy milk"});
    mustRun({"sync"});
    EXPECT_EQ(mustRun({"note", "share", "Plan", "--status"}).line(), "Not shared.");
    const std::string url = mustRun({"note", "share", "Plan"}).line();
    EXPECT_TRUE(url.starts_with("https://notes.example.org/shared/")) << url;
    const auto status = mustRun({"note", "share", "Plan", "--status", "--json"}).json();
    EXPECT_TRUE(status.at("isShared").as_bool());
    EXPECT_TRUE(status.at("url").is_null());
    mustRun({"note", "unshare", "Plan"});
    EXPECT_EQ(mustRun({"note", "share", "Plan", "--status"}).line(), "Not shared.");
}

TEST_F(AccountCommands, ATokenIsShownOnceAndADeviceCanBeSignedOut) {
    EXPECT_EQ(run({"account", "tokens", "--create", " "}).status, ExitStatus::failed);
    const std::string token = mustRun({"account", "tokens", "--create", "Script"}).line();
    EXPECT_EQ(service_.accounts().callerWith(token)->isDevice, false);
    const auto tokens = mustRun({"account", "tokens", "--json"});
    EXPECT_EQ(tokens.json().as_array().at(0).at("label").as_string(), "Script");
    EXPECT_EQ(tokens.output.find(token), std::string::npos);

    service_.accounts().exchange(*service_.accounts().signIn("a@b.test", "secret"), "Phone");
    std::string phone;
    const auto devices = mustRun({"account", "devices", "--json"}).json();
    for (const auto& device : devices.as_array()) {
        if (!device.at("isCurrentDevice").as_bool()) phone = device.at("id").as_string();
    }
    mustRun({"account", "devices", "--sign-out", phone});
    EXPECT_EQ(mustRun({"account", "devices", "--json"}).json().as_array().size(), 1U);
    mustRun({"account", "sign-out"});
    EXPECT_EQ(keyring_.read("refresh-token"), std::nullopt);
    EXPECT_EQ(run({"account", "devices"}).status, ExitStatus::failed);
}

TEST_F(AccountCommands, TwoLibrariesInStepAreDumpedAlike) {
    use("one");
    const std::string plan = addNote("Plan", {"--tag", "work/now", "--notebook", "Work"});
    mustRun({"note", "edit", plan, "--html", "-"}, "<p>first</p><p>second</p>");
    mustRun(
        {"note", "attach", plan, addFile("a.svg", "<svg xmlns='http://www.w3.org/2000/svg'/>")});
    const std::string gone = addNote("Gone", {"--text", "x", "--tag", "old"});
    mustRun({"task", "add", "Trip friday 9am p1 #Home @now"});
    mustRun({"template", "save", plan});
    mustRun({"saved-search", "add", "Now", "tag:now"});
    mustRun({"sync"});

    use("two");
    mustRun({"sync"});
    mustRun({"note", "edit", plan, "--html", "-"}, "<p>first</p><p>two</p>");
    mustRun({"note", "attach", plan, addFile("b.bin", std::string(70'000, 'b'))});
    mustRun({"task", "add-subtask", "Trip", "Pack"});
    mustRun({"task-template", "add", "Weekly", "--title", "Review"});
    mustRun({"note", "delete", gone});
    addNote("Of two", {"--tag", "work", "--notebook", "Work"});

    use("one");
    mustRun({"note", "edit", plan, "--title", "The plan"});
    mustRun({"note", "pin", plan});
    mustRun({"task", "done", "Trip"});
    mustRun({"tag", "rename", "old", "older"});
    addNote("Of one", {"--tag", "new"});
    std::string all;
    for (const char* device : {"one", "two", "one", "two"}) {
        use(device);
        all = mustRun({"sync"}).line();
    }
    EXPECT_EQ(all, "Everything is in step.");

    const std::string two = mustRun({"dump", "--shared"}).output;
    EXPECT_NE(two.find(R"("title":"The plan","html":"<p>first</p><p>two</p>)"), std::string::npos);
    EXPECT_GE(std::ranges::count(two, '\n'), 14) << two;
    use("one");
    EXPECT_EQ(mustRun({"dump", "--shared"}).output, two);
    EXPECT_NE(mustRun({"dump"}).output.find("CDNoteRevision"), std::string::npos);
}

}  // namespace
}  // namespace tesserine::cli
