#include "app/pages/WelcomeLibrary.h"

#include "app/state/Place.h"
#include "app/state/WindowFixture.h"
#include "core/body/AttributedTextReader.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <string>

namespace tesserine::app {
namespace {

using WelcomeLibraryTest = test::WindowFixture;

TEST_F(WelcomeLibraryTest, ItsNotesLinkToEachOtherAndItsTasksAreRead) {
    const Uuid first = welcome::seed(*environment);
    std::set<std::string> addresses;
    for (const CDNote* note : context().fetch<CDNote>({.predicate = {"isTemplate == NO"}})) {
        addresses.insert(Place{.kind = Place::Kind::note, .id = *note->id}.address());
    }
    EXPECT_EQ(addresses.size(), 5U);
    std::size_t links = 0;
    for (const CDNote* note : context().fetch<CDNote>()) {
        const std::string html = *note->html;
        EXPECT_EQ(html.find("[[0"), std::string::npos);
        const std::regex href("href=\"([^\"]*)\"");
        for (std::sregex_iterator at(html.begin(), html.end(), href), end; at != end; ++at) {
            EXPECT_TRUE(addresses.contains((*at)[1])) << (*at)[1];
            ++links;
        }
    }
    EXPECT_EQ(links, 5U);
    EXPECT_TRUE(context().find<CDNote>(first));
    const auto* const top = context().fetchFirst<CDNote>(
        {.predicate = {"isTemplate == NO"},
         .sort = {{"updatedAt", SortDescriptor::Order::descending}}});
    EXPECT_EQ(top->id, first) << "it stands where one begins to read";
    for (const CDTask* task : context().fetch<CDTask>()) {
        EXPECT_TRUE(task->dueDate) << "each shows how a date is understood";
    }
    EXPECT_GT(environment->notes().templates(context()).size(), 0U);
}

TEST_F(WelcomeLibraryTest, AllButTheTableCanBeEdited) {
    welcome::seed(*environment);
    std::string preserved;
    int ticks = 0;
    for (const CDNote* note : context().fetch<CDNote>({.predicate = {"isTemplate == NO"}})) {
        for (const auto& paragraph : attributedText(*note->html).paragraphs) {
            if (!paragraph.style) continue;
            if (paragraph.style->kind == BlockStyle::Kind::checklist) ++ticks;
            if (paragraph.style->kind == BlockStyle::Kind::preserved) preserved += *note->title;
        }
    }
    EXPECT_EQ(preserved, "Find");
    EXPECT_EQ(ticks, 5) << "in the note that one begins with";
}

TEST_F(WelcomeLibraryTest, IsFoundAgainAndMadeAnewWhenItIsGone) {
    const Uuid first = welcome::note(*environment);
    EXPECT_EQ(welcome::note(*environment), first);
    EXPECT_EQ(context().count<CDNote>({"isTemplate == NO"}), 5U);
    environment->notes().moveToTrash(context().get<CDNote>(first, "note"));
    context().save();
    EXPECT_NE(welcome::note(*environment), first);
}

}  // namespace
}  // namespace tesserine::app
