#include "core/services/TagService.h"

#include "core/model/TaskEntities.h"
#include "core/services/LibraryFixture.h"
#include "core/services/NoteService.h"

#include <gmock/gmock.h>

namespace tesserine {
namespace {

using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;

class TagServiceTest : public test::LibraryFixture {
public:
    CDTag& tag(const char* name) { return *service.findOrCreate(context, name); }
    std::vector<std::string> outline() {
        std::vector<std::string> lines;
        for (const auto& [tag, depth] : service.tree(context, collator)) {
            lines.push_back(std::string(2 * depth, ' ') + *tag->name);
        }
        return lines;
    }

    NoteService notes{clock};
    TagService service{clock};
    text::Collator collator{"en"};
};

TEST_F(TagServiceTest, NamesAreUniqueIgnoringCaseAndNeverEmpty) {
    CDTag& work = tag(" Work ");
    EXPECT_EQ(work.name, "Work");
    EXPECT_EQ(service.findOrCreate(context, "WORK"), &work);
    EXPECT_EQ(service.findOrCreate(context, " \n"), nullptr);
    EXPECT_EQ(service.find(context, "home"), nullptr);
    EXPECT_EQ(context.count<CDTag>(), 1U);
}

TEST_F(TagServiceTest, RenamingToAnotherTagsNameMergesIntoThatTag) {
    CDTag& renamed = tag("Job");
    CDTag& existing = tag("WORK");
    existing.colorHex = "#112233";
    CDTag& child = tag("child");
    service.move(child, &renamed);
    CDNote& both = notes.createNote(context, {.title = "both", .tags = {&renamed, &existing}});
    CDNote& one = notes.createNote(context, {.title = "one", .tags = {&renamed}});
    notes.moveToTrash(one);
    auto& task = context.insert<CDTask>();
    task.labels.add(renamed);
    context.save();
    advance(std::chrono::seconds(5));

    EXPECT_EQ(&service.rename(context, renamed, " work "), &existing);
    context.save();
    EXPECT_EQ(existing.name, "WORK") << "the survivor keeps its own spelling";
    EXPECT_EQ(existing.colorHex, "#112233");
    EXPECT_EQ(existing.updatedAt, clock.now());
    EXPECT_THAT(existing.notes.all(), UnorderedElementsAre(&both, &one));
    EXPECT_THAT(both.tags.all(), ElementsAre(&existing));
    EXPECT_THAT(task.labels.all(), ElementsAre(&existing));
    EXPECT_THAT(outline(), ElementsAre("WORK", "  child"));
}

TEST_F(TagServiceTest, ARenameToNothingOrToItsOwnSpellingMergesNothing) {
    CDTag& work = tag("Work");
    const auto before = work.updatedAt.get();
    advance(std::chrono::seconds(5));
    EXPECT_EQ(&service.rename(context, work, "  "), &work);
    EXPECT_EQ(work.updatedAt, before);
    EXPECT_EQ(&service.rename(context, work, "work"), &work);
    EXPECT_EQ(work.name, "work");
    EXPECT_EQ(work.updatedAt, clock.now());
}

TEST_F(TagServiceTest, AMergeIntoAChildMakesNoCycle) {
    CDTag& parent = tag("parent");
    CDTag& child = tag("child");
    CDTag& sibling = tag("sibling");
    CDTag& deep = tag("deep");
    service.move(child, &parent);
    service.move(sibling, &parent);
    service.move(deep, &child);
    context.save();
    service.rename(context, parent, "deep");
    context.save();
    // "child" holds the survivor, so it cannot go below it and comes to the top.
    EXPECT_EQ(child.parent, nullptr);
    EXPECT_THAT(outline(), ElementsAre("child", "  deep", "    sibling"));
}

TEST_F(TagServiceTest, PruningTakesWhatNothingUsesOneLevelAtATime) {
    CDTag& kept = tag("kept");
    CDTag& dying = tag("dying");
    tag("unused");
    service.move(tag("leaf"), &tag("branch"));
    notes.createNote(context, {.title = "stays", .tags = {&kept}});
    CDNote& gone = notes.createNote(context, {.title = "goes", .tags = {&dying}});
    auto& task = context.insert<CDTask>();
    task.labels.add(tag("label"));
    context.save();

    notes.deleteNote(context, gone);  // in the same change, not saved yet
    EXPECT_EQ(service.pruneUnused(context), 3U);
    EXPECT_THAT(outline(), ElementsAre("branch", "kept", "label"));
    EXPECT_EQ(service.pruneUnused(context), 1U);
    context.save();
    EXPECT_THAT(outline(), ElementsAre("kept", "label"));
}

}  // namespace
}  // namespace tesserine
