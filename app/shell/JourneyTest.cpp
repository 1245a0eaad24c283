#include "app/editor/NoticeBar.h"
#include "app/look/EmptyState.h"
#include "app/look/Theme.h"
#include "app/pages/ImportAssistant.h"
#include "app/shell/ShellFixture.h"
#include "app/tasks/TaskDetail.h"
#include "app/tasks/TaskListPage.h"
#include "app/tasks/TaskListView.h"
#include "app/tasks/TasksPage.h"
#include "app/tasks/UndoBar.h"
#include "tests/support/FaultyVFS.h"
#include "tests/support/TemporaryFolder.h"

#include <QClipboard>
#include <QDialog>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QPushButton>

namespace tesserine::app {
namespace {

using Kind = Place::Kind;

class Journey : public test::ShellFixture {
public:
    CDNote* stored(const std::string& title) {
        return context().fetchFirst<CDNote>({.predicate = {"title == %@", title}});
    }
    void typeAtTheEnd(const CDNote& note, const QString& words) {
        list().choose(*note.id);
        editor().body().setFocus();
        press(Qt::Key_End, Qt::ControlModifier);
        type(words);
    }
    std::string place() { return window().current().place.address(); }
    /// A second program on the same library.
    std::unique_ptr<TesserineStore> terminal() {
        return std::make_unique<TesserineStore>(
            StoreConfiguration{.directory = setting().library},
            StoreEnvironment{.clock = clock, .random = random});
    }
};

TEST_F(Journey, ANoteIsWrittenByKeysAndKeptWithoutSaving) {
    press(Qt::Key_N, Qt::ControlModifier);
    type("Lisbon in May");
    press(Qt::Key_Return);
    type("[] passports");
    press(Qt::Key_Return);
    type("camera");
    press(Qt::Key_Return, Qt::ControlModifier);
    ASSERT_TRUE(waitUntil([this] { return stored("Lisbon in May") != nullptr; }));
    ASSERT_TRUE(waitUntil([this] { return titles() == "Lisbon in May;"; })) << titles();
    press(Qt::Key_N, Qt::ControlModifier);  // leaving a note saves it
    EXPECT_EQ(
        stored("Lisbon in May")->html,
        "<ul class=\"ts-checklist\"><li data-checked=\"false\">passports</li>"
        "<li data-checked=\"true\">camera</li></ul>");
}

TEST_F(Journey, ANoteFromATemplateBeginsWithATitleOfItsOwn) {
    CDNote& form =
        environment->notes().saveAsTemplate(context(), addNote("Day", "<h1>Weather</h1>"));
    CDNotebook& diary = environment->notebooks().findOrCreate(context(), "Diary");
    environment->notebooks().setNoteTemplate(diary, &form);
    context().save();
    window().go({Kind::notebook, *diary.id});
    press(Qt::Key_N, Qt::ControlModifier);
    type("Monday");
    ASSERT_TRUE(window().save());
    ASSERT_NE(stored("Monday"), nullptr);
    EXPECT_EQ(stored("Monday")->html, "<h1>Weather</h1>");

    commands().trigger("note.fromTemplate");
    settle();
    press(Qt::Key_Return);
    type("Tuesday");
    ASSERT_TRUE(window().save());
    ASSERT_NE(stored("Tuesday"), nullptr);
    EXPECT_EQ(stored("Tuesday")->html, "<h1>Weather</h1>");
}

TEST_F(Journey, WhatAnotherProgramWritesAppearsInItsPlace) {
    addNote("Plan", "<p>mine</p>");
    CDNote& bill = addNote("Bill");
    window();
    ASSERT_TRUE(waitUntil([this] { return list().model().rowCount() == 2; }));
    list().choose(*bill.id);
    const auto other = terminal();
    clock.advance(std::chrono::minutes(1));
    environment->notes().createNote(other->viewContext(), {.title = "From the terminal"});
    other->viewContext().save();
    ASSERT_TRUE(waitUntil([this] { return list().model().rowCount() == 3; }));
    EXPECT_TRUE(titles().starts_with("From the terminal;"));
    EXPECT_EQ(list().selected(), std::vector{*bill.id});
    EXPECT_EQ(openTitle(), "Bill");
}

TEST_F(Journey, ANoteTrashedElsewhereWhileItIsTypedInKeepsTheWordsAndTheOthersStay) {
    addNote("Bill");
    addNote("Dog");
    CDNote& plan = addNote("Plan", "<p>first</p>");
    typeAtTheEnd(plan, " mine");
    const auto other = terminal();
    StoreContext& theirs = other->viewContext();
    environment->notes().moveToTrash(*theirs.find<CDNote>(*plan.id));
    theirs.save();
    ASSERT_TRUE(waitUntil([&] { return list().model().rowOf(*plan.id) < 0; }));
    EXPECT_EQ(list().model().rowCount(), 2) << titles();
    EXPECT_EQ(plan.html, "<p>first mine</p>");
}

TEST_F(Journey, ANoteDeletedElsewhereWhileItIsTypedInLeavesItsWordsAndAWindowThatGoesOn) {
    CDNote& plan = addNote("Plan", "<p>first</p>");
    typeAtTheEnd(plan, " mine");
    const auto other = terminal();
    StoreContext& theirs = other->viewContext();
    environment->notes().deleteNote(theirs, *theirs.find<CDNote>(*plan.id));
    theirs.save();
    ASSERT_TRUE(waitUntil([&] { return window().findChild<QMessageBox*>("notice") != nullptr; }));
    EXPECT_TRUE(window().findChild<QMessageBox*>("notice")->isEnabled());
    ASSERT_TRUE(waitUntil([&] { return titles() == "Plan;"; })) << titles();
    EXPECT_EQ(stored("Plan")->html, "<p>first mine</p>");
}

TEST_F(Journey, TypingAgainstAnotherWriterKeepsBothVersions) {
    CDNote& plan = addNote("Plan", "<p>first</p>");
    typeAtTheEnd(plan, " mine");
    const auto other = terminal();
    StoreContext& theirs = other->viewContext();
    environment->notes().updateNote(
        theirs, *theirs.find<CDNote>(*plan.id), {.html = "<p>theirs</p>"});
    theirs.save();
    ASSERT_TRUE(waitUntil([&] { return bool(plan.hasConflict); }));
    EXPECT_EQ(plan.html, "<p>first mine</p>");
    bool isKept = false;
    for (const CDNoteRevision* revision : environment->notes().revisions(plan)) {
        isKept |= revision->reason == "conflict" && revision->html == "<p>theirs</p>";
    }
    EXPECT_TRUE(isKept);
}

TEST_F(Journey, NotesGoToTheTrashAndComeBackByKeysAndClicks) {
    addNote("Plan");
    clock.advance(std::chrono::minutes(1));
    addNote("Bill");
    window();
    clickNote(0);
    press(Qt::Key_Delete);
    EXPECT_EQ(titles(), "Plan;");
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(titles(), "Bill;Plan;");
    EXPECT_EQ(list().selected(), std::vector{*stored("Bill")->id});
    EXPECT_EQ(openTitle(), "Bill") << "it is shown again";
    EXPECT_TRUE(list().view().hasFocus());
    clickNote(0);
    press(Qt::Key_Delete);
    auto* const undo = window().findChild<UndoBar*>()->findChild<QAbstractButton*>("undo");
    undo->setFocus();
    undo->click();
    EXPECT_EQ(titles(), "Bill;Plan;");
    EXPECT_TRUE(list().view().hasFocus());
    clickNote(0);
    clickNote(1, Qt::ControlModifier);
    press(Qt::Key_Delete);
    EXPECT_EQ(titles(), "");
    clickPlace({Kind::trash});
    ASSERT_EQ(list().model().rowCount(), 2);
    list().choose(*stored("Plan")->id);
    list().restore();
    EXPECT_EQ(titles(), "Bill;");
    clickNote(0);
    press(Qt::Key_Delete);
    answer("Delete Permanently");
    EXPECT_EQ(titles(), "");
    EXPECT_EQ(stored("Bill"), nullptr);
    clickPlace({Kind::allNotes});
    EXPECT_EQ(titles(), "Plan;");
}

TEST_F(Journey, EmptyingTheTrashAsksAndMakesABackup) {
    environment->notes().moveToTrash(addNote("Old"));
    context().save();
    clickPlace({Kind::trash});
    list().emptyTrash();
    answer("Cancel");
    settle();
    EXPECT_NE(stored("Old"), nullptr);
    list().emptyTrash();
    environment->notes().moveToTrash(addNote("Late"));
    context().save();
    answer("Empty Trash");
    ASSERT_TRUE(waitUntil([this] { return stored("Old") == nullptr; }));
    EXPECT_TRUE(waitUntil([this] { return titles() == "Late;"; })) << "nobody was asked about it";
    EXPECT_FALSE(std::filesystem::is_empty(setting().library / "Backups"));
    clickNote(0);
    list().deleteForGood();
    answer("Delete Permanently");
    EXPECT_EQ(window().findChildren<EmptyState*>().size(), 2);
    for (const EmptyState* one : window().findChildren<EmptyState*>()) {
        EXPECT_EQ(one->isVisible(), list().isAncestorOf(one)) << "no note is asked to be chosen";
    }
}

TEST_F(Journey, ATaskIsTypedAsASentence) {
    press(Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(place(), "tesserine://inbox");
    type("Pay the bill tomorrow 9am p1");
    press(Qt::Key_Return);
    const auto tasks = context().fetch<CDTask>();
    ASSERT_EQ(tasks.size(), 1U);
    EXPECT_EQ(tasks.front()->title.valueOr(""), "Pay the bill");
    EXPECT_EQ(tasks.front()->priority, std::int16_t{1});
    EXPECT_EQ(tasks.front()->dueDate, Instant::parseISO("2026-03-15T09:00:00Z"));
}

TEST_F(Journey, WhoWritesGoesOnInTheNoteThatALinkLeadsTo) {
    const CDNote& plan = addNote("Plan");
    const CDNote& bill = addNote("Bill");
    window().go({Kind::note, *plan.id});
    editor().body().setFocus();
    window().go({Kind::note, *bill.id});
    EXPECT_TRUE(editor().body().hasFocus());
    environment->notes().moveToTrash(*context().find<CDNote>(*plan.id));
    context().save();
    window().go({Kind::note, *plan.id});
    EXPECT_EQ(place(), "tesserine://trash");
    EXPECT_TRUE(editor().body().hasFocus());
}

TEST_F(Journey, WordsMeantForANoteThatGoesAreNotTypedIntoTheNextOne) {
    const CDNote& next = addNote("Next", "<p>Its words</p>");
    const CDNote& typed = addNote("Typed", "<p>first</p>");
    window().go({Kind::note, *typed.id});
    editor().body().setFocus();
    type("mine ");
    const auto other = terminal();
    StoreContext& theirs = other->viewContext();
    environment->notes().moveToTrash(*theirs.find<CDNote>(*typed.id));
    theirs.save();
    ASSERT_TRUE(waitUntil([this] { return openTitle() == "Next"; }));
    type("and more");
    press(Qt::Key_Return);
    type("and more");
    EXPECT_TRUE(window().save());
    EXPECT_EQ(next.html.valueOr(""), "<p>Its words</p>");
    EXPECT_FALSE(editor().isAncestorOf(QApplication::focusWidget()));
}

TEST_F(Journey, ANoteMovedElsewhereWhileItIsTypedInStaysOpen) {
    CDNotebook& work = environment->notebooks().findOrCreate(context(), "Work");
    for (const char* title : {"Bill", "Plan"}) {
        addNote(title, "<p>first</p>").notebook = &work;
    }
    context().save();
    CDNote& plan = *stored("Plan");
    const CDNote& bill = *stored("Bill");
    window().go({Kind::notebook, *work.id});
    typeAtTheEnd(plan, " mine");
    const auto other = terminal();
    StoreContext& theirs = other->viewContext();
    theirs.find<CDNote>(*plan.id)->notebook = nullptr;
    theirs.save();
    ASSERT_TRUE(waitUntil([&] { return titles() == "Bill;"; })) << titles();
    type(" and more");
    EXPECT_TRUE(window().save());
    EXPECT_EQ(plan.html, "<p>first mine and more</p>");
    EXPECT_EQ(bill.html, "<p>first</p>");
    // What is done to the note is not done to the one that is listed.
    commands().trigger("note.trash");
    EXPECT_TRUE(plan.trashedAt);
    EXPECT_FALSE(bill.trashedAt);
}

TEST_F(Journey, WhoWritesGoesOnInTheNoteWhenItsNotebookIsDeletedElsewhere) {
    CDNotebook& work = environment->notebooks().findOrCreate(context(), "Work");
    CDNote& plan = addNote("Plan", "<p>first</p>");
    plan.notebook = &work;
    const CDNote& next = addNote("Next", "<p>Its words</p>");
    context().save();
    window().go({Kind::notebook, *work.id});
    editor().body().setFocus();
    environment->notebooks().remove(context(), work);
    context().save();
    settle();
    EXPECT_EQ(place(), Place{Kind::allNotes}.address());
    type("mine ");
    EXPECT_TRUE(window().save());
    EXPECT_EQ(plan.html, "<p>mine first</p>");
    EXPECT_EQ(next.html, "<p>Its words</p>");
}

TEST_F(Journey, CommandsLeaveANoteAloneThatIsNotSeen) {
    const CDNote& plan = addNote("Plan", "<p>first</p>");
    window().go({Kind::note, *plan.id});
    editor().body().selectAll();
    for (const Place& away : {Place{Kind::inbox}, Place{.kind = Kind::search, .text = "x"}}) {
        window().go(away);
        for (const char* command : {"format.strike", "format.divider", "note.reminder"}) {
            commands().trigger(command);
            EXPECT_FALSE(commands().action(command).isEnabled()) << command;
        }
    }
    EXPECT_TRUE(editor().findChildren<QDialog*>().isEmpty());
    EXPECT_TRUE(window().save());
    EXPECT_EQ(plan.html, "<p>first</p>");
    window().go({Kind::note, *plan.id});
    EXPECT_TRUE(commands().action("format.strike").isEnabled());
}

TEST_F(Journey, KeysAfterANoteThatWasDeletedPressNoButton) {
    const Uuid plan = *addNote("Plan").id;
    window().go({Kind::note, plan});
    editor().body().setFocus();
    environment->notes().deleteNote(context(), *context().find<CDNote>(plan));
    context().save();
    settle();
    EXPECT_EQ(qobject_cast<QAbstractButton*>(QApplication::focusWidget()), nullptr);
}

TEST_F(Journey, WhatWasAskedAboutANoteIsNotDoneToTheOneThatTakesItsPlace) {
    const CDNote& next = addNote("Next", "<p>Its words</p>");
    const std::string html = next.html.valueOr("");
    for (const char* command : {"format.table", "format.link", "note.lock", "note.reminder"}) {
        SCOPED_TRACE(command);
        const CDNote& asked = addNote("Asked", "<p>Some words</p>");
        window().go({Kind::note, *asked.id});
        editor().body().selectAll();
        commands().trigger(command);
        ASSERT_FALSE(editor().findChildren<QDialog*>().isEmpty());
        environment->notes().deleteNote(context(), *context().find<CDNote>(*asked.id));
        context().save();
        EXPECT_EQ(openTitle(), "Next");
        settle();
        EXPECT_TRUE(editor().findChildren<QDialog*>().isEmpty());
    }
    EXPECT_TRUE(window().save());
    EXPECT_EQ(next.html.valueOr(""), html);
    EXPECT_FALSE(next.reminderAt);
}

TEST_F(Journey, APlaceThatIsDeletedElsewhereLeavesTheWindowInAllNotes) {
    const CDNotebook& work = environment->notebooks().findOrCreate(context(), "Work");
    context().save();
    window().go({Kind::notebook, *work.id});
    const auto other = terminal();
    StoreContext& theirs = other->viewContext();
    environment->notebooks().remove(theirs, *theirs.find<CDNotebook>(*work.id));
    theirs.save();
    ASSERT_TRUE(waitUntil([this] { return place() == "tesserine://notes"; }));
}

TEST_F(Journey, KeysGoOnInWhatIsShown) {
    addNote("Plan");
    addTask("Call Ana");
    window();
    EXPECT_EQ(QApplication::focusWidget(), &list().view());
    window().go({Kind::inbox});
    EXPECT_EQ(QApplication::focusWidget(), &window().tasks().listPage().list());
    window().go({Kind::allNotes});
    EXPECT_EQ(QApplication::focusWidget(), &list().view());
    window().sidebar().setFocus();
    window().go({Kind::inbox});
    EXPECT_EQ(QApplication::focusWidget(), &window().sidebar()) << "walking through the places";
    commands().trigger("go.calendar");
    EXPECT_EQ(QApplication::focusWidget(), window().findChild<QWidget*>("calendarGrid"));
    window().sidebar().setFocus();
    commands().trigger("go.allNotes");
    EXPECT_EQ(QApplication::focusWidget(), &list().view())
        << "a command leads to the notes themselves";
}

TEST_F(Journey, WordsForATaskGoOnWhenItsProjectGoes) {
    addNote("Plan");
    const CDTask& task = addTask("Call Ana #Work");
    CDProject& project = *task.project;
    window().go({Kind::project, *project.id});
    TaskListView& tasks = window().tasks().listPage().list();
    tasks.selectTask(*task.id);
    window().tasks().detail().findChild<QWidget*>("taskDetails")->setFocus();
    type("half ");
    environment->projects().rename(context(), project, "Job");
    context().save();
    EXPECT_EQ(tasks.selectedTasks(), std::vector{*task.id}) << "the other name";
    type("a ");
    environment->projects().remove(context(), project);
    context().save();
    type("sentence");
    EXPECT_TRUE(window().tasks().flush());
    EXPECT_EQ(task.details.valueOr(""), "half a sentence");
    EXPECT_EQ(place(), Place(Kind::task, *task.id).address());
}

TEST_F(Journey, WhereNothingIsListedTheKeysLeadToANewNote) {
    const auto focused = [] {
        const auto* const button = qobject_cast<QPushButton*>(QApplication::focusWidget());
        return button == nullptr ? std::string() : button->text().toStdString();
    };
    window();
    EXPECT_EQ(focused(), "New Note");
    press(Qt::Key_N, Qt::ControlModifier);
    type("Plan");
    list().setFocus();
    EXPECT_EQ(QApplication::focusWidget(), &list().view());
    press(Qt::Key_Delete);
    EXPECT_EQ(focused(), "New Note");
}

TEST_F(Journey, TheMenuOfWhatIsChosenOpensWithoutAMenuKey) {
    addNote("Plan");
    window();
    press(Qt::Key_F10, Qt::ShiftModifier);
    QWidget* const menu = QApplication::activePopupWidget();
    ASSERT_NE(menu, nullptr);
    menu->close();
}

TEST_F(Journey, CommandsActOnTheChosenNotes) {
    CDNote& plan = addNote("Plan");
    window();
    clickNote(0);
    press(Qt::Key_F9);
    EXPECT_FALSE(window().sidebar().isVisible());
    press(Qt::Key_P, Qt::ControlModifier | Qt::ShiftModifier);
    type("copy link");
    press(Qt::Key_Return);
    settle();
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), NoteService::noteURL(*plan.id));
    const QAction& pin = commands().action("note.pin");
    clickPlace({Kind::today});
    EXPECT_FALSE(pin.isEnabled()) << "no note is chosen among the tasks";
    commands().action("note.copyLink").trigger();
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), NoteService::noteURL(*plan.id));
    addNote("Bill");
    clickPlace({Kind::allNotes});
    EXPECT_TRUE(pin.isEnabled());
    list().view().clearSelection();
    EXPECT_FALSE(pin.isEnabled());
    list().view().selectAll();
    EXPECT_TRUE(pin.isEnabled());
    clickNote(0);
    window().close();
    closeWindow();
    window();
    commands().trigger("note.pin");
    EXPECT_TRUE(bool(context().find<CDNote>(list().selected().front())->isPinned))
        << "where the window goes on, too";
}

