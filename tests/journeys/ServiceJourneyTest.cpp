#include "base/Clock.h"
#include "base/HTTPSession.h"
#include "base/Random.h"
#include "sync/SyncClient.h"
#include "tests/journeys/ProgramRunner.h"

#include <gtest/gtest.h>

#include <charconv>
#include <csignal>
#include <mutex>
#include <set>
#include <thread>

namespace tesserine::test {
namespace {

/// The real service, in a process of its own, and devices that speak with it.
class ServiceJourney : public testing::Test {
protected:
    ServiceJourney() {
        RunningProgram adding({program, "--data", data(), "user", "add", "a@b.test"}, variables_);
        adding.write("a good password\n");
        EXPECT_EQ(adding.wait(), 0);
        start();
        signIn();
    }

    std::string data() const { return (folder_ / "data").string(); }
    std::string address() const { return "http://127.0.0.1:" + std::to_string(port_); }

    void start() {
        service_ = std::make_unique<RunningProgram>(
            std::vector<std::string>{program, "--data", data(), "serve", "--listen", "127.0.0.1:0"},
            variables_);
        constexpr std::string_view words = "Listening on port ";
        const std::string line = service_->readLine().value_or("");
        ASSERT_TRUE(line.starts_with(words)) << line;
        std::from_chars(line.data() + words.size(), line.data() + line.size(), port_);
    }
    void signIn() {
        const HTTPReply page = network_.send(
            {.method = "POST",
             .url = address() + "/api/v1/auth/google/start?flow=app",
             .body = "email=a%40b.test&password=a+good+password"},
            {});
        const std::string* const refresh = page.header("Refresh");
        ASSERT_NE(refresh, nullptr) << page.status;
        const std::string code = refresh->substr(refresh->find("code=") + 5);
        token_ = client()->exchange(code, "Desk").accessToken;
    }
    std::unique_ptr<SyncClient> client() {
        auto client = std::make_unique<SyncClient>(
            address(),
            SyncClient::Environment{.session = network_, .clock = clock_, .random = random_});
        client->setRetry({.attempts = 0});
        client->setTokenSource([this](const std::stop_token&) { return token_; });
        return client;
    }

    /// Pushes one record after another until the service is gone; tells which were answered.
    std::set<Uuid> pushUntilTheEnd() {
        const auto own = client();
        std::set<Uuid> answered;
        try {
            for (;;) {
                const Uuid id = Uuid::random(random_);
                const auto response = own->push({{.id = id, .kind = "tag"}});
                if (response.results.at(0).status == "applied") answered.insert(id);
            }
        } catch (const SyncError&) {
            return answered;
        }
    }

    static constexpr const char* program = TESSERINE_SERVER_PROGRAM;
    TemporaryFolder folder_;
    std::map<std::string, std::string> variables_;
    std::unique_ptr<RunningProgram> service_;
    int port_ = 0;
    SystemClock clock_;
    SecureRandom random_;
    HTTPSession network_{{.usesProxy = false}};
    std::string token_;
};

TEST_F(ServiceJourney, AKillUnderLoadLosesNothingThatWasAnswered) {
    constexpr int kills = 3;
    constexpr int devices = 4;
    std::set<Uuid> answered;
    for (int kill = 0; kill < kills; ++kill) {
        std::mutex mutex;
        {
            std::vector<std::jthread> threads;
            for (int i = 0; i < devices; ++i) {
                threads.emplace_back([&] {
                    auto some = pushUntilTheEnd();
                    const std::scoped_lock lock(mutex);
                    answered.merge(some);
                });
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(400));
            service_->signal(SIGKILL);
            EXPECT_EQ(service_->wait(), 128 + SIGKILL);
        }
        start();
    }

    std::set<Uuid> kept;
    std::int64_t seq = 0;
    const auto reader = client();
    for (bool isMore = true; isMore;) {
        const ChangesResponse page = reader->changes(seq, 1'000);
        for (const SyncRecord& record : page.changes) {
            EXPECT_EQ(record.seq, ++seq) << "no number is used twice or left out";
            kept.insert(record.id);
        }
        isMore = page.more;
    }
    EXPECT_GT(answered.size(), static_cast<std::size_t>(kills * devices));
    EXPECT_TRUE(std::ranges::includes(kept, answered));
}

}  // namespace
}  // namespace tesserine::test
