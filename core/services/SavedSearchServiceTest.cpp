#include "core/services/SavedSearchService.h"

#include "core/services/LibraryFixture.h"

#include <gmock/gmock.h>

namespace tesserine {
namespace {

using ::testing::ElementsAre;

class SavedSearchServiceTest : public test::LibraryFixture {
public:
    std::vector<std::string> list() {
        std::vector<std::string> lines;
        for (const CDSavedSearch* search : service.list(context)) {
            lines.push_back(*search->name + " " + std::to_string(*search->sortIndex));
        }
        return lines;
    }

    SavedSearchService service{clock};
};

TEST_F(SavedSearchServiceTest, NewOnesComeLastAndMayShareAName) {
    service.create(context, " Work ", "tag:work").sortIndex = 7;
    service.create(context, "", "x");
    service.create(context, "work", "tag:w");
    EXPECT_THAT(list(), ElementsAre("Work 7", "Untitled Search 8", "work 9"));
    EXPECT_EQ(service.named(context, "WORK").size(), 2U);
}

TEST_F(SavedSearchServiceTest, ReorderingStampsOnlyWhatMoves) {
    CDSavedSearch& a = service.create(context, "a", "1");
    CDSavedSearch& b = service.create(context, "b", "2");
    CDSavedSearch& c = service.create(context, "c", "3");
    CDSavedSearch& d = service.create(context, "d", "4");
    const Instant before = clock.now();
    advance(std::chrono::seconds(3));
    service.reorder({&a, &c, &b});
    EXPECT_THAT(list(), ElementsAre("a 0", "c 1", "b 2", "d 3"));
    EXPECT_EQ(a.updatedAt, before);
    EXPECT_EQ(b.updatedAt, clock.now());
    EXPECT_EQ(d.updatedAt, before);

    service.rename(c, "\t");
    service.setQuery(c, "tag:x");
    EXPECT_EQ(c.name, "Untitled Search");
    EXPECT_EQ(c.query, "tag:x");
    service.remove(context, a);
    EXPECT_THAT(list(), ElementsAre("Untitled Search 1", "b 2", "d 3"));
}

TEST_F(SavedSearchServiceTest, EqualPlacesFollowTheirAge) {
    CDSavedSearch& first = service.create(context, "first", "");
    advance(std::chrono::seconds(1));
    service.create(context, "second", "").sortIndex = 0;
    first.createdAt = clock.now() + Instant::Duration(10);
    EXPECT_THAT(list(), ElementsAre("second 0", "first 0"));
}

}  // namespace
}  // namespace tesserine
