#include "core/services/NotebookService.h"

#include "core/services/LibraryFixture.h"
#include "core/services/NoteService.h"

#include <gmock/gmock.h>

namespace tesserine {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class NotebookServiceTest : public test::LibraryFixture {
public:
    static std::vector<std::string> names(const std::vector<CDNotebook*>& notebooks) {
        std::vector<std::string> result;
        result.reserve(notebooks.size());
        for (const CDNotebook* notebook : notebooks) {
            result.push_back(NotebookService::pathText(*notebook));
        }
        return result;
    }
    std::vector<std::string> outline() {
        std::vector<std::string> lines;
        for (const auto& [notebook, depth] : service.tree(context, collator)) {
            lines.push_back(std::string(2 * depth, ' ') + *notebook->name);
        }
        return lines;
    }

    NotebookService service{clock};
    text::Collator collator{"en"};
};

TEST_F(NotebookServiceTest, ANameIsFoundIgnoringCaseBelowItsParentOnlyAndElseMade) {
    CDNotebook& work = service.findOrCreate(context, " Work\n");
    EXPECT_EQ(work.name, "Work");
    EXPECT_EQ(&service.findOrCreate(context, "WORK"), &work) << "not saved yet, and still found";
    CDNotebook& inner = service.findOrCreate(context, "work", &work);
    EXPECT_NE(&inner, &work);
    EXPECT_EQ(&service.findOrCreate(context, "Work", &work), &inner);
    EXPECT_EQ(service.findOrCreate(context, " \t").name, "Untitled Notebook");
    EXPECT_NE(&service.findOrCreate(context, "Café"), &service.findOrCreate(context, "Cafe"));
    EXPECT_EQ(&service.findOrCreate(context, "Straße"), &service.findOrCreate(context, "STRASSE"));

    EXPECT_EQ(service.findOrCreatePath(context, {"work", "WORK"}), &inner);
    EXPECT_EQ(service.findOrCreatePath(context, {}), nullptr);
    EXPECT_EQ(
        NotebookService::pathText(*service.findOrCreatePath(context, {"Work", "A", "B"})),
        "Work / A / B");
}

TEST_F(NotebookServiceTest, OfTwinsTheOlderIsFound) {
    advance(std::chrono::seconds(10));
    insertNotebook("Work");
    advance(std::chrono::seconds(-10));
    CDNotebook& older = insertNotebook("work");
    context.save();
    EXPECT_EQ(service.find(context, "WORK"), &older);
}

TEST_F(NotebookServiceTest, ListsFollowTheReadersOrder) {
    CDNotebook& top = insertNotebook("zebra");
    insertNotebook("Éclair");
    insertNotebook("apple");
    insertNotebook("b", &top);
    insertNotebook("A", &top);
    EXPECT_THAT(
        names(service.children(context, nullptr, collator)),
        ElementsAre("apple", "Éclair", "zebra"));
    EXPECT_THAT(
        names(service.children(context, &top, collator)), ElementsAre("zebra / A", "zebra / b"));
    EXPECT_THAT(outline(), ElementsAre("apple", "Éclair", "zebra", "  A", "  b"));
}

TEST_F(NotebookServiceTest, AMoveBelowItselfIsRefused) {
    CDNotebook& top = insertNotebook("top");
    CDNotebook& middle = insertNotebook("middle", &top);
    CDNotebook& leaf = insertNotebook("leaf", &middle);
    advance(std::chrono::seconds(1));
    EXPECT_FALSE(service.move(top, &top));
    EXPECT_FALSE(service.move(top, &leaf));
    EXPECT_FALSE(top.updatedAt);
    EXPECT_TRUE(service.move(leaf, &top));
    EXPECT_EQ(leaf.updatedAt, clock.now());
    EXPECT_TRUE(service.move(middle, nullptr));
    EXPECT_THAT(outline(), ElementsAre("middle", "top", "  leaf"));
}

TEST_F(NotebookServiceTest, WalksEndInACycleAndNothingIsHidden) {
    CDNotebook& one = insertNotebook("one");
    CDNotebook& two = insertNotebook("two", &one);
    one.parent = &two;  // as two devices may make it together
    CDNotebook& below = insertNotebook("below", &two);
    EXPECT_EQ(NotebookService::pathText(below), "one / two / below");
    EXPECT_THAT(outline(), testing::SizeIs(3));
    EXPECT_FALSE(service.move(one, &below));
    EXPECT_TRUE(service.move(one, nullptr));
    EXPECT_THAT(outline(), ElementsAre("one", "  two", "    below"));
}

TEST_F(NotebookServiceTest, ATreeOfTenThousandLevelsIsWalked) {
    CDNotebook* last = nullptr;
    for (int i = 0; i < 10'000; ++i) {
        last = &insertNotebook("n", last);
    }
    EXPECT_EQ(tree::ancestors(*last).size(), 9'999U);
    EXPECT_EQ(service.tree(context, collator).size(), 10'000U);
}

TEST_F(NotebookServiceTest, ARenameThatWouldMakeTwinsIsRefused) {
    CDNotebook& work = insertNotebook("Work");
    CDNotebook& home = insertNotebook("Home");
    CDNotebook& inner = insertNotebook("Work", &home);
    try {
        service.rename(context, home, " work ");
        FAIL() << "two notebooks of one name";
    } catch (const NotebookError& error) {
        EXPECT_STREQ(error.what(), "A notebook called “work” already exists here.");
    }
    EXPECT_EQ(home.name, "Home");
    service.rename(context, work, "WORK");  // its own name in another spelling
    EXPECT_EQ(work.name, "WORK");
    service.rename(context, inner, "Home");
    service.rename(context, work, " \n");
    EXPECT_EQ(work.name, "WORK");

    EXPECT_FALSE(service.wouldMakeTwins(context, work, nullptr));
    EXPECT_TRUE(service.wouldMakeTwins(context, inner, nullptr));
    EXPECT_FALSE(service.wouldMakeTwins(context, work, &home));
}

TEST_F(NotebookServiceTest, OnlyALivingTemplateCounts) {
    NoteService notes(clock);
    CDNotebook& book = insertNotebook("Plans");
    CDNote& pattern = notes.createNote(context, {.title = "Letter"});
    pattern.isTemplate = true;
    service.setNoteTemplate(book, &pattern);
    EXPECT_EQ(service.noteTemplate(context, book), &pattern);
    notes.moveToTrash(pattern);
    EXPECT_EQ(service.noteTemplate(context, book), nullptr);
    notes.restoreFromTrash(pattern);
    pattern.isTemplate = false;
    EXPECT_EQ(service.noteTemplate(context, book), nullptr);
    pattern.isTemplate = true;
    notes.deleteNote(context, pattern);
    EXPECT_EQ(service.noteTemplate(context, book), nullptr);
    service.setNoteTemplate(book, nullptr);
    EXPECT_FALSE(book.templateNoteId);
}

TEST_F(NotebookServiceTest, ANotebookIsMeantByItsPathOrItsName) {
    CDNotebook& work = insertNotebook("Work");
    CDNotebook& plans = insertNotebook("Plans", &work);
    advance(std::chrono::seconds(1));
    CDNotebook& other = insertNotebook("Plans", &insertNotebook("Home"));
    CDNotebook& slashed = insertNotebook("A/B");
    EXPECT_THAT(service.named(context, "work/plans"), ElementsAre(&plans));
    EXPECT_THAT(service.named(context, " Work / Plans "), ElementsAre(&plans));
    EXPECT_THAT(service.named(context, "plans"), ElementsAre(&plans, &other));
    EXPECT_THAT(service.named(context, "WORK"), ElementsAre(&work));
    EXPECT_THAT(service.named(context, "a / b"), ElementsAre(&slashed));
    EXPECT_THAT(service.named(context, "lans"), IsEmpty());
    EXPECT_THAT(service.named(context, ""), IsEmpty());
}

TEST_F(NotebookServiceTest, ColoursAreCheckedAndWrittenOneWay) {
    CDNotebook& book = insertNotebook("Plans");
    service.setColor(book, "3366cc");
    EXPECT_EQ(book.colorHex, "#3366CC");
    for (const char* bad : {"", "#", "#3366C", "#3366CCC", "red", "#3366CG", "##3366CC"}) {
        EXPECT_THROW(service.setColor(book, bad), NotebookError) << bad;
    }
    service.setColor(book, std::nullopt);
    EXPECT_FALSE(book.colorHex);
}

}  // namespace
}  // namespace tesserine
