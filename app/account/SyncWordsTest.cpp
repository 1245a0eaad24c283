#include "app/account/SyncWords.h"

#include "base/Calendar.h"

#include <gtest/gtest.h>

namespace tesserine::app {
namespace {

using Phase = SyncState::Phase;

Instant at(const char* iso) { return *Instant::parseISO(iso); }

TEST(SyncWords, SayWhatSyncDoesAndWhenItTriesAgain) {
    const Calendar calendar("Europe/Lisbon", 2);
    const Instant now = at("2026-07-14T09:00:00Z");  // 10:00 in Lisbon
    struct Case {
        SyncState state;
        const char* title;
        const char* detail;
        Ink ink = Ink::secondary;
    };
    for (const auto& [state, title, detail, ink] : {
             Case{{.phase = Phase::off}, "Not set up", ""},
             Case{{.phase = Phase::starting}, "Starting…", "Nothing has been synced yet."},
             Case{
                 {.phase = Phase::syncing, .lastSync = at("2026-07-13T22:30:00Z")},
                 "Syncing…",
                 "Last sync: Yesterday 23:30",
                 Ink::accent},
             Case{
                 {.phase = Phase::idle, .lastSync = at("2026-07-14T08:59:00Z")},
                 "In step",
                 "Last sync: Today 09:59"},
             Case{
                 {.phase = Phase::offline,
            .sentence = "No way.",
            .until = at("2026-07-14T09:15:00Z")},
                 "Offline until 10:15",
                 "No way."},
             Case{{.phase = Phase::offline, .sentence = "No way."}, "Offline", "No way."},
             Case{
                 {.phase = Phase::waiting,
            .sentence = "Full.",
            .until = at("2026-07-14T23:05:00Z")},
                 "Sync waits until 00:05",
                 "Full.",
                 Ink::warning},
             Case{
                 {.phase = Phase::asking, .sentence = "Delete them?"},
                 "Sync has a question",
                 "Delete them?",
                 Ink::warning},
             Case{
                 {.phase = Phase::signedOut, .sentence = "The session has ended."},
                 "Signed out",
                 "The session has ended.",
                 Ink::warning},
             Case{{.phase = Phase::signedOut}, "Signed out", ""},  // the user wanted it so
         }) {
        const SyncWords words = SyncWords::of(state, now, calendar);
        EXPECT_EQ(words.title.toStdString(), title);
        EXPECT_EQ(words.detail.toStdString(), detail) << title;
        EXPECT_EQ(words.ink, ink) << title;
    }
}

}  // namespace
}  // namespace tesserine::app
