#include "server/Service.h"

#include "base/Digest.h"
#include "base/JSON.h"
#include "sync/SyncClient.h"
#include "tests/support/SeededRandom.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace tesserine::server {
namespace {

/// The service without sockets, asked by the program's own client.
class ServiceTest : public testing::Test, public HTTPTransport {
protected:
    ServiceTest() { service_.accounts().setPassword("Anna@Example.org", "correct horse"); }

    HTTPReply send(const HTTPRequest& request, const std::stop_token& /*stop*/) override {
        HTTPRequest arriving = request;
        arriving.url = request.url.substr(std::string("https://service.test").size());
        return service_.answer(arriving, "192.0.2.1");
    }
    HTTPReply get(const std::string& path) {
        return service_.answer({.method = "GET", .url = path}, "192.0.2.1");
    }
    HTTPReply submit(const std::string& password) {
        return service_.answer(
            {.method = "POST",
             .url = "/api/v1/auth/google/start?flow=app",
             .body = "email=anna%40example.org&password=" + password},
            "192.0.2.1");
    }
    std::string code() {
        const HTTPReply page = submit("correct+horse");
        const std::string* const refresh = page.header("Refresh");
        return refresh == nullptr ? "" : refresh->substr(refresh->find("code=") + 5);
    }
    /// A client of a device that has just signed in.
    std::unique_ptr<SyncClient> device() {
        auto client = client_();
        const TokenResponse tokens = client->exchange(code(), "Desk");
        client->setTokenSource([tokens](const std::stop_token&) { return tokens.accessToken; });
        return client;
    }
    std::unique_ptr<SyncClient> clientWith(const std::string& token) {
        auto client = client_();
        client->setTokenSource([token](const std::stop_token&) { return token; });
        return client;
    }
    template <class Operation>
    static std::string outcome(Operation operation) {
        try {
            operation();
            return "done";
        } catch (const SyncError& error) {
            return error.what();
        }
    }
    static SyncPush note(std::int64_t base, const std::string& title) {
        return {
            .id = *Uuid::parse("6F9619FF-8B86-D011-B42D-00CF4FC964FF"),
            .kind = "note",
            .baseRev = base,
            .payload = {{"title", title}, {"html", "<p>Hi<script>x()</script></p>"}}};
    }

