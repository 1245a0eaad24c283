#include "app/lists/PlaceCounts.h"

#include "app/lists/NoteChangesFixture.h"
#include "app/lists/NoteListModel.h"
#include "app/lists/NoteScope.h"
#include "app/lists/PlaceWords.h"
#include "app/state/WindowFixture.h"

#include <gtest/gtest.h>
#include <QFile>

#include <string>
#include <vector>

namespace tesserine::app {
namespace {

using Kind = Place::Kind;

class PlaceCountsTest : public test::WindowFixture {};

TEST_F(PlaceCountsTest, APlaceCountsWhatItLists) {
    test::NoteChanges changes(*environment, clock);
    std::vector<Place> places = {
        {Kind::allNotes}, {Kind::pinned}, {Kind::reminders}, {Kind::templates}, {Kind::trash}};
    places.push_back(
        {Kind::notebook, *environment->notebooks().findOrCreate(context(), "Work").id});
    places.push_back({Kind::tag, *environment->tags().findOrCreate(context(), "red")->id});
    std::size_t most = 0;
    for (int save = 0; save < 20; ++save) {
        changes.make(context());
        const PlaceCounts counts = countPlaces(context(), clock, environment->calendar());
        for (const Place& place : places) {
            SCOPED_TRACE(place.address());
            NoteListModel list(*environment);
            list.show(NoteScope(place));
            ASSERT_TRUE(waitUntil([&] { return list.isComplete(); }));
            const auto found = counts.find(place.address());
            const std::size_t count = found == counts.end() ? 0 : found->second;
            EXPECT_EQ(count, static_cast<std::size_t>(list.rowCount()));
            most = std::max(most, count);
        }
    }
    EXPECT_GT(most, 5U);
}

TEST_F(PlaceCountsTest, EveryPlaceHasATitleADrawingAndSomethingToSayWhenItIsEmpty) {
    for (int number = 0; number <= static_cast<int>(Kind::welcome); ++number) {
        const auto kind = static_cast<Kind>(number);
        SCOPED_TRACE(Place{kind}.address());
        EXPECT_TRUE(QFile::exists(":/icons/" + iconOf(kind) + ".svg"));
        if (!NoteScope::isListed(kind)) continue;
        const auto words = emptyContentOf(kind);
        EXPECT_FALSE(words.title.isEmpty() || words.text.isEmpty());
    }
    // What is gone has no title, by which the window knows it.
    for (const Kind kind :
         {Kind::notebook, Kind::tag, Kind::savedSearch, Kind::project, Kind::note})
        EXPECT_EQ(titleOf(Place{kind, Uuid()}, context()), "");
    CDNote& note = addNote(" \n ");
    EXPECT_EQ(titleOf(Place{Kind::note, *note.id}, context()), "Untitled");
}

}  // namespace
}  // namespace tesserine::app
