#include "app/lists/NoteListModel.h"

#include "app/lists/NoteChangesFixture.h"
#include "app/state/WindowFixture.h"

#include <gtest/gtest.h>
#include <QAbstractItemModelTester>

#include <string>
#include <tuple>
#include <vector>

namespace tesserine::app {
namespace {

using Kind = Place::Kind;

class NoteListModelTest : public test::WindowFixture {
public:
    NoteListModelTest() {
        QObject::connect(&model(), &QAbstractItemModel::modelReset, [this] { ++resets; });
    }
    NoteListModel& model() {
        if (!model_) {
            model_ = std::make_unique<NoteListModel>(*environment);
            tester_ = std::make_unique<QAbstractItemModelTester>(
                model_.get(), QAbstractItemModelTester::FailureReportingMode::Fatal);
        }
        return *model_;
    }
    void TearDown() override {
        tester_.reset();
        model_.reset();
    }
    std::string titles() { return titles(model()); }
    static std::string titles(const NoteListModel& list) {
        std::string text;
        for (int row = 0; row < list.rowCount(); ++row) {
            text += list.summary(row).title.toStdString() + ";";
        }
        return text;
    }
    /// What is listed, told apart from notes of the same title.
    static std::vector<Uuid> notesIn(const NoteListModel& list) {
        std::vector<Uuid> notes;
        for (int row = 0; row < list.rowCount(); ++row)
            notes.push_back(list.noteAt(row));
        return notes;
    }
    /// What a list of the same place shows that was not there before.
    std::vector<Uuid> readAnew() {
        NoteListModel fresh(*environment);
        fresh.show(model().scope());
        EXPECT_TRUE(waitUntil([&] { return fresh.isComplete(); }));
        return notesIn(fresh);
    }
    CDNote& add(const std::string& title, CDNotebook* notebook = nullptr) {
        clock.advance(std::chrono::minutes(1));
        return addNote(title, "<p>" + title + " text</p>", notebook);
    }

