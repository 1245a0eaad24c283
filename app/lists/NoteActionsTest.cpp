#include "app/lists/NoteActions.h"

#include "app/state/WindowFixture.h"
#include "core/model/NoteEntities.h"
#include "core/store/LibraryBackup.h"

#include <gtest/gtest.h>
#include <QMessageBox>
#include <QWidget>

#include <string>

namespace tesserine::app {
namespace {

using Kind = Place::Kind;

class NoteActionsTest : public test::WindowFixture {
public:
    CDNote& made(const std::optional<Uuid>& id) {
        EXPECT_TRUE(id.has_value());
        EXPECT_FALSE(context().hasChanges()) << "it is saved";
        return *context().find<CDNote>(*id);
    }

    QWidget window;
    NoteActions actions{*environment, &window};
};

TEST_F(NoteActionsTest, ANewNoteBelongsToThePlaceItIsMadeIn) {
    CDNotebook& work = environment->notebooks().findOrCreate(context(), "Work");
    CDTag& red = *environment->tags().findOrCreate(context(), "red");
    context().save();
    const CDNote& inWork = made(actions.create({Kind::notebook, *work.id}));
    EXPECT_EQ(inWork.notebook.get(), &work);
    const CDNote& tagged = made(actions.create({Kind::tag, *red.id}));
    EXPECT_TRUE(tagged.tags.contains(red));
    const CDNote& pinned = made(actions.create({Kind::pinned}));
    EXPECT_TRUE(bool(pinned.isPinned));
    EXPECT_TRUE(pinned.favoritedAt.get().has_value()) << "or the list would not know its place";
    EXPECT_TRUE(bool(made(actions.create({Kind::templates})).isTemplate));
    const CDNote& plain = made(actions.create({Kind::allNotes}));
    EXPECT_EQ(plain.notebook.get(), nullptr);
    EXPECT_FALSE(bool(plain.isTemplate));
    // A place that has just been deleted elsewhere takes nothing with it.
    const CDNote& orphan = made(actions.create({Kind::notebook, *red.id}));
    EXPECT_EQ(orphan.notebook.get(), nullptr);
}

TEST_F(NoteActionsTest, ANotebookWithATemplateBeginsItsNotesFromIt) {
    CDNotebook& diary = environment->notebooks().findOrCreate(context(), "Diary");
    CDNote& page = addNote("Day", "<p>Weather:</p>");
    CDNote& start = made(actions.saveAsTemplate(*page.id));
    environment->notebooks().setNoteTemplate(diary, &start);
    context().save();
    const CDNote& note = made(actions.create({Kind::notebook, *diary.id}));
    EXPECT_EQ(note.html, "<p>Weather:</p>");
    EXPECT_EQ(note.notebook.get(), &diary);
    EXPECT_FALSE(bool(note.isTemplate));
    EXPECT_FALSE(actions.createFromTemplate(Uuid{}, {Kind::allNotes})) << "the template is gone";
}

TEST_F(NoteActionsTest, WhatIsGoneIsPassedOver) {
    CDNote& plan = addNote("Plan");
    CDNote& bill = addNote("Bill");
    const NoteActions::Notes both{*plan.id, *bill.id};
    CDNotebook& work = environment->notebooks().findOrCreate(context(), "Work");
    context().save();
    environment->notes().deleteNote(context(), bill);
    context().save();

    actions.setPinned(both, true);
    EXPECT_TRUE(bool(plan.isPinned));
    EXPECT_TRUE(actions.arePinned(both));
    actions.move(both, *work.id);
    EXPECT_EQ(plan.notebook.get(), &work);
    actions.move(both, Uuid{});  // a notebook that is gone is not "no notebook"
    EXPECT_EQ(plan.notebook.get(), &work);
    actions.move(both, std::nullopt);
    EXPECT_EQ(plan.notebook.get(), nullptr);
    actions.changeTags(both, {{.name = "Travel / 2026"}}, {});
    ASSERT_EQ(plan.tags.all().size(), 1U);
    actions.removeTag(both, *plan.tags.all().front()->id);
    EXPECT_TRUE(plan.tags.all().empty());
    EXPECT_EQ(actions.duplicate(both).size(), 1U);
    actions.moveToTrash(both);
    EXPECT_TRUE(plan.trashedAt.get().has_value());
    actions.restore(both);
    EXPECT_FALSE(plan.trashedAt.get().has_value());
    EXPECT_FALSE(context().hasChanges());
}

TEST_F(NoteActionsTest, EmptyingTheTrashLeavesABackupThatHasItAll) {
    CDNote& kept = addNote("Kept");
    CDNote& old = addNote("Old", "<p>still wanted</p>");
    CDNote& late = addNote("Late");
    const Uuid id = *old.id;
    actions.moveToTrash({id, *late.id});
    bool isDone = false;
    actions.emptyTrash({id, *kept.id}, [&] { isDone = true; });
    ASSERT_TRUE(waitUntil([&] { return isDone; }));
    EXPECT_EQ(context().find<CDNote>(id), nullptr);
    EXPECT_NE(context().find<CDNote>(*kept.id), nullptr) << "it was taken out of the trash";
    EXPECT_NE(context().find<CDNote>(*late.id), nullptr) << "it came in after the question";
    actions.deleteForGood({*kept.id});
    EXPECT_NE(context().find<CDNote>(*kept.id), nullptr);
    const auto backups = LibraryBackups(setting().library, clock, random).list();
    ASSERT_EQ(backups.size(), 1U);
    EXPECT_EQ(backups.front().reason, "purge");
    TesserineStore copy({.directory = backups.front().folder}, {.clock = clock, .random = random});
    EXPECT_NE(copy.newBackgroundContext()->find<CDNote>(id), nullptr);
}

TEST_F(NoteActionsTest, NamesWhatItIsAboutToActOn) {
    const CDNote& plan = addNote("Plan");
    const CDNote& untitled = addNote("");
    EXPECT_EQ(actions.describe({*plan.id}), "“Plan”");
    EXPECT_EQ(actions.describe({*untitled.id}), "the untitled note");
    EXPECT_EQ(actions.describe({*plan.id, *untitled.id}), "2 notes");
}

}  // namespace
}  // namespace tesserine::app
