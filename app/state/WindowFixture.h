#pragma once

#include "app/state/AppEnvironment.h"
#include "base/Clock.h"
#include "base/Random.h"
#include "base/SecretStore.h"
#include "core/model/TaskEntities.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QThread>

#include <functional>
#include <memory>
#include <string>

namespace tesserine::test {

/// A fresh library of its own and the environment of a window on it, on the morning of Saturday,
/// 14 March 2026, in UTC.
class WindowFixture : public ::testing::Test {
public:
    app::AppSetting setting() {
        return {
            .clock = clock,
            .random = random,
            .zone = "UTC",
            .locale = "en_GB",
            .firstWeekday = 2,
            .library = folder / "Library",
            .preferencesFile = folder / "preferences.json",
            .logFile = folder / "tesserine.log",
            .dataFolder = folder / "data",
            .cacheFolder = folder / "cache",
            .patience = std::chrono::milliseconds(0),
            .secrets = &secrets};
    }

    /// Closes the environment and opens another.
    void open(const app::AppSetting& given) {
        environment.reset();
        environment = std::make_unique<app::AppEnvironment>(given);
    }
    StoreContext& context() const { return environment->context(); }

    CDNote& addNote(
        const std::string& title, const std::string& html = "", CDNotebook* notebook = nullptr) {
        CDNote& note = environment->notes().createNote(
            context(), {.title = title, .html = html, .notebook = notebook});
        context().save();
        return note;
    }
    CDTask& addTask(const std::string& sentence) {
        CDTask& task =
            environment->tasks().createFromSentence(context(), sentence, environment->calendar());
        context().save();
        return task;
    }

    /// Lets the event loop run until the condition holds, for at most twenty seconds, which
    /// a busy machine may need; tells whether it does.
    static bool waitUntil(const std::function<bool()>& condition) {
        QElapsedTimer timer;
        timer.start();
        while (!condition()) {
            if (timer.hasExpired(20'000)) return false;
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
            QThread::msleep(1);
        }
        return true;
    }
    /// Handles every event that is waiting, also the deletion of widgets that went.
    static void settle() {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }

    TemporaryFolder folder;
    FixedClock clock{*Instant::parseISO("2026-03-14T09:00:00Z")};
    SecureRandom random;
    InMemorySecrets secrets;
    std::unique_ptr<app::AppEnvironment> environment =
        std::make_unique<app::AppEnvironment>(setting());
};

}  // namespace tesserine::test