TEST_F(Journey, TagsOfSeveralNotesAreChangedAtOnce) {
    const CDNote& plan = addNote("Plan");
    const CDNote& list = addNote("List");
    window();
    clickNote(0);
    clickNote(1, Qt::ControlModifier);
    press(Qt::Key_T, Qt::ControlModifier | Qt::AltModifier);
    settle();
    type("garden");
    press(Qt::Key_Return);
    press(Qt::Key_Return);
    settle();
    EXPECT_EQ(plan.tags.all().size(), 1U);
    EXPECT_EQ(list.tags.all(), plan.tags.all());
}

TEST_F(Journey, FilesDroppedOnTheWindowAreOfferedForImport) {
    addNote("Plan");
    test::putContent(folder / "recipes.md", "# Soup");
    window();
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(QString::fromStdString((folder / "recipes.md").string()))});
    QMimeData words;
    words.setText("only words");
    for (const auto& [dragged, isTaken] : {std::pair(&words, false), std::pair(&files, true)}) {
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, dragged, Qt::LeftButton, Qt::NoModifier);
        enter.ignore();
        QApplication::sendEvent(&window(), &enter);
        EXPECT_EQ(enter.isAccepted(), isTaken);
    }
    QDropEvent drop({5, 5}, Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window(), &drop);
    EXPECT_NE(window().findChild<ImportAssistant*>(), nullptr);
    EXPECT_EQ(titles(), "Plan;") << "nothing comes in before it is asked for";
}

