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

TEST(OpenTabs, KeepWhereOneWroteInTheNotesThatHadTheKeys) {
    const Uuid other = *Uuid::parse("0B2F6A54-1111-4222-8333-444455557777");
    const BodyPlace atTop{.anchor = 17, .position = 17};
    const BodyPlace scrolled{
        .anchor = 90, .position = 90, .isAtTop = false, .top = 60, .topEdge = -4};
    const OpenTabs tabs{
        .stops =
            {{.place = {Kind::allNotes}, .note = note, .keys = KeyHolder::note},
             {.place = {Kind::allNotes}, .note = other, .keys = KeyHolder::note},
             {.place = {Kind::pinned}, .note = note, .keys = KeyHolder::list}},
        .places = {{note, atTop}, {other, scrolled}}};
    const OpenTabs read = OpenTabs::read(tabs.text());
    ASSERT_EQ(read.stops.size(), 3U);
    EXPECT_EQ(read.stops[0].keys, KeyHolder::note);
    EXPECT_EQ(read.stops[2].keys, KeyHolder::unknown);
    EXPECT_EQ(read.places, tabs.places);

    const std::string line = "tesserine://notes tesserine://note/" + note.text();
    for (const char* word : {"", " x", " -3", " 17,x", " 17,-9,4"}) {
        SCOPED_TRACE(word);
        const OpenTabs odd = OpenTabs::read(line + word + "\n");
        ASSERT_EQ(odd.stops.size(), 1U);
        EXPECT_EQ(odd.stops[0].note, note);
        for (const auto& [id, place] : odd.places) {
            EXPECT_EQ(place, atTop);
        }
    }
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
