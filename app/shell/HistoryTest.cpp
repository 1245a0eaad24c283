#include "app/shell/History.h"

#include <gtest/gtest.h>

namespace tesserine::app {
namespace {

using Kind = Place::Kind;

Stop at(Kind kind) { return {.place = {kind}}; }

TEST(History, GoesBackAndForwardAndForgetsWhatWasAheadOfANewStep) {
    History history(at(Kind::allNotes));
    EXPECT_FALSE(history.canGoBack());
    history.visit(at(Kind::today));
    history.visit(at(Kind::today));
    history.visit(at(Kind::trash));
    EXPECT_EQ(history.goBack(), at(Kind::today));
    EXPECT_EQ(history.goBack(), at(Kind::allNotes));
    EXPECT_FALSE(history.canGoBack());
    EXPECT_EQ(history.goForward(), at(Kind::today));
    history.visit(at(Kind::inbox));
    EXPECT_FALSE(history.canGoForward());
    EXPECT_EQ(history.goBack(), at(Kind::today));
}

TEST(History, AnotherNoteOfTheListIsNoStepAndVeryOldStopsGo) {
    const Uuid note = *Uuid::parse("0B2F6A54-6C1D-4D5B-9B59-0C5F2B6F1E11");
    History history(at(Kind::allNotes));
    history.replaceNote(note);
    EXPECT_FALSE(history.canGoBack());
    EXPECT_EQ(history.current().note, note);

    for (std::size_t i = 0; i < 2 * History::mostStops; ++i) {
        history.visit(at(i % 2 == 0 ? Kind::today : Kind::inbox));
    }
    std::size_t steps = 0;
    for (; history.canGoBack(); ++steps) {
        history.goBack();
    }
    EXPECT_EQ(steps, History::mostStops - 1);
}

}  // namespace
}  // namespace tesserine::app