    int resets = 0;

private:
    std::unique_ptr<NoteListModel> model_;
    std::unique_ptr<QAbstractItemModelTester> tester_;
};

TEST_F(NoteListModelTest, EachPlaceListsItsNotesInItsOrder) {
    const NoteService& notes = environment->notes();
    auto& work = environment->notebooks().findOrCreate(context(), "Work");
    CDTag& red = *environment->tags().findOrCreate(context(), "red");
    CDNote& plan = add("Plan", &work);
    CDNote& bill = add("bill");
    CDNote& old = add("Old");
    CDNote& form = add("Form");
    notes.addTag(plan, red);
    notes.setReminder(bill, clock.now() + std::chrono::hours(2));
    notes.setReminder(plan, clock.now() + std::chrono::hours(1));
    notes.moveToTrash(old);
    form.isTemplate = true;
    notes.pin(bill);
    clock.advance(std::chrono::minutes(1));
    notes.pin(plan);
    context().save();

    struct Case {
        Place place;
        NoteOrder order;
        const char* titles;
    };
    for (const auto& [place, order, expected] : {
             Case{{Kind::allNotes}, NoteOrder::updated, "Plan;bill;"},
             Case{{Kind::allNotes}, NoteOrder::created, "bill;Plan;"},
             Case{{Kind::allNotes}, NoteOrder::title, "bill;Plan;"},
             Case{{Kind::notebook, *work.id}, NoteOrder::updated, "Plan;"},
             Case{{Kind::tag, *red.id}, NoteOrder::updated, "Plan;"},
             Case{{Kind::tag, *work.id}, NoteOrder::updated, ""},        // of no tag
             Case{{Kind::pinned}, NoteOrder::title, "Plan;bill;"},       // last pinned first
             Case{{Kind::reminders}, NoteOrder::updated, "Plan;bill;"},  // soonest first
             Case{{Kind::templates}, NoteOrder::updated, "Form;"},
             Case{{Kind::trash}, NoteOrder::updated, "Old;"},
         }) {
        SCOPED_TRACE(place.address());
        model().show(NoteScope(place, order));
        ASSERT_TRUE(waitUntil([this] { return model().isComplete(); }));
        EXPECT_EQ(titles(), expected);
    }
}

TEST_F(NoteListModelTest, ANotePinnedElsewhereComesLastAndShowsNoDate) {
    environment->notes().pin(add("Ours"));
    add("Another program's").isPinned = true;
    context().save();
    model().show(NoteScope({Kind::pinned}));
    ASSERT_TRUE(waitUntil([this] { return model().isComplete(); }));
    EXPECT_EQ(titles(), "Ours;Another program's;");
    const auto spoken = model().index(1).data(Qt::AccessibleTextRole).toString();
    EXPECT_TRUE(spoken.startsWith("Another program's. ")) << spoken.toStdString();
}

TEST_F(NoteListModelTest, ChangesMoveSingleLinesAndKeepTheOthers) {
    CDNote& first = add("first");
    CDNote& second = add("second");
    add("third");
    model().show(NoteScope({Kind::allNotes}));
    resets = 0;
    const QPersistentModelIndex line = model().index(1);  // "second"

    add("fourth");
    EXPECT_EQ(titles(), "fourth;third;second;first;");
    clock.advance(std::chrono::minutes(1));
    environment->notes().updateNote(context(), first, {.title = "first again"});
    context().save();
    EXPECT_EQ(titles(), "first again;fourth;third;second;");
    EXPECT_EQ(line.row(), 3);
    environment->notes().moveToTrash(second);
    context().save();
    EXPECT_EQ(titles(), "first again;fourth;third;");
    EXPECT_FALSE(line.isValid());
    environment->notes().deleteNote(context(), first);
    context().save();
    EXPECT_EQ(titles(), "fourth;third;");
    EXPECT_EQ(resets, 0);
}

TEST_F(NoteListModelTest, WhatALineShowsFollowsTagsAndFiles) {
    CDNote& note = add("Plan");
    CDTag& tag = *environment->tags().findOrCreate(context(), "home");
    environment->notes().addTag(note, tag);
    context().save();
    model().show(NoteScope({Kind::allNotes}));
    EXPECT_EQ(model().summary(0).tags, QStringList("home"));
    EXPECT_EQ(model().summary(0).snippet, "Plan text");
    environment->tags().rename(context(), tag, "house");
    context().save();
    EXPECT_EQ(model().summary(0).tags, QStringList("house"));
}

TEST_F(NoteListModelTest, WhoeverChangesWhatItShowsWhatAListReadAnewWould) {
    test::NoteChanges changes(*environment, clock);
    const Uuid work = *environment->notebooks().findOrCreate(context(), "Work").id;
    const Uuid red = *environment->tags().findOrCreate(context(), "red")->id;
    for (int i = 0; i < 10; ++i)
        changes.make(context());
    const auto elsewhere = environment->store().newBackgroundContext();  // such as sync
    for (const auto& [kind, id, order] :
         {std::tuple(Kind::allNotes, Uuid{}, NoteOrder::updated),
          {Kind::allNotes, Uuid{}, NoteOrder::created},
          {Kind::allNotes, Uuid{}, NoteOrder::title},
          {Kind::notebook, work, NoteOrder::updated},
          {Kind::tag, red, NoteOrder::title},
          {Kind::pinned, Uuid{}, NoteOrder::updated},
          {Kind::trash, Uuid{}, NoteOrder::updated}}) {
        model().show(NoteScope({kind, id}, order));
        SCOPED_TRACE(model().scope().place().address() + " " + std::to_string(int(order)));
        ASSERT_TRUE(waitUntil([this] { return model().isComplete(); }));
        for (int save = 0; save < 25; ++save) {
            changes.make(save % 2 == 0 ? context() : *elsewhere);
            settle();
            ASSERT_EQ(notesIn(model()), readAnew()) << titles();
        }
    }
}

TEST_F(NoteListModelTest, ALongListIsThereAtOnceAndWholeSoon) {
    const int count = 450;
    for (int i = 0; i < count; ++i) {
        clock.advance(std::chrono::seconds(1));
        environment->notes().createNote(context(), {.title = std::to_string(i)});
    }
    context().save();
    model().show(NoteScope({Kind::allNotes}));
    EXPECT_EQ(model().rowCount(), int(NoteListModel::beginning));
    const QPersistentModelIndex line = model().index(150);
    ASSERT_TRUE(waitUntil([this] { return model().isComplete(); }));
    EXPECT_EQ(model().rowCount(), count);
    EXPECT_EQ(line.row(), 150);
    EXPECT_EQ(model().summary(count - 1).title, "0");

    // So many at once are read anew.
    environment->notes().emptyTrash(context());
    for (CDNote* note : context().fetch<CDNote>({.limit = NoteListModel::mostSingleChanges + 1})) {
        environment->notes().moveToTrash(*note);
    }
    context().save();
    ASSERT_TRUE(waitUntil([this] { return model().isComplete(); }));
    EXPECT_EQ(model().rowCount(), count - int(NoteListModel::mostSingleChanges) - 1);
}

}  // namespace
}  // namespace tesserine::app
