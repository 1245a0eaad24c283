#include "base/HTTPSession.h"
#include "base/SecretStore.h"
#include "cli/CommandFixture.h"
#include "server/HTTPFront.h"
#include "server/Service.h"

#include <gtest/gtest.h>

#include <thread>

namespace tesserine::cli {
namespace {

using std::chrono::milliseconds;

/// The terminal program and the real service on the loopback.
class WatchCommand : public CommandFixture {
protected:
    WatchCommand() {
        network_ = &session_;
        secrets_ = &keyring_;
        service_.accounts().setPassword("a@b.test", "secret");
        const std::string address = "http://127.0.0.1:" + std::to_string(front_->port());
        mustRun({"account", "service", address});
        const std::string code = *service_.accounts().signIn("a@b.test", "secret");
        mustRun({"account", "sign-in"}, "tesserine://auth?code=" + code + "\n");
    }

    std::vector<std::string> inOther(std::vector<std::string> line) const {
        line.insert(line.begin(), {"--library", (folder_ / "other").string()});
        return line;
    }
    bool isInOther(const std::string& title) {
        return run(inOther({"note", "show", title})).status == ExitStatus::done;
    }
    bool comesToOther(const std::string& title) {
        for (int tries = 0; tries < 200; ++tries) {
            if (isInOther(title)) return true;
            std::this_thread::sleep_for(milliseconds(50));
        }
        return false;
    }

    SystemClock now_;
    SecureRandom dice_;
    server::Service service_{
        {.folder = folder_ / "service", .passwordRounds = 1}, {.clock = now_, .random = dice_}};
    std::optional<server::HTTPFront> front_{
        std::in_place, service_, server::HTTPFront::Options{.port = 0}};
    HTTPSession session_{{.usesProxy = false}};
    InMemorySecrets keyring_;
};

/// No time passes for the watching library but what the service tells: its clock stands still.
TEST_F(WatchCommand, PullsWhatAnotherLibrarySentAndSaysOnceThatNewsIsMissing) {
    addNote("First");
    mustRun({"sync"});
    mustRun(inOther({"init"}));
    CommandResult watching;
    {
        const std::jthread watch([&] { watching = run(inOther({"sync", "--watch"})); });
        EXPECT_TRUE(comesToOther("First")) << "at the start";
        for (const char* title : {"Second", "Third"}) {
            addNote(title);
            mustRun({"sync"});
            EXPECT_TRUE(comesToOther(title));
        }
        front_.reset();
        std::this_thread::sleep_for(milliseconds(300));
        stop_.request_stop();
    }
    EXPECT_EQ(watching.status, ExitStatus::interrupted);
    const std::string sentence = "The service tells no news at the moment";
    const std::size_t said = watching.error.find(sentence);
    EXPECT_NE(said, std::string::npos) << watching.error;
    EXPECT_EQ(watching.error.find(sentence, said + 1), std::string::npos);
}

}  // namespace
}  // namespace tesserine::cli
