#include "base/HTTPSession.h"
#include "base/OperationCancelled.h"
#include "base/WebSocket.h"
#include "server/HTTPFront.h"
#include "server/Service.h"
#include "sync/LiveUpdates.h"
#include "sync/SyncClient.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace tesserine::server {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

/// One who listens, on a thread of its own.
class Listener {
public:
    explicit Listener(WebSocketRequest request)
        : thread_([this, request = std::move(request)](const std::stop_token& stop) {
              try {
                  listenToWebSocket(
                      request,
                      {.opened = [this] { note("opened"); },
                       .received = [this](std::string_view text) { note(std::string(text)); }},
                      stop);
              } catch (const WebSocketError& error) {
                  note("error " + std::to_string(error.status()));
              } catch (const OperationCancelled&) {
                  note("cancelled");
              }
          }) {}

    /// What came next, or "nothing" for two seconds.
    std::string next() {
        std::unique_lock lock(mutex_);
        came_.wait_for(lock, seconds(2), [this] { return !heard_.empty(); });
        if (heard_.empty()) return "nothing";
        std::string first = heard_.front();
        heard_.pop_front();
        return first;
    }
    void stop() { thread_.request_stop(); }

private:
    void note(const std::string& text) {
        const std::scoped_lock lock(mutex_);
        heard_.push_back(text);
        came_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable came_;
    std::deque<std::string> heard_;
    std::jthread thread_;
};

TEST(LiveHub, KeepsOnlyTheLatestForASlowDeviceAndTellsNoOtherAccount) {
    LiveHub hub({});
    const auto anna = hub.enter({.user = "anna", .session = "1"});
    const auto ben = hub.enter({.user = "ben", .session = "2"});
    for (int seq = 1; seq <= 10'000; ++seq) {
        hub.changed("anna", seq);
    }
    hub.ended("1");
    const LiveHub::News news = anna->take();
    EXPECT_EQ(news.changes, 10'000);
    EXPECT_TRUE(news.isSignedOut);
    EXPECT_EQ(anna->take().changes, std::nullopt);
    EXPECT_EQ(ben->take().changes, std::nullopt);
    EXPECT_FALSE(ben->take().isSignedOut);
}

class LiveChannelTest : public testing::Test {
protected:
    LiveChannelTest() { service_.accounts().setPassword("a@b.test", "secret"); }

    TokenResponse signIn() {
        return client_.exchange(*service_.accounts().signIn("a@b.test", "secret"), "Desk");
    }
    void use(const TokenResponse& tokens) {
        client_.setTokenSource([tokens](const std::stop_token&) { return tokens.accessToken; });
    }
    void push() { client_.push({{.id = Uuid::random(random_), .kind = "tag"}}); }
    WebSocketRequest request(const std::string& token) const {
        return {.url = client_.liveChannelURL(), .protocols = "tesserine, " + token};
    }

    test::TemporaryFolder folder_;
    SystemClock clock_;
    SecureRandom random_;
    Service service_{
        {.folder = folder_.path() / "data", .passwordRounds = 1, .live = {.perAccount = 2}},
        {.clock = clock_, .random = random_}};
    std::optional<HTTPFront> front_{std::in_place, service_, HTTPFront::Options{.port = 0}};
    HTTPSession network_{{.usesProxy = false}};
    SyncClient client_{
        "http://127.0.0.1:" + std::to_string(front_->port()),
        {.session = network_, .clock = clock_, .random = random_}};
};

TEST_F(LiveChannelTest, DevicesHearOfChangesWithinMoments) {
    const TokenResponse tokens = signIn();
    use(tokens);
    Listener one(request(tokens.accessToken));
    Listener two(request(signIn().accessToken));
    for (Listener* const listener : {&one, &two}) {
        EXPECT_EQ(listener->next(), "opened");
        EXPECT_EQ(listener->next(), R"({"type":"changes","seq":0})");
    }
    push();
    EXPECT_EQ(one.next(), R"({"type":"changes","seq":1})");
    EXPECT_EQ(two.next(), R"({"type":"changes","seq":1})");
    one.stop();
    EXPECT_EQ(one.next(), "cancelled");
}

TEST_F(LiveChannelTest, ADeviceThatIsSignedOutHearsOfItAndNoMore) {
    const TokenResponse tokens = signIn();
    Listener listener(request(tokens.accessToken));
    EXPECT_EQ(listener.next(), "opened");
    listener.next();
    client_.signOut(tokens.refreshToken, std::nullopt);
    EXPECT_EQ(listener.next(), R"({"type":"signed_out"})");
    EXPECT_EQ(listener.next(), "error 0") << "closed";
    Listener again(request(tokens.accessToken));
    EXPECT_EQ(again.next(), "error 401");
}

TEST_F(LiveChannelTest, APersonalTokenListensUntilItIsDeleted) {
    use(signIn());
    const APITokenCreated token = client_.createAPIToken("Script");
    Listener listener(request(token.token));
    EXPECT_EQ(listener.next(), "opened");
    listener.next();
    client_.revokeAPIToken(token.id);
    EXPECT_EQ(listener.next(), R"({"type":"signed_out"})");
}

TEST_F(LiveChannelTest, ThereAreOnlySoManyAndAPlaceIsGivenBack) {
    const std::string token = signIn().accessToken;
    Listener one(request(token));
    EXPECT_EQ(one.next(), "opened");
    {
        Listener two(request(token));
        EXPECT_EQ(two.next(), "opened");
        Listener three(request(token));
        EXPECT_EQ(three.next(), "error 429");
    }
    std::string opened;
    for (int i = 0; i < 20 && opened != "opened"; ++i) {
        Listener later(request(token));
        opened = later.next();
        std::this_thread::sleep_for(milliseconds(50));
    }
    EXPECT_EQ(opened, "opened");
}

TEST_F(LiveChannelTest, TheServiceEndsThoughSomebodyListens) {
    Listener listener(request(signIn().accessToken));
    EXPECT_EQ(listener.next(), "opened");
    listener.next();
    front_.reset();
    EXPECT_EQ(listener.next(), "error 0");
}

}  // namespace
}  // namespace tesserine::server
