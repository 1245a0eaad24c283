#include "core/store/StoreContext.h"

#include "core/store/StoreCore.h"
#include "core/store/StoreFixture.h"

namespace tesserine {
namespace {

class StoreContextTest : public test::StoreFixture {};

TEST_F(StoreContextTest, EverythingComesBackAfterReopening) {
    Uuid id;
    {
        const auto store = open();
        StoreContext& context = store->viewContext();
        CDNote& note = addNote(context, "Plan", "<p>a</p>");
        note.latitude = 47.5;
        note.reminderAt = clock.now();
        note.originalSource = Bytes{0, 1, 255};
        note.notebook = &context.insert<CDNotebook>();
        note.notebook->name = "Work";
        auto& tag = context.insert<CDTag>();
        tag.name = "tax";
        note.tags.add(tag);
        id = *note.id;
        context.save();
        EXPECT_FALSE(context.hasChanges());
        EXPECT_GT(note.key(), 0);
    }
    const auto store = open();
    auto& note = store->viewContext().get<CDNote>(id, "The note");
    EXPECT_EQ(note.title, "Plan");
    EXPECT_EQ(note.html, "<p>a</p>");
    EXPECT_EQ(note.latitude, 47.5);
    EXPECT_EQ(note.reminderAt, clock.now());
    EXPECT_EQ(note.originalSource, (Bytes{0, 1, 255}));
    EXPECT_EQ(note.contentVersion, 1);
    EXPECT_EQ(note.isPinned, false);
    EXPECT_FALSE(note.trashedAt);
    ASSERT_NE(note.notebook.get(), nullptr);
    EXPECT_EQ(note.notebook->name, "Work");
    ASSERT_EQ(note.tags.count(), 1U);
    EXPECT_EQ(note.tags.all().front()->name, "tax");
}

TEST_F(StoreContextTest, FetchesShowPendingInsertsChangesAndDeletions) {
    const auto store = open();
    StoreContext& context = store->viewContext();
    CDNote& kept = addNote(context, "kept", "<p>1</p>");
    CDNote& changed = addNote(context, "changed", "<p>2</p>");
    CDNote& removed = addNote(context, "removed", "<p>3</p>");
    context.save();

    addNote(context, "added", "<p>4</p>");
    changed.trashedAt = clock.now();
    context.remove(removed);
    const FetchRequest live{
        .predicate = {"trashedAt == nil AND isTemplate == NO"}, .sort = {{"title"}}};
    EXPECT_EQ(titles(context.fetch<CDNote>(live)), "added kept ");
    EXPECT_EQ(context.count<CDNote>({"trashedAt != nil"}), 1U);
    EXPECT_EQ(
        titles(context.fetch<CDNote>({.sort = {{"title"}}, .limit = 1, .offset = 1})), "changed ");

    context.rollback();
    EXPECT_EQ(titles(context.fetch<CDNote>(live)), "changed kept removed ");
    EXPECT_FALSE(removed.isDeleted());
    EXPECT_FALSE(kept.isChanged());
}

TEST_F(StoreContextTest, NamesAreFoundIgnoringCaseAlsoBeforeTheyAreSaved) {
    const auto store = open();
    StoreContext& context = store->viewContext();
    auto& book = context.insert<CDNotebook>();
    book.name = "STRASSE";
    auto& child = context.insert<CDNotebook>();
    child.name = "Café";
    child.parent = &book;
    for (int pass = 0; pass < 2; ++pass) {
        SCOPED_TRACE(pass == 0 ? "pending" : "saved");
        const auto find = [&](const Predicate& predicate) {
            return context.fetchFirst<CDNotebook>({.predicate = predicate});
        };
        EXPECT_EQ(find({"name ==[c] %@ AND parent == nil", "straße"}), &book);
        EXPECT_EQ(find({"name ==[c] %@ AND parent.id == %@", "CAFÉ", *book.id}), &child);
        EXPECT_EQ(find({"name ==[c] %@ AND parent.id == %@", "cafe", *book.id}), nullptr);
        EXPECT_EQ(find({"name ==[c] %@ AND SELF != %@", "strasse", book}), nullptr);
        context.save();
    }
}

TEST_F(StoreContextTest, DeletingANoteTakesItsOwnThingsAndLeavesTheRest) {
    const auto store = open();
    StoreContext& context = store->viewContext();
    CDNote& note = addNote(context, "n", "<p>1</p>");
    auto& attachment = context.insert<CDAttachment>();
    attachment.note = &note;
    auto& revision = context.insert<CDNoteRevision>();
    revision.note = &note;
    auto& task = context.insert<CDTask>();
    task.linkedNote = &note;
    auto& tag = context.insert<CDTag>();
    note.tags.add(tag);
    context.save();

    context.remove(note);
    for (int pass = 0; pass < 2; ++pass) {
        SCOPED_TRACE(pass == 0 ? "pending" : "saved");
        EXPECT_EQ(context.count<CDNote>(), 0U);
        EXPECT_EQ(context.count<CDAttachment>(), 0U);
        EXPECT_EQ(context.count<CDNoteRevision>(), 0U);
        EXPECT_EQ(context.count<CDTask>({"linkedNote == nil"}), 1U);
        EXPECT_EQ(context.count<CDTag>(), 1U);
        EXPECT_TRUE(tag.notes.empty());
        context.save();
    }
    EXPECT_TRUE(note.isDeleted());
}

TEST_F(StoreContextTest, ChildrenOfADeletedParentStayWithoutOneButSubtasksGo) {
    const auto store = open();
    StoreContext& context = store->viewContext();
    auto& parent = context.insert<CDTag>();
    auto& child = context.insert<CDTag>();
    child.parent = &parent;
    auto* last = &context.insert<CDTask>();
    CDTask& root = *last;
    for (int depth = 0; depth < 2000; ++depth) {
        auto& subtask = context.insert<CDTask>();
        subtask.parent = last;
        last = &subtask;
    }
    context.save();
    context.remove(parent);
    context.remove(root);
    context.save();
    EXPECT_EQ(child.parent.get(), nullptr);
    EXPECT_EQ(context.count<CDTag>({"parent == nil"}), 1U);
    EXPECT_EQ(context.count<CDTask>(), 0U);
}

TEST_F(StoreContextTest, ABodyChangedElsewhereIsKeptAsAConflictRevision) {
    const auto store = open();
    StoreContext& mine = store->viewContext();
    CDNote& note = addNote(mine, "n", "<p>1</p>");
    mine.save();
    const auto other = open("other");

    struct Case {
        const char* what;
        std::optional<std::string> mineHTML, theirsHTML, theirsTitle;
        const char* revisions;
        const char* html;
        bool hasConflict;
    };
    const Case cases[] = {
        {"both changed",
         "<p>mine</p>",
         "<p>theirs</p>",
         {},
         "conflict:<p>theirs</p> ",
         "<p>mine</p>",
         true},
        {"same change", "<p>same</p>", "<p>same</p>", {}, "", "<p>same</p>", false},
        {"they renamed", "<p>mine2</p>", {}, "new", "conflict:<p>same</p> ", "<p>mine2</p>", true},
        {"they emptied it", "<p>mine3</p>", "", {}, "", "<p>mine3</p>", false},
        {"I changed nothing of it", {}, "<p>theirs4</p>", {}, "", "<p>theirs4</p>", false},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.what);
        auto& theirs = other->viewContext().get<CDNote>(*note.id, "The note");
        if (one.mineHTML) {
            note.html = one.mineHTML;
        } else {
            note.isPinned = true;
        }
        if (one.theirsHTML) theirs.html = one.theirsHTML;
        if (one.theirsTitle) theirs.title = one.theirsTitle;
        other->viewContext().save();
        mine.save();
        EXPECT_EQ(revisions(note), one.revisions);
        EXPECT_EQ(note.html, std::string(one.html));
        EXPECT_EQ(bool(note.hasConflict), one.hasConflict);
        for (CDNoteRevision* revision : note.revisions.all()) {
            mine.remove(*revision);
        }
        note.hasConflict = false;
        mine.save();
        other->viewContext().reset();
    }
}

TEST_F(StoreContextTest, AMergeDoesNotSwallowTheConflictOfABodyBeingWritten) {
    const auto store = open();
    StoreContext& view = store->viewContext();
    CDNote& note = addNote(view, "n", "<p>1</p>");
    view.save();
    const auto background = store->newBackgroundContext();
    auto& theirs = background->get<CDNote>(*note.id, "The note");

    note.html = "<p>typing</p>";
    theirs.html = "<p>theirs</p>";
    theirs.title = "renamed";
    background->save();  // reaches the view at once
    EXPECT_EQ(note.title, "renamed");
    EXPECT_EQ(note.html, "<p>typing</p>");
    view.save();
    EXPECT_EQ(revisions(note), "conflict:<p>theirs</p> ");
    EXPECT_TRUE(bool(note.hasConflict));
}

TEST_F(StoreContextTest, ADeletionElsewhereStandsUnlessTextWasTypedHere) {
    const auto store = open();
    StoreContext& mine = store->viewContext();
    CDNote& typed = addNote(mine, "typed", "<p>1</p>");
    CDNote& pinned = addNote(mine, "pinned", "<p>2</p>");
    CDNote& deleted = addNote(mine, "deleted", "<p>3</p>");
    mine.save();
    const auto other = open("other");
    StoreContext& theirs = other->viewContext();
    for (CDNote* note : theirs.fetch<CDNote>()) {
        theirs.remove(*note);
    }
    theirs.save();

    typed.html = "<p>kept</p>";
    pinned.isPinned = true;
    mine.remove(deleted);
    mine.save();
    EXPECT_TRUE(pinned.isDeleted());
    mine.reset();
    const auto left = mine.fetch<CDNote>();
    ASSERT_EQ(titles(left), "typed ");
    EXPECT_EQ(left.front()->html, "<p>kept</p>");
}

TEST_F(StoreContextTest, WhatOthersHungOnADeletedObjectGoesWithIt) {
    const auto store = open();
    StoreContext& mine = store->viewContext();
    CDNote& note = addNote(mine, "n", "<p>1</p>");
    auto& book = mine.insert<CDNotebook>();
    mine.save();
    const auto other = open("other");
    StoreContext& theirs = other->viewContext();
    auto& attachment = theirs.insert<CDAttachment>();
    attachment.note = theirs.find<CDNote>(*note.id);
    CDNote& placed = addNote(theirs, "placed", "<p>2</p>");
    placed.notebook = theirs.find<CDNotebook>(*book.id);
    theirs.save();

    mine.remove(note);
    mine.remove(book);
    mine.save();
    EXPECT_EQ(mine.count<CDAttachment>(), 0U);
    EXPECT_EQ(mine.count<CDNote>({"notebook == nil"}), 1U);
}

TEST_F(StoreContextTest, LinksAddedOnBothSidesAreAllThere) {
    const auto store = open();
    StoreContext& mine = store->viewContext();
    CDNote& note = addNote(mine, "n", "<p>1</p>");
    auto& a = mine.insert<CDTag>();
    auto& b = mine.insert<CDTag>();
    mine.save();
    const auto other = open("other");
    auto& theirs = other->viewContext().get<CDNote>(*note.id, "The note");
    theirs.tags.add(*other->viewContext().find<CDTag>(*a.id));
    other->viewContext().save();
    note.tags.add(b);
    note.tags.add(a);
    note.tags.add(a);
    EXPECT_EQ(note.tags.count(), 2U);
    mine.save();
    EXPECT_EQ(note.tags.count(), 2U);
    note.tags.remove(a);
    EXPECT_FALSE(note.tags.contains(a));
    EXPECT_TRUE(a.notes.empty());
    mine.save();
    EXPECT_EQ(mine.count<CDNote>({"ANY tags.id == %@", *b.id}), 1U);
    EXPECT_EQ(mine.count<CDNote>({"ANY tags == %@", a}), 0U);
}

TEST_F(StoreContextTest, ListsLeaveBodiesInTheFile) {
    const auto store = open();
    StoreContext& context = store->viewContext();
    addNote(context, "n", "<p>1</p>");
    context.save();
    context.reset();
    const auto notes = context.fetch<CDNote>({.sort = {{"updatedAt"}}});
    CDNote& note = *notes.front();
    EXPECT_TRUE(note.isLoaded(note.title.index()));
    EXPECT_FALSE(note.isLoaded(note.html.index()));
    EXPECT_EQ(note.html, "<p>1</p>");
    EXPECT_TRUE(note.isLoaded(note.html.index()));
    context.releaseLargeValues();
    EXPECT_FALSE(note.isLoaded(note.html.index()));
    // Replacing a body does not read the one before, so even an equal one is a change.
    note.html = "<p>1</p>";
    EXPECT_TRUE(context.hasChanges());
    note.html = "<p>2</p>";
    context.rollback();
    EXPECT_FALSE(note.isLoaded(note.html.index()));
    EXPECT_EQ(note.html, "<p>1</p>");
}

TEST_F(StoreContextTest, VisitedRowsShowWhatAFetchShows) {
    const auto store = open();
    StoreContext& context = store->viewContext();
    auto& book = context.insert<CDNotebook>();
    for (const char* title : {"a", "b", "c"}) {
        CDNote& note = addNote(context, title, "<p>1</p>");
        clock.advance(std::chrono::seconds(1));
        if (note.title == "b") note.notebook = &book;
        if (note.title == "c") note.trashedAt = clock.now();
    }
    addNote(context, "no title", "<p>1</p>").title = std::nullopt;
    context.save();
    context.reset();

    const FetchRequest request{
        .sort = {{"updatedAt", SortDescriptor::Order::descending}}, .limit = 3, .offset = 1};
    const auto rows = [&] {
        std::string text;
        context.visitRows<CDNote>(request, [&](const ListedRow& row) {
            text += std::to_string(row.key()) + " " + row.get(&CDNote::title).value_or("-") + " ";
            text += row.get(&CDNote::updatedAt)->iso().substr(17, 2);
            if (row.get(&CDNote::trashedAt)) text += " trashed";
            if (row.get(&CDNote::isPinned) == true) text += " pinned";
            if (row.key(&CDNote::notebook) != 0) text += " in a notebook";
            text += "; ";
        });
        return text;
    };
    EXPECT_EQ(rows(), "3 c 02 trashed; 2 b 01 in a notebook; 1 a 00; ");

    // With changes pending, the same from memory.
    CDNote& note = *context.fetchFirst<CDNote>({.predicate = {"title == %@", "b"}});
    note.isPinned = true;
    note.notebook = nullptr;
    addNote(context, "d", "").updatedAt = *note.updatedAt - std::chrono::seconds(10);
    EXPECT_EQ(rows(), "3 c 02 trashed; 2 b 01 pinned; 1 a 00; ");
}

TEST_F(StoreContextTest, LargeFilesStandBesideTheLibraryAndLeaveWithTheirRow) {
    const auto store = open();
    StoreContext& context = store->viewContext();
    auto& attachment = context.insert<CDAttachment>();
    const Bytes small(ExternalValues::inlineLimit, 7);
    const Bytes large(ExternalValues::inlineLimit + 1, 8);
    const auto fileCount = [&] {
        const auto place = *store->core().external().folder();
        if (!std::filesystem::exists(place)) return std::ptrdiff_t{0};
        return std::distance(std::filesystem::directory_iterator(place), {});
    };
    attachment.fileData = small;
    context.save();
    EXPECT_EQ(fileCount(), 0);
    attachment.fileData = large;
    context.save();
    EXPECT_EQ(fileCount(), 1);
    context.reset();
    auto& read = *context.fetch<CDAttachment>().front();
    EXPECT_EQ(read.fileData, large);
    context.remove(read);
    EXPECT_EQ(fileCount(), 1);
    context.save();
    EXPECT_EQ(fileCount(), 0);
}

TEST_F(StoreContextTest, AStoreInMemoryServesSeveralContexts) {
    TesserineStore store({.inMemory = true}, StoreEnvironment{.clock = clock, .random = random});
    CDNote& note = addNote(store.viewContext(), "n", "<p>1</p>");
    store.viewContext().save();
    const auto background = store.newBackgroundContext();
    background->get<CDNote>(*note.id, "The note").title = "renamed";
    background->save();
    EXPECT_EQ(note.title, "renamed");
}

TEST_F(StoreContextTest, AMissingObjectIsSaidInASentence) {
    const auto store = open();
    try {
        store->viewContext().get<CDNote>(Uuid(), "The note");
        FAIL();
    } catch (const StoreError& error) {
        EXPECT_STREQ(error.what(), "The note could not be found.");
    }
}

}  // namespace
}  // namespace tesserine
