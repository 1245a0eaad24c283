#pragma once

#include "app/state/SyncControl.h"
#include "app/state/WindowFixture.h"
#include "sync/SyncService.h"
#include "tests/fakeserver/FakeSyncServer.h"

#include <atomic>
#include <chrono>
#include <optional>
#include <string>

namespace tesserine::test {

/// A keyring that can be locked.
class LockableSecrets final : public SecretStore {
public:
    std::optional<std::string> read(const std::string& name) override {
        throwIfLocked();
        return kept_.read(name);
    }
    void write(const std::string& name, const std::string& secret) override {
        throwIfLocked();
        kept_.write(name, secret);
    }
    void remove(const std::string& name) override {
        throwIfLocked();
        kept_.remove(name);
    }

    std::atomic<bool> isLocked = false;

private:
    void throwIfLocked() const {
        if (isLocked) throw KeychainError("locked");
    }

    InMemorySecrets kept_;
};

/// A window's environment with a service in memory to sync with, which it looks at twenty times a
/// second.
class SyncFixture : public WindowFixture {
public:
    static constexpr const char* callback = "tesserine://auth?code=abc";

    SyncFixture() {
        app::AppSetting given = setting();
        given.serviceURL = "https://notes.example.org";
        given.network = &server;
        given.socket =
            [](const WebSocketRequest&, const WebSocketHandler&, const std::stop_token&) {
                throw WebSocketError(WebSocketError::Kind::unreachable, "there is none");
            };
        given.socket = [](const auto&, const auto&, const auto&) {
            throw WebSocketError(WebSocketError::Kind::unreachable, "no live news");
        };
        given.secrets = &keyring;
        given.syncInterval = std::chrono::milliseconds(50);
        open(given);
        server.instead = [this](const HTTPRequest& request) -> std::optional<HTTPReply> {
            ++requests;
            return answerInstead(request);
        };
    }
    /// Before the server goes, which the environment uses until its end.
    void TearDown() override {
        closeWidgets();
        environment.reset();
    }
    virtual void closeWidgets() {}

    /// On other threads than the test's.
    virtual std::optional<HTTPReply> answerInstead(const HTTPRequest& /*request*/) {
        return failure;
    }

    app::SyncControl& control() { return environment->syncControl(); }
    bool waitFor(app::SyncState::Phase phase) {
        return waitUntil([&] { return control().state().phase == phase; });
    }
    /// Starts the work and signs in as a browser would.
    void signIn() {
        environment->startWork();
        control().beginSignIn();
        control().takeCallback(callback);
        ASSERT_TRUE(waitFor(app::SyncState::Phase::idle)) << control().state().sentence;
    }

    FakeSyncServer server;
    LockableSecrets keyring;
    std::atomic<int> requests = 0;
    std::optional<HTTPReply> failure;  // set it while nothing is asked
};

}  // namespace tesserine::test
