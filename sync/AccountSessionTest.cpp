#include "sync/AccountSession.h"

#include "sync/ScriptedTransportFixture.h"
#include "sync/SyncClient.h"
#include "tests/support/SeededRandom.h"

#include <gtest/gtest.h>

#include <functional>
#include <latch>
#include <thread>
#include <utility>

namespace tesserine {
namespace {

HTTPReply tokens(const std::string& suffix, int lifetime = 3600, const std::string& account = "1") {
    return {
        .status = 200,
        .body = R"({"account":{"id":")" + account + R"(","email":"a@b.c"},"access_token":"access)"
                + suffix + R"(","refresh_token":"refresh)" + suffix + R"(","expires_in":)"
                + std::to_string(lifetime) + "}"};
}

/// A store that can be out of reach.
class FlakySecrets final : public SecretStore {
public:
    std::optional<std::string> read(const std::string& name) override {
        return reached().read(name);
    }
    void write(const std::string& name, const std::string& secret) override {
        reached().write(name, secret);
    }
    void remove(const std::string& name) override {
        if (const auto meanwhile = std::exchange(beforeRemoval, {})) meanwhile();
        reached().remove(name);
    }

    bool isReachable = true;
    std::function<void()> beforeRemoval;
    InMemorySecrets secrets;

private:
    SecretStore& reached() {
        if (!isReachable) throw KeychainError("locked");
        return secrets;
    }
};

class AccountSessionTest : public testing::Test {
protected:
    AccountSessionTest() { client_.setRetry({.attempts = 0}); }

    std::string token() {
        try {
            return session_.validAccessToken();
        } catch (const SyncError& error) {
            switch (error.kind()) {
            case SyncError::Kind::signedOut: return "signed out";
            case SyncError::Kind::keychainUnavailable: return "no keychain";
            default: return error.what();
            }
        }
    }
    std::string stored() { return secrets_.secrets.read("refresh-token").value_or("none"); }
    void signIn(int lifetime = 3600) {
        service_.say({tokens("0", lifetime)});
        session_.completeSignIn("code", "Desk");
    }

    FixedClock clock_{*Instant::parseISO("2026-03-10T10:00:00Z")};
    test::SeededRandom random_{1};
    ScriptedTransport service_;
    SyncClient client_{
        "https://tesserine.test", {.session = service_, .clock = clock_, .random = random_}};
    FlakySecrets secrets_;
    AccountSession session_{{.client = client_, .secrets = secrets_, .clock = clock_}};
};

TEST_F(AccountSessionTest, ATokenIsUsedUntilItsLastMinute) {
    EXPECT_EQ(token(), "signed out");
    signIn(100);
    service_.say({tokens("1")});
    clock_.advance(Instant::Duration(39));
    EXPECT_EQ(token(), "access0");
    clock_.advance(Instant::Duration(1));
    EXPECT_EQ(token(), "access1");
    EXPECT_EQ(stored(), "refresh1");
    EXPECT_EQ(*service_.requests.at(0).body, R"({"refresh_token":"refresh0"})");
    EXPECT_EQ(session_.account()->email, "a@b.c");
}

TEST_F(AccountSessionTest, AnotherStartKnowsTheAccountAndRefreshesFirst) {
    signIn();
    AccountSession next({.client = client_, .secrets = secrets_, .clock = clock_});
    EXPECT_EQ(next.account()->id, "1");
    service_.say({tokens("1")});
    EXPECT_EQ(next.validAccessToken(), "access1");
}

TEST_F(AccountSessionTest, SeveralCallersCauseOneRefresh) {
    signIn(10);
    service_.say({tokens("1")});
    std::latch together(4);
    std::vector<std::jthread> callers;
    for (int i = 0; i < 4; ++i) {
        callers.emplace_back([&] {
            together.arrive_and_wait();
            EXPECT_EQ(token(), "access1");
        });
    }
    callers.clear();
    EXPECT_EQ(service_.requests.size(), 1U);
}

TEST_F(AccountSessionTest, AStoreOutOfReachSignsNobodyOut) {
    signIn(10);
    secrets_.isReachable = false;
    service_.say({tokens("1", 10)});
    EXPECT_EQ(token(), "no keychain");
    EXPECT_TRUE(service_.requests.empty());

    secrets_.isReachable = true;
    EXPECT_EQ(token(), "access1");
}

TEST_F(AccountSessionTest, ANewTokenThatCannotBeStoredIsKeptAndStoredLater) {
    signIn(10);
    class ReadOnly final : public SecretStore {
    public:
        explicit ReadOnly(SecretStore& under) : under_(under) {}
        std::optional<std::string> read(const std::string& name) override {
            return under_.read(name);
        }
        void write(const std::string& name, const std::string& secret) override {
            if (isLocked) throw KeychainError("locked");
            under_.write(name, secret);
        }
        void remove(const std::string& name) override { under_.remove(name); }
        bool isLocked = true;

    private:
        SecretStore& under_;
    } store(secrets_.secrets);
    AccountSession session({.client = client_, .secrets = store, .clock = clock_});
    service_.say({tokens("1", 10), tokens("2")});
    EXPECT_EQ(session.validAccessToken(), "access1");
    EXPECT_EQ(stored(), "refresh0");
    EXPECT_EQ(session.validAccessToken(), "access2");
    EXPECT_EQ(*service_.requests.at(1).body, R"({"refresh_token":"refresh1"})");
    store.isLocked = false;
    session.validAccessToken();
    EXPECT_EQ(stored(), "refresh2");
}

