#include "sync/SyncClient.h"

#include "sync/ScriptedTransportFixture.h"
#include "tests/support/SeededRandom.h"

#include <gtest/gtest.h>

#include <thread>

namespace tesserine {
namespace {

const Uuid note = *Uuid::parse("6F9619FF-8B86-D011-B42D-00CF4FC964FF");
const std::string digest(64, 'A');

class SyncClientTest : public testing::Test {
protected:
    SyncClientTest() {
        client_.setRetry({.jitter = false});
        client_.setTokenSource([](const std::stop_token&) { return "token"; });
    }

    /// What `operation` ends with.
    template <class Operation>
    static std::string outcome(Operation operation) {
        try {
            operation();
        } catch (const std::exception& error) {
            return error.what();
        }
        return "done";
    }
    std::vector<double> waits() const {
        std::vector<double> seconds;
        for (const Seconds& wait : client_.waits()) {
            seconds.push_back(wait.count());
        }
        return seconds;
    }

    FixedClock clock_{*Instant::parseISO("2026-03-10T10:00:00Z")};
    test::SeededRandom random_{1};
    ScriptedTransport service_;
    SyncClient client_{
        "https://tesserine.test/", {.session = service_, .clock = clock_, .random = random_}};
};

TEST_F(SyncClientTest, EveryOperationIsTheRequestOfTheTable) {
    struct Case {
        std::function<void()> operation;
        const char* request;  // method, path, body, "+" when it carries the token
        const char* reply;
    };
    for (const auto& [operation, request, reply] : std::vector<Case>{
             {[&] { client_.changes(7, 200); },
              "GET v1/sync/changes?since=7&limit=200 +",
              R"({"changes":[],"seq":7,"head":7,"more":false})"},
             {[&] { client_.push({}); },
              R"(POST v1/sync/push {"changes":[]} +)",
              R"({"results":[],"head":7})"},
             {[&] { client_.state(); },
              "GET v1/sync/state +",
              R"({"head":7,"records":1,"tombstones":0})"},
             {[&] { client_.revisions(note); },
              "GET v1/sync/revisions/6f9619ff-8b86-d011-b42d-00cf4fc964ff +",
              R"({"revisions":[]})"},
             {[&] { client_.uploadBlob(bytesOf("abc"), std::string(64, '0'), "image/png"); },
              "PUT v1/blobs/0000000000000000000000000000000000000000000000000000000000000000 abc +",
              "ignored"},
             {[&] { client_.missingBlobs({"aa"}); },
              R"(POST v1/blobs/check {"sha256":["aa"]} +)",
              R"({"missing":[]})"},
             {[&] { client_.blobUsage(); }, "GET v1/blobs +", "{}"},
             {[&] { client_.exchange("c", "Desk"); },
              R"(POST v1/auth/exchange {"code":"c","label":"Desk"})",
              R"({"account":{"id":"1","email":"a@b"},"access_token":"a","refresh_token":"r",)"
              R"("expires_in":60})"},
             {[&] { client_.signOut("r", std::nullopt); },
              R"(POST v1/auth/logout {"refresh_token":"r"})",
              ""},
             {[&] { client_.signOut("r", "a"); },
              R"(POST v1/auth/logout {"refresh_token":"r"} +)",
              ""},
             {[&] { client_.sessions(); }, "GET v1/auth/sessions +", R"({"sessions":[]})"},
             {[&] { client_.revokeSession("a/../b?c"); },
              "POST v1/auth/sessions/a%2F..%2Fb%3Fc/revoke +",
              ""},
             {[&] { client_.revokeShare(note); },
              "DELETE v1/notes/6f9619ff-8b86-d011-b42d-00cf4fc964ff/share +",
              ""},
             {[&] { client_.apiTokens(); }, "GET v1/api-tokens +", R"({"tokens":[]})"},
             {[&] { client_.revokeAPIToken(".."); }, "DELETE v1/api-tokens/%2E%2E +", ""},
         }) {
        service_.say({HTTPReply{.status = 200, .body = reply}});
        EXPECT_EQ(outcome(operation), "done") << request;
        ASSERT_EQ(service_.requests.size(), 1U) << request;
        const HTTPRequest& sent = service_.requests.front();
        constexpr std::string_view base = "https://tesserine.test/api/";
        ASSERT_TRUE(sent.url.starts_with(base)) << sent.url;
        std::string line = sent.method + " " + sent.url.substr(base.size());
        if (sent.body) line += " " + *sent.body;
        if (headerOf(sent, "Authorization").starts_with("Bearer ")) line += " +";
        EXPECT_EQ(line, request);
        EXPECT_EQ(headerOf(sent, "Accept"), "application/json");
    }
    EXPECT_EQ(client_.liveChannelURL(), "wss://tesserine.test/api/v1/sync/socket");
}

TEST_F(SyncClientTest, RetriesWaitAsTheServerAsksOrLongerEachTime) {
    const HTTPReply fine{.status = 200, .body = R"({"head":1,"records":1,"tombstones":0})"};
    const auto busy = [](const char* retryAfter) {
        return HTTPReply{.status = 503, .headers = {{"retry-after", retryAfter}}};
    };
    struct Case {
        std::vector<ScriptedTransport::Answer> script;
        std::vector<double> waits;
        const char* outcome;
    };
    const char* const offline =
        "Tesserine could not reach the server. Your notes are safe on this device and will sync "
        "when you are back online.";
    using Kind = HTTPError::Kind;
    for (const auto& [script, expected, end] : std::vector<Case>{
             {{busy("5"), fine}, {5}, "done"},
             {{busy("600"), fine}, {60}, "done"},
             {{busy("Tue, 10 Mar 2026 10:00:05 GMT"), fine}, {5}, "done"},
             {{HTTPReply{.status = 500}, fine}, {0.5}, "done"},
             {{HTTPReply{.status = 502}}, {0.5, 1, 2, 4, 8}, "The server returned an error (502)."},
             {{Kind::unreachable, HTTPReply{.status = 429}, fine}, {0.5, 1}, "done"},
             {{Kind::untrusted}, {0.5, 1, 2, 4, 8}, offline},
             {{HTTPReply{.status = 404}}, {}, "The server returned an error (404)."},
             {{HTTPReply{.status = 401, .body = R"({"detail":"Expired."})"}},
              {},
              "Your Tesserine session has ended. Sign in again to keep syncing."},
             {{Kind::tooLarge},
              {},
              "The server sent something Tesserine could not read (scripted)."},
             {{HTTPReply{.status = 200, .body = "<html>"}},
              {},
              "The server sent something Tesserine could not read (not the expected JSON)."},
         }) {
        SyncClient client(
            "https://tesserine.test", {.session = service_, .clock = clock_, .random = random_});
        client.setRetry({.jitter = false});
        client.setTokenSource([](const std::stop_token&) { return "token"; });
        clock_.set(*Instant::parseISO("2026-03-10T10:00:00Z"));
        service_.say(script);
        EXPECT_EQ(outcome([&] { client.state(); }), end);
        std::vector<double> waited;
        for (const Seconds& wait : client.waits()) {
            waited.push_back(wait.count());
        }
        EXPECT_EQ(waited, expected) << end;
        EXPECT_EQ(service_.requests.size(), expected.size() + 1);
    }
}

TEST_F(SyncClientTest, WhatMayHaveBeenDoneIsNotRepeatedAfterA500) {
    service_.say({HTTPReply{.status = 500}});
    EXPECT_EQ(outcome([&] { client_.push({}); }), "The server returned an error (500).");
    EXPECT_EQ(outcome([&] { client_.refresh("r"); }), "The server returned an error (500).");
    EXPECT_EQ(outcome([&] { client_.createShare(note); }), "The server returned an error (500).");
    EXPECT_EQ(service_.requests.size(), 3U);
    EXPECT_FALSE(service_.requests[0].isRepeatable);
    outcome([&] { client_.missingBlobs({}); });
    EXPECT_EQ(service_.requests.size(), 9U);
}

TEST_F(SyncClientTest, OnlyTheLastFiftyWaitsAreRemembered) {
    service_.say({HTTPReply{.status = 503, .headers = {{"Retry-After", "1"}}}});
    outcome([&] { client_.state(); });
    service_.say({HTTPReply{.status = 503, .headers = {{"Retry-After", "2"}}}});
    for (int i = 0; i < 9; ++i) {
        outcome([&] { client_.state(); });
    }
    EXPECT_EQ(waits().size(), 50U);
    EXPECT_EQ(waits().front(), 1);
    outcome([&] { client_.state(); });
    EXPECT_EQ(waits(), std::vector<double>(50, 2));
}

TEST_F(SyncClientTest, TheTokenNeverFollowsARedirectToAnotherPlace) {
    struct Case {
        const char* location;
        int status;
        bool isFollowed;
    };
    for (const auto& [location, status, isFollowed] : {
             Case{"https://tesserine.test/api/v2/state", 302, true},
             Case{"/api/v2/state", 308, true},
             Case{"https://TESSERINE.test:443/x", 301, true},
             Case{"http://tesserine.test/api/v2/state", 302, false},
             Case{"https://tesserine.test:8443/x", 302, false},
             Case{"https://tesserine.test.evil.example/x", 302, false},
             Case{"//evil.example/x", 302, false},
             Case{"https://tesserine.test@evil.example/x", 302, false},
             Case{"https://user@tesserine.test/x", 302, false},
         }) {
        SCOPED_TRACE(location);
        service_.say(
            {HTTPReply{.status = status, .headers = {{"Location", location}}},
             HTTPReply{.status = 200, .body = R"({"head":1,"records":1,"tombstones":0})"}});
        EXPECT_EQ(
            outcome([&] { client_.state(); }),
            isFollowed ? "done"
                       : "The server sent something Tesserine could not read (redirected).");
        EXPECT_EQ(service_.requests.size(), isFollowed ? 2U : 1U);
    }
    const HTTPReply round{.status = 302, .headers = {{"Location", "/again"}}};
    service_.say({round});
    EXPECT_NE(outcome([&] { client_.state(); }), "done");
    EXPECT_EQ(service_.requests.size(), 6U);
    service_.say({round});
    EXPECT_NE(outcome([&] { client_.push({}); }), "done");
    EXPECT_EQ(service_.requests.size(), 1U);
}

TEST_F(SyncClientTest, BlobRequestsKeepTheirDistanceAndTheirAddresses) {
    service_.say({HTTPReply{.status = 200}});
    const auto start = clock_.monotonic();
    for (int i = 0; i < 3; ++i) {
        client_.downloadBlob(digest);
    }
    EXPECT_EQ(clock_.monotonic() - start, std::chrono::milliseconds(100));
    EXPECT_TRUE(waits().empty());
    EXPECT_TRUE(service_.requests[0].url.ends_with("/" + std::string(64, 'a')));

    for (const std::string& bad : {std::string(), std::string(63, 'a'), "../" + digest.substr(3)}) {
        EXPECT_EQ(
            outcome([&] { client_.downloadBlob(bad); }),
            "The server sent something Tesserine could not read (bad blob address).");
    }
    EXPECT_EQ(service_.requests.size(), 3U);
}

TEST_F(SyncClientTest, DeletingABlobTellsWhatBecameOfIt) {
    using Outcome = BlobDeletion::Outcome;
    struct Case {
        HTTPReply reply;
        Outcome outcome;
    };
    for (const auto& [reply, expected] : {
             Case{{.status = 200, .body = R"({"freed":5})"}, Outcome::deleted},
             Case{{.status = 404}, Outcome::wasGone},
             Case{{.status = 409, .body = R"({"error":{"references":["n"]}})"}, Outcome::inUse},
             Case{{.status = 409, .body = R"({"error":{"code":"indexing"}})"}, Outcome::later},
             Case{{.status = 503}, Outcome::later},
         }) {
        service_.say({reply});
        EXPECT_EQ(client_.deleteBlob(digest).outcome, expected) << reply.status;
    }
    service_.say({HTTPReply{.status = 403}});
    EXPECT_EQ(outcome([&] { client_.deleteBlob(digest); }), "The server returned an error (403).");
}

TEST_F(SyncClientTest, OnlyOverwrittenRevisionsAreReturned) {
    service_.say({HTTPReply{
        .status = 200,
        .body = R"({"revisions":[{"kind":"note","reason":"daily","updated_at":)"
                R"("2026-01-01T00:00:00Z","payload":{}},{"kind":"note","reason":"overwritten",)"
                R"("updated_at":"2026-01-02T00:00:00Z","payload":{"title":"a"}}]})"}});
    const auto revisions = client_.revisions(note);
    ASSERT_EQ(revisions.size(), 1U);
    EXPECT_EQ(revisions[0].id, note);
    EXPECT_EQ(revisions[0].payload, (JSONObject{{"title", "a"}}));
}

TEST_F(SyncClientTest, AFailingTokenSourceIsAskedOnce) {
    int asked = 0;
    client_.setTokenSource([&](const std::stop_token&) -> std::string {
        ++asked;
        throw SyncError::offline();
    });
    EXPECT_NE(outcome([&] { client_.state(); }), "done");
    EXPECT_EQ(asked, 1);
    EXPECT_TRUE(service_.requests.empty());
}

TEST_F(SyncClientTest, StoppingEndsAWaitAndTheCall) {
    const SystemClock real;
    SyncClient client(
        "https://tesserine.test", {.session = service_, .clock = real, .random = random_});
    client.setTokenSource([](const std::stop_token&) { return "token"; });
    service_.say({HTTPReply{.status = 503, .headers = {{"Retry-After", "60"}}}});
    std::jthread caller(
        [&](const std::stop_token& stop) { EXPECT_THROW(client.state(stop), OperationCancelled); });
    while (client.waits().empty()) {
        std::this_thread::yield();
    }
    caller.request_stop();
}

TEST(SyncClientAddress, AServiceWithoutAWebAddressIsABadPath) {
    const SystemClock clock;
    test::SeededRandom random(1);
    ScriptedTransport service({HTTPError::Kind::badRequest});
    SyncClient client("nowhere", {.session = service, .clock = clock, .random = random});
    client.setTokenSource([](const std::stop_token&) { return "token"; });
    try {
        client.push({});
        ADD_FAILURE();
    } catch (const SyncError& error) {
        EXPECT_STREQ(
            error.what(),
            "The server sent something Tesserine could not read (bad path v1/sync/push).");
    }
}

}  // namespace
}  // namespace tesserine
