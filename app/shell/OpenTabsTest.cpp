#include "app/shell/OpenTabs.h"

#include <gtest/gtest.h>

namespace tesserine::app {
namespace {

using Kind = Place::Kind;

const Uuid note = *Uuid::parse("0B2F6A54-1111-4222-8333-444455556666");

TEST(OpenTabs, ComeBackAsTheyWereWritten) {
    const OpenTabs tabs{
        .stops =
            {{.place = {Kind::allNotes}, .note = note},
             {.place = {.kind = Kind::search, .text = "tag:travel two words"}},
             {.place = {Kind::notebook, note}}},
        .chosen = 1};
    const OpenTabs read = OpenTabs::read(tabs.text());
    EXPECT_EQ(read.stops, tabs.stops);
    EXPECT_EQ(read.chosen, 1U);
}

TEST(OpenTabs, LeaveOutWhatSaysNothing) {
    const OpenTabs read = OpenTabs::read("nonsense\n\ntesserine://today nonsense\n> ???\n");
    ASSERT_EQ(read.stops.size(), 1U);
    EXPECT_EQ(read.stops[0], (Stop{.place = {Kind::today}}));
    EXPECT_EQ(read.chosen, 0U);
    EXPECT_TRUE(OpenTabs::read("").stops.empty());
}

}  // namespace
}  // namespace tesserine::app
