#pragma once

#include "app/state/SyncControl.h"
#include "app/state/WindowFixture.h"
#include "base/OperationCancelled.h"
#include "sync/SyncService.h"
#include "tests/fakeserver/FakeSyncServer.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace tesserine::test {

/// The machine's clock, whose hands a test may move on.
class MovedClock final : public Clock {
public:
    Instant now() const override { return machine_.now() + ahead_.load(); }
    std::chrono::nanoseconds monotonic() const override { return machine_.monotonic(); }
    bool sleep(std::chrono::nanoseconds duration, std::stop_token stop) const override {
        return machine_.sleep(duration, std::move(stop));
    }
    void advance(Instant::Duration by) { ahead_ = ahead_.load() + by; }

private:
    const SystemClock machine_;
    std::atomic<Instant::Duration> ahead_ = Instant::Duration(0);
};

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

/// The live channel of a service in memory; closed until a test opens it.
class LiveLine {
public:
    void listen(const WebSocketHandler& handler, const std::stop_token& stop) {
        if (!isOpen) throw WebSocketError(WebSocketError::Kind::unreachable, "no live news");
        ++openings;
        handler.opened();
        for (;;) {
            std::unique_lock lock(mutex_);
            came_.wait(lock, stop, [this] { return !message_.empty(); });
            if (stop.stop_requested()) throw OperationCancelled();
            const std::string message = std::exchange(message_, {});
            lock.unlock();
            handler.received(message);
        }
    }
    void tell(const std::string& message) {
        const std::scoped_lock lock(mutex_);
        message_ = message;
        came_.notify_all();
    }

    std::atomic<bool> isOpen = false;
    std::atomic<int> openings = 0;

private:
    std::mutex mutex_;
    std::condition_variable_any came_;
    std::string message_;
};

/// A window's environment with a service in memory to sync with, which it looks at twenty times a
/// second.
class SyncFixture : public WindowFixture {
public:
    static constexpr const char* callback = "tesserine://auth?code=abc";

    SyncFixture() {
        app::AppSetting given = setting();
        given.serviceURL = "https://notes.example.org";
        given.realClock = &realClock;
        given.network = &server;
        given.socket = [this](const auto&, const auto& handler, const auto& stop) {
            live.listen(handler, stop);
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

    MovedClock realClock;
    FakeSyncServer server;
    LiveLine live;
    LockableSecrets keyring;
    std::atomic<int> requests = 0;
    std::optional<HTTPReply> failure;  // set it while nothing is asked
};

}  // namespace tesserine::test
