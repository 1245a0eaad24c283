#include "sync/LiveUpdates.h"

#include "base/OperationCancelled.h"
#include "sync/AccountSession.h"
#include "sync/LiveInbox.h"
#include "sync/ScriptedTransportFixture.h"
#include "sync/SyncClient.h"
#include "tests/support/RecordingSink.h"
#include "tests/support/SeededRandom.h"

#include <gtest/gtest.h>

#include <latch>

namespace tesserine {
namespace {

using Kind = LiveNews::Kind;
using std::chrono::seconds;

TEST(LiveNews, SaysWhatIsUnderstoodAndElseThatThereIsSomething) {
    struct Case {
        std::string_view message;
        Kind kind;
        std::int64_t seq = 0;
    };
    for (const Case& one : std::vector<Case>{
             {R"({"type":"changes","seq":12})", Kind::changes, 12},
             {R"({"seq":9007199254740993,"more":[],"type":"changes"})",
              Kind::changes,
              (1LL << 53) + 1},
             {R"({"type":"changes","seq":0})", Kind::changes},
             {R"({"type":"signed_out"})", Kind::signedOut},
             {R"({"type":"changes"})", Kind::unknown},
             {R"({"type":"changes","seq":-1})", Kind::unknown},
             {R"({"type":"changes","seq":1.5})", Kind::unknown},
             {R"({"type":"changes","seq":1e999})", Kind::unknown},
             {R"({"type":["changes"],"seq":1})", Kind::unknown},
             {R"({"type":"news"})", Kind::unknown},
             {"[]", Kind::unknown},
             {"", Kind::unknown},
             {"\xFF", Kind::unknown},
         }) {
        const LiveNews news = LiveNews::read(one.message);
        EXPECT_EQ(news.kind, one.kind) << one.message;
        EXPECT_EQ(news.seq, one.seq) << one.message;
    }
}

class LiveUpdatesTest : public testing::Test {
protected:
    LiveUpdatesTest() {
        client_.setRetry({.attempts = 0});
        signIn("access-token");
    }

    void signIn(const std::string& token) {
        service_.say({HTTPReply{
            .status = 200,
            .body = R"({"account":{"id":"1","email":"a@b.c"},"access_token":")" + token
                    + R"(","refresh_token":"r","expires_in":3600})"}});
        session_.completeSignIn("code", "Desk");
    }

    /// Runs a channel whose tries to open a socket end as `attempt` says, until that says stop.
    void run(const std::function<void(const WebSocketHandler& handler)>& attempt) {
        std::latch ended(1);
        LiveUpdates updates(
            {.session = session_,
             .address = "wss://tesserine.test/api/v1/sync/socket",
             .clock = clock_,
             .log = Log(sink_, "test", "test"),
             .socket =
                 [&](const WebSocketRequest& request,
                     const WebSocketHandler& handler,
                     const std::stop_token&) {
                     protocols_.push_back(request.protocols);
                     times_.push_back(clock_.monotonic());
                     if (protocols_.size() >= tries_) {
                         ended.count_down();
                         throw OperationCancelled();
                     }
                     attempt(handler);
                 }},
            [&](const LiveNews& news) {
                heard_.push_back(news.kind);
                const bool isOver = news.kind == Kind::closed && tries_ == 0;
                if (isOver) ended.count_down();
            });
        ended.wait();
    }
    std::vector<long> pauses() const {
        std::vector<long> result;
        for (std::size_t i = 1; i < times_.size(); ++i) {
            result.push_back(
                std::chrono::duration_cast<seconds>(times_[i] - times_[i - 1]).count());
        }
        return result;
    }

    FixedClock clock_{*Instant::parseISO("2026-03-10T10:00:00Z")};
    test::SeededRandom random_{1};
    ScriptedTransport service_;
    SyncClient client_{
        "https://tesserine.test", {.session = service_, .clock = clock_, .random = random_}};
    InMemorySecrets secrets_;
    AccountSession session_{{.client = client_, .secrets = secrets_, .clock = clock_}};
    std::shared_ptr<test::RecordingSink> sink_ = std::make_shared<test::RecordingSink>();
    std::size_t tries_ = 0;  // 0: it gives up by itself
    std::vector<std::string> protocols_;
    std::vector<std::chrono::nanoseconds> times_;
    std::vector<Kind> heard_;
};

TEST_F(LiveUpdatesTest, OpensAgainLaterAndLaterAndSaysOnceThatItIsClosed) {
    tries_ = 9;
    run([this](const WebSocketHandler&) {
        if (times_.size() == 2) throw std::runtime_error("too many open files");
        throw WebSocketError(WebSocketError::Kind::unreachable, "no connection");
    });
    EXPECT_EQ(protocols_.at(0), "tesserine, access-token");
    EXPECT_EQ(pauses(), (std::vector<long>{1, 2, 4, 8, 16, 32, 60, 60}));
    EXPECT_EQ(heard_, std::vector<Kind>{Kind::closed});
    EXPECT_TRUE(sink_->holds("no live channel: no connection"));
    EXPECT_FALSE(sink_->holds("access-token"));
}

TEST_F(LiveUpdatesTest, AChannelThatHasLastedIsOpenedAgainAfterASecond) {
    tries_ = 5;
    run([this](const WebSocketHandler& handler) {
        handler.opened();
        if (times_.size() == 3) clock_.advance(seconds(100));
        throw WebSocketError(WebSocketError::Kind::lost, "closed");
    });
    EXPECT_EQ(pauses(), (std::vector<long>{1, 2, 101, 2}));
    const std::vector<Kind> twice{Kind::opened, Kind::closed, Kind::opened, Kind::closed};
    EXPECT_EQ(std::vector<Kind>(heard_.begin(), heard_.begin() + 4), twice);
}

TEST_F(LiveUpdatesTest, ATokenThatIsRefusedIsReplaced) {
    tries_ = 2;
    service_.say({HTTPReply{
        .status = 200,
        .body = R"({"account":{"id":"1","email":"a@b.c"},"access_token":"new",)"
                R"("refresh_token":"r","expires_in":3600})"}});
    run([](const WebSocketHandler&) {
        throw WebSocketError(WebSocketError::Kind::refused, "refused", 401);
    });
    EXPECT_EQ(protocols_.at(1), "tesserine, new");
}

TEST_F(LiveUpdatesTest, GivesUpWithoutASessionAndWithATokenThatCannotTravel) {
    const auto never = [](const WebSocketHandler&) { ADD_FAILURE() << "opened"; };
    signIn("not,a token/");
    run(never);
    session_.signOut();
    run(never);
    EXPECT_EQ(heard_, (std::vector<Kind>{Kind::closed, Kind::closed}));
}

TEST(LiveInbox, KeepsTheLatestOfEachKind) {
    LiveInbox inbox;
    for (int seq = 1; seq <= 1'000; ++seq) {
        inbox.post({.kind = Kind::opened});
        inbox.post({.kind = Kind::changes, .seq = seq});
        inbox.post({.kind = Kind::closed});
    }
    const auto news = inbox.take(seconds(0), {});
    ASSERT_EQ(news.size(), 2U);
    EXPECT_EQ(news[0].kind, Kind::closed);
    EXPECT_EQ(news[1].seq, 1'000);
    EXPECT_TRUE(inbox.take(seconds(0), {}).empty());
}

}  // namespace
}  // namespace tesserine