    test::TemporaryFolder folder_;
    FixedClock clock_{*Instant::parseISO("2026-03-14T09:15:00Z")};
    test::SeededRandom random_{1};
    Service service_{
        {.folder = folder_.path() / "data",
         .publicURL = "https://service.test",
         .quotas = {.records = 3'000, .files = 100, .record = 1'000},
         .passwordRounds = 1},
        {.clock = clock_, .random = random_}};

private:
    std::unique_ptr<SyncClient> client_() {
        auto client = std::make_unique<SyncClient>(
            "https://service.test",
            SyncClient::Environment{.session = *this, .clock = clock_, .random = random_});
        client->setRetry({.attempts = 0});
        return client;
    }
};

constexpr const char* signedOut =
    "Your Tesserine session has ended. Sign in again to keep syncing.";

TEST_F(ServiceTest, SigningInTakesTheRightPasswordAndACodeWorksOnce) {
    const HTTPReply again = submit("wrong");
    EXPECT_EQ(again.status, 403);
    EXPECT_NE(again.body.find("value=\"anna@example.org\""), std::string::npos);
    EXPECT_EQ(again.body.find("wrong"), std::string::npos) << "the password stays unsaid";
    const std::string first = code();
    ASSERT_EQ(first.size(), 64U);
    auto client = clientWith("");
    const char* const spent = "That code is not valid any more. Sign in again.";
    const TokenResponse tokens = client->exchange(first, "Desk");
    EXPECT_EQ(tokens.account.email, "anna@example.org");
    EXPECT_EQ(outcome([&] { client->exchange(first, "Desk"); }), spent);
    const std::string late = code();
    clock_.advance(std::chrono::seconds(301));
    EXPECT_EQ(outcome([&] { client->exchange(late, "Desk"); }), spent);
}

TEST_F(ServiceTest, GuessingIsStoppedEvenForTheRightPassword) {
    for (int i = 0; i < 10; ++i) {
        submit("wrong");
    }
    EXPECT_EQ(submit("correct+horse").status, 403);
    clock_.advance(std::chrono::minutes(16));
    EXPECT_EQ(submit("correct+horse").status, 200);
}

TEST_F(ServiceTest, ARefreshTokenSurvivesALostAnswerAndEndsWithItsSession) {
    auto client = clientWith("");
    const TokenResponse first = client->exchange(code(), "Desk");
    client->refresh(first.refreshToken);  // this answer is lost
    const TokenResponse second = client->refresh(first.refreshToken);
    const TokenResponse third = client->refresh(second.refreshToken);
    EXPECT_EQ(outcome([&] { client->refresh(first.refreshToken); }), signedOut);
    EXPECT_EQ(outcome([&] { clientWith(third.accessToken)->state(); }), "done");
    client->signOut(third.refreshToken, std::nullopt);
    EXPECT_EQ(outcome([&] { client->refresh(third.refreshToken); }), signedOut);
    EXPECT_EQ(outcome([&] { clientWith(third.accessToken)->state(); }), signedOut);
}

TEST_F(ServiceTest, AnAccessTokenEndsAfterAnHour) {
    const auto client = device();
    EXPECT_EQ(outcome([&] { client->state(); }), "done");
    clock_.advance(std::chrono::seconds(3601));
    EXPECT_EQ(outcome([&] { client->state(); }), signedOut);
}

TEST_F(ServiceTest, AChangeOnAnOldRevisionGetsThePresentOneInstead) {
    const auto client = device();
    EXPECT_EQ(client->push({note(0, "one")}).results.at(0).status, "applied");
    EXPECT_EQ(client->push({note(0, "one")}).results.at(0).status, "applied") << "sent again";
    EXPECT_EQ(client->push({note(1, "two")}).results.at(0).rev, 2);
    const PushResult stale = client->push({note(1, "three")}).results.at(0);
    EXPECT_EQ(stale.status, "superseded");
    EXPECT_EQ(stale.server->payload.at("title"), JSONValue("two"));

    const ChangesResponse page = client->changes(0, 200);
    ASSERT_EQ(page.changes.size(), 1U);
    EXPECT_EQ(page.changes[0].seq, page.head);
    EXPECT_FALSE(page.more);
    EXPECT_TRUE(client->changes(page.seq, 200).changes.empty());
}

TEST_F(ServiceTest, LimitsAreToldInBytes) {
    const auto client = device();
    SyncPush large = note(0, std::string(1'000, 'x'));
    EXPECT_EQ(client->push({large}).results.at(0).reason, "too_large");
    for (int i = 0; i < 3; ++i) {
        SyncPush one = note(0, std::string(850, 'x'));
        one.id = Uuid::random(random_);
        EXPECT_EQ(client->push({one}).results.at(0).status, "applied");
    }
    const PushResult full = client->push({note(0, std::string(850, 'x'))}).results.at(0);
    EXPECT_EQ(full.reason, "quota");
    EXPECT_EQ(full.limit, 3'000);

    const std::string data(101, 'x');
    EXPECT_NE(
        outcome([&] {
            client->uploadBlob(bytesOf(data), sha256Hex(bytesOf(data)), "a/b");
        }).find("storage is full"),
        std::string::npos);
}

TEST_F(ServiceTest, FilesAreCheckedCountedAndKeptWhileInUse) {
    const auto client = device();
    const std::string digest = sha256Hex(bytesOf("picture"));
    SyncPush file{
        .id = Uuid::random(random_), .kind = "attachment", .payload = {{"sha256", digest}}};
    EXPECT_EQ(client->push({file}).results.at(0).reason, "missing_attachment");
    EXPECT_EQ(
        outcome([&] { client->uploadBlob(bytesOf("other"), digest, "a/b"); }),
        "The file was damaged on its way.");
    client->uploadBlob(bytesOf("picture"), digest, "a/b");
    EXPECT_EQ(client->missingBlobs({digest, std::string(64, '0')}).size(), 1U);
    EXPECT_EQ(client->blobUsage().bytes, 7);
    EXPECT_EQ(client->push({file}).results.at(0).status, "applied");
    EXPECT_EQ(client->deleteBlob(digest).outcome, BlobDeletion::Outcome::inUse);
    file.deleted = true;
    file.baseRev = 1;
    client->push({file});
    EXPECT_EQ(client->deleteBlob(digest).freed, 7);
    EXPECT_EQ(outcome([&] { client->downloadBlob(digest); }), "There is no such file.");
}

TEST_F(ServiceTest, NobodyReadsWhatIsAnothers) {
    const auto anna = device();
    anna->push({note(0, "private")});
    const std::string digest = sha256Hex(bytesOf("picture"));
    anna->uploadBlob(bytesOf("picture"), digest, "a/b");
    service_.accounts().setPassword("ben@example.org", "battery");
    auto ben = clientWith("");
    const auto code = service_.accounts().signIn("ben@example.org", "battery");
    const TokenResponse tokens = ben->exchange(*code, "Phone");
    ben = clientWith(tokens.accessToken);
    EXPECT_TRUE(ben->changes(0, 200).changes.empty());
    EXPECT_TRUE(ben->revisions(note(0, "").id).empty());
    EXPECT_EQ(outcome([&] { ben->downloadBlob(digest); }), "There is no such file.");
    EXPECT_EQ(
        outcome([&] { ben->createShare(note(0, "").id); }), "Sync the note first, then share it.");
    const auto device = DeviceSessionInfo::from(anna->sessions().at(0));
    EXPECT_EQ(outcome([&] { ben->revokeSession(device->id); }), "That device is not signed in.");
    EXPECT_EQ(outcome([&] { clientWith("guess")->state(); }), signedOut);
}

TEST_F(ServiceTest, SharedNotesAreReadOnlyPagesWithoutScripts) {
    const auto client = device();
    client->push({note(0, "A <b> title")});
    const ShareLink link = client->createShare(note(0, "").id);
    const std::string path = link.url.substr(std::string("https://service.test").size());
    const HTTPReply page = get(path);
    EXPECT_EQ(page.status, 200);
    EXPECT_NE(page.body.find("<h1>A &lt;b&gt; title</h1><p>Hi</p>"), std::string::npos);
    EXPECT_EQ(page.body.find("script"), std::string::npos);
    EXPECT_TRUE(client->shareStatus(note(0, "").id).shared);
    client->revokeShare(note(0, "").id);
    EXPECT_EQ(get(path).status, 404);
    EXPECT_EQ(get("/shared/" + std::string(64, '0')).status, 404);
}

TEST_F(ServiceTest, APersonalTokenReadsAndWritesNotesAndNothingElse) {
    const auto client = device();
    const APITokenCreated token = client->createAPIToken("Script");
    const auto script = clientWith(token.token);
    EXPECT_EQ(outcome([&] { script->push({note(0, "by script")}); }), "done");
    const char* const refused = "A personal API token may not do that.";
    EXPECT_EQ(outcome([&] { script->createAPIToken("More"); }), refused);
    EXPECT_EQ(outcome([&] { script->sessions(); }), refused);
    EXPECT_EQ(outcome([&] { script->createShare(note(0, "").id); }), refused);
    client->revokeAPIToken(client->apiTokens().at(0).id);
    EXPECT_EQ(outcome([&] { script->state(); }), signedOut);
}

TEST_F(ServiceTest, WhoAsksTooOftenIsToldHowLongToWait) {
    const auto client = device();
    const auto stranger = clientWith(client->createAPIToken("Script").token);
    const auto waitOf = [](SyncClient& asking) -> std::optional<Seconds> {
        try {
            asking.state();
            return std::nullopt;
        } catch (const SyncError& error) {
            EXPECT_EQ(error.problem().status, 429);
            return error.problem().retryAfter;
        }
    };
    for (int i = 0; i < 499; ++i) {  // the token was used once before
        ASSERT_EQ(waitOf(*client), std::nullopt) << i;
    }
    EXPECT_EQ(waitOf(*client), Seconds(1));
    EXPECT_EQ(waitOf(*stranger), std::nullopt) << "another token";
    clock_.advance(std::chrono::seconds(1));
    for (int i = 0; i < 50; ++i) {
        ASSERT_EQ(waitOf(*client), std::nullopt) << i;
    }
    EXPECT_EQ(waitOf(*client), Seconds(1));

    int answered = 0;
    while (answered < 3'000 && get("/nowhere").status == 404) {
        ++answered;
    }
    EXPECT_LT(answered, 2'000) << "one address";
    EXPECT_EQ(service_.answer({.method = "GET", .url = "/nowhere"}, "192.0.2.2").status, 404);
}

TEST_F(ServiceTest, ABodyIsReadOnlyOfThoseWhoMaySendIt) {
    const auto client = device();
    const std::string token = client->createAPIToken("Script").token;
    const auto limitFor =
        [&](const std::string& method, const std::string& path, const std::string& authorization) {
            std::size_t asked = 0;
            service_.answer(
                {.method = method,
                 .url = "/api/v1/" + path,
                 .headers = {{"Authorization", authorization}}},
                "192.0.2.1",
                [&asked](std::size_t limit) -> std::optional<std::string> {
                    asked = limit;
                    return std::nullopt;
                });
            return asked;
        };
    const std::string file = "blobs/" + std::string(64, '0');
    EXPECT_EQ(limitFor("PUT", file, "Bearer guess"), 0U);
    EXPECT_EQ(limitFor("POST", "sync/push", ""), 0U);
    EXPECT_EQ(limitFor("POST", "nowhere", "Bearer " + token), 0U);
    EXPECT_EQ(limitFor("PUT", file, "Bearer " + token), 100'000'000U);
    EXPECT_EQ(limitFor("POST", "sync/push", "Bearer " + token), 2'000U);
    EXPECT_EQ(limitFor("POST", "auth/refresh", ""), 65'536U);
}

TEST_F(ServiceTest, NonsenseIsRefusedAndNeverThrows) {
    const auto client = device();
    for (const char* path :
         {"", "/", "//", "/api/v1/sync/changes", "/api/v1/blobs/..%2F..", "/shared/", "?", "/%"}) {
        EXPECT_GE(get(path).status, 400) << path;
    }
    const std::string token = client->createAPIToken("Script").token;
    for (const char* body : {"", "[]", "{}", R"({"changes":{}})", R"({"changes":[{}]})", "{"}) {
        const HTTPReply reply = service_.answer(
            {.method = "POST",
             .url = "/api/v1/sync/push",
             .headers = {{"Authorization", "Bearer " + token}},
             .body = body},
            "192.0.2.1");
        EXPECT_EQ(reply.status, 400) << body;
    }
}

}  // namespace
}  // namespace tesserine::server