TEST_F(Journey, AFullDiskKeepsWhatWasTypedAndTheWindowWhereItIs) {
    test::FaultyVFS disk("journey");
    AppSetting onFaultyDisk = setting();
    onFaultyDisk.sqliteVFS = disk.name();
    open(onFaultyDisk);
    CDNote& plan = addNote("Plan", "<p>first</p>");
    list().choose(*plan.id);
    editor().body().setFocus();
    disk.fail(
        {.operation = test::FaultyVFS::Operation::write,
         .file = test::FaultyVFS::File::wal,
         .fault = test::FaultyVFS::Fault::full,
         .isLasting = true});
    type("typed ");
    const NoticeBar& line = editor().notice();
    EXPECT_TRUE(waitUntil([&] { return line.text().contains("could not be saved"); }));
    EXPECT_EQ(window().findChild<QMessageBox*>("notice"), nullptr) << "typing goes on";
    clickPlace({Kind::trash});
    EXPECT_EQ(place(), "tesserine://notes");
    EXPECT_NE(window().findChild<QMessageBox*>("notice"), nullptr);
    EXPECT_FALSE(window().close());
    disk.clear();
    EXPECT_TRUE(window().close());
    EXPECT_EQ(plan.html, "<p>typed first</p>");
    closeWindow();
    environment.reset();  // before its disk goes
}

}  // namespace
}  // namespace tesserine::app