TEST_F(AccountSessionTest, ARefusedRefreshKeepsTheSecretsAndIsNotRepeated) {
    signIn(10);
    service_.say({HTTPReply{.status = 401}});
    EXPECT_EQ(token(), "signed out");
    EXPECT_EQ(token(), "signed out");
    EXPECT_EQ(service_.requests.size(), 1U);
    EXPECT_EQ(stored(), "refresh0");

    signIn();
    EXPECT_EQ(token(), "access0");
    service_.say({HTTPReply{.status = 500}, tokens("1")});
    session_.invalidateAccessToken();
    EXPECT_EQ(token(), "The server returned an error (500).");
    EXPECT_EQ(token(), "access1");
}

TEST_F(AccountSessionTest, ANewSignInEndsTheFormerSessionOfThisComputer) {
    signIn();
    service_.say({tokens("1"), HTTPError::Kind::unreachable});
    session_.completeSignIn("code", "Desk");
    ASSERT_EQ(service_.requests.size(), 2U);
    EXPECT_EQ(service_.requests.back().url, "https://tesserine.test/api/v1/auth/logout");
    EXPECT_EQ(*service_.requests.back().body, R"({"refresh_token":"refresh0"})");
    EXPECT_EQ(token(), "access1") << "whatever the service says to it";
    EXPECT_EQ(stored(), "refresh1");
}

TEST_F(AccountSessionTest, WhatAnotherProgramOfTheUserRenewedIsTakenOver) {
    signIn(10);
    service_.say({HTTPReply{.status = 401}, tokens("2")});
    EXPECT_EQ(token(), "signed out") << "the other program was a moment faster";
    secrets_.write("refresh-token", "refresh1");
    EXPECT_EQ(token(), "access2");
    EXPECT_EQ(*service_.requests.at(1).body, R"({"refresh_token":"refresh1"})");
}

TEST_F(AccountSessionTest, NothingGoesOnForSomebodyElseWhomAnotherProgramSignedIn) {
    signIn(10);
    secrets_.write("refresh-token", "refresh of another account");
    service_.say({tokens("1", 3600, "2")});
    EXPECT_EQ(token(), "signed out");
    EXPECT_EQ(session_.account()->id, "2") << "so that the library can be asked about";
    EXPECT_EQ(stored(), "refresh1");
    EXPECT_EQ(token(), "access1");
}

TEST_F(AccountSessionTest, SigningOutForgetsEvenWhenTheServiceIsSilent) {
    signIn();
    service_.say({HTTPError::Kind::unreachable});
    session_.signOut();
    EXPECT_EQ(headerOf(service_.requests.at(0), "Authorization"), "Bearer access0");
    EXPECT_EQ(stored(), "none");
    EXPECT_EQ(session_.account(), std::nullopt);
    EXPECT_EQ(token(), "signed out");
}

TEST_F(AccountSessionTest, WhoAsksDuringASignOutDoesNotUndoIt) {
    signIn();
    service_.say({HTTPReply{.status = 204}, tokens("9")});
    secrets_.beforeRemoval = [this] {
        EXPECT_TRUE(session_.account().has_value()) << "the store still knows";
        EXPECT_EQ(token(), "access9");
    };
    session_.signOut();
    EXPECT_FALSE(session_.account().has_value());
    EXPECT_EQ(token(), "signed out");
    EXPECT_EQ(stored(), "none");
}

TEST_F(AccountSessionTest, OnlyACallbackThatSomebodyWaitsForSignsIn) {
    service_.say({tokens("0")});
    EXPECT_FALSE(session_.handleCallback("tesserine://auth?code=evil", "Desk"));
    EXPECT_EQ(session_.beginSignIn(), "https://tesserine.test/api/v1/auth/google/start?flow=app");
    clock_.advance(std::chrono::minutes(11));
    EXPECT_FALSE(session_.handleCallback("tesserine://auth?code=late", "Desk"));
    session_.beginSignIn();
    EXPECT_FALSE(session_.handleCallback("tesserine://note/1", "Desk"));
    EXPECT_TRUE(service_.requests.empty());
    EXPECT_TRUE(session_.handleCallback("tesserine://auth?code=c", "Desk"));
    EXPECT_EQ(*service_.requests.at(0).body, R"({"code":"c","label":"Desk"})");
    EXPECT_FALSE(session_.handleCallback("tesserine://auth?code=c", "Desk"));

    session_.beginSignIn();
    EXPECT_THROW(session_.handleCallback("tesserine://auth?error=suspended", "Desk"), SignInError);
    EXPECT_FALSE(session_.handleCallback("tesserine://auth?code=c", "Desk"));
    EXPECT_EQ(stored(), "refresh0");
}

TEST_F(AccountSessionTest, ASignInThatCannotBeStoredIsNone) {
    secrets_.isReachable = false;
    service_.say({tokens("0")});
    EXPECT_THROW(session_.completeSignIn("code", "Desk"), SyncError);
    secrets_.isReachable = true;
    EXPECT_EQ(token(), "signed out");
}

}  // namespace
}  // namespace tesserine
