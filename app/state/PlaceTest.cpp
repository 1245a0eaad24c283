#include "app/state/Place.h"

#include <gtest/gtest.h>

namespace tesserine::app {
namespace {

using Kind = Place::Kind;

TEST(Place, AddressesLeadBackToTheSamePlace) {
    const Uuid id = *Uuid::parse("0B2F6A54-6C1D-4D5B-9B59-0C5F2B6F1E11");
    for (const Place& place : {
             Place{Kind::allNotes, {}, {}},
             Place{Kind::note, id, {}},
             Place{Kind::savedSearch, id, {}},
             Place{Kind::search, {}, "tag:work / \"50 %\" Ærø?#"},
             Place{Kind::settings, {}, {}},
             Place{Kind::settings, {}, "sync"},
             Place{Kind::welcome, {}, {}},
         }) {
        SCOPED_TRACE(place.address());
        EXPECT_EQ(Place::fromAddress(place.address()), place);
    }
    EXPECT_EQ((Place{Kind::settings, {}, {}}).address(), "tesserine://settings");
    EXPECT_EQ((Place{Kind::note, id, {}}).address(), "tesserine://note/" + id.text());
}

TEST(Place, ShortFormsAreReadAndAnythingElseIsNoPlace) {
    EXPECT_EQ(Place::fromAddress("today")->kind, Kind::today);
    EXPECT_EQ(Place::fromAddress("note/0b2f6a54-6c1d-4d5b-9b59-0c5f2b6f1e11")->kind, Kind::note);
    for (const char* address :
         {"", "tesserine://", "note", "note/", "note/12", "today/tomorrow", "https://note/x"}) {
        EXPECT_EQ(Place::fromAddress(address), std::nullopt) << address;
    }
}

}  // namespace
}  // namespace tesserine::app
