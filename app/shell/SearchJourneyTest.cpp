#include "app/editor/NoticeBar.h"
#include "app/look/EmptyState.h"
#include "app/look/Theme.h"
#include "app/search/ResultDelegate.h"
#include "app/search/SearchField.h"
#include "app/search/SearchResults.h"
#include "app/shell/ShellFixture.h"
#include "app/tasks/TasksPage.h"
#include "search/SearchCoordinator.h"

#include <QContextMenuEvent>
#include <QInputDialog>
#include <QListView>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QTextEdit>

namespace tesserine::app {
namespace {

using Kind = Place::Kind;

class SearchJourney : public test::ShellFixture {
public:
    std::string place() { return window().current().place.address(); }
};

TEST_F(SearchJourney, AResultIsOpenedWhereItsWordsStandEvenWhenTheyWereCorrected) {
    std::string text = "<p>Shelves for the kitchen.</p>";
    for (int i = 0; i < 200; ++i) {
        text += "<p>Nothing of that.</p>";
    }
    addNote("Kitchen", text + "<p>The carpenter comes on Monday.</p>");
    environment->search().catchUp();
    window();
    struct Case {
        const char* query;
        const char* marked;
    };
    for (const auto& [query, marked] : {
             Case{"carpenter", "carpenter"},
             Case{"carpentar", "carpenter"},
             Case{"MONDAY carp*", "carpenter, Monday"},
             Case{"\"comes on\" -shop", "comes on"},
         }) {
        SCOPED_TRACE(query);
        auto& found = window().searchResults();
        bool isAnswered = false;
        const QObject listener;
        QObject::connect(
            &found.runner(), &SearchRunner::answered, &listener, [&] { isAnswered = true; });
        window().go({.kind = Kind::search, .text = query});
        ASSERT_TRUE(waitUntil([&] { return isAnswered; }));
        QListView& results = found.list();
        ASSERT_EQ(results.model()->rowCount(), 1);
        results.setCurrentIndex(results.model()->index(0, 0));
        ASSERT_TRUE(waitUntil([this] { return !editor().body().isLoading(); }));
        BodyEdit& body = editor().body();
        EXPECT_GT(body.verticalScrollBar()->value(), 0) << "the paragraph is far down";
        EXPECT_EQ(body.textCursor().block().text(), "The carpenter comes on Monday.");
        QStringList texts;
        for (const auto& selection : body.extraSelections()) {
            const bool isMark = selection.format.background() == Theme::colors().highlight;
            if (isMark) texts << selection.cursor.selectedText();
        }
        EXPECT_EQ(texts.join(", ").toStdString(), marked);
        window().go({Kind::allNotes});
        body.moveCursor(QTextCursor::Start);
    }
}

TEST_F(SearchJourney, WordsAreShownInANoteThatIsOpenAlreadyAndInATable) {
    std::string text = "<p>poci\u0105g</p>";
    for (int i = 0; i < 100; ++i) {
        text += "<p>Nothing of that.</p>";
    }
    text +=
        "<table><tbody><tr><td>Schildkr\u00f6te</td><td>t\u0119sknota</td></tr></tbody></table>";
    addNote("Words", text);
    environment->search().catchUp();
    window();
    press(Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
    type("schildkrote tesknota");
    QListView& results = window().searchResults().list();
    ASSERT_TRUE(waitUntil([&] { return results.model()->rowCount() == 1; }));
    const auto click = [&] {
        const QRect line = results.visualRect(results.model()->index(0, 0));
        QTest::mouseClick(results.viewport(), Qt::LeftButton, {}, line.center());
    };
    const auto chosen = [this] { return editor().body().textCursor().selectedText(); };
    const QString table(QChar::ObjectReplacementCharacter);
    click();
    EXPECT_EQ(chosen(), table);
    EXPECT_GT(editor().body().verticalScrollBar()->value(), 0) << "it is far down";

    editor().body().moveCursor(QTextCursor::Start);
    click();
    EXPECT_EQ(chosen(), table) << "the line is the chosen one already";

    for (const char* const query : {"pociag", "tesknota"}) {
        SCOPED_TRACE(query);
        press(Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
        type(query);
        press(Qt::Key_Return);
        const bool isInTable = std::string(query) == "tesknota";
        EXPECT_TRUE(waitUntil([&] { return (chosen() == table) == isInTable; }));
        EXPECT_EQ(editor().body().verticalScrollBar()->value() > 0, isInTable);
        EXPECT_TRUE(window().searchField().hasFocus());
    }
}

TEST_F(SearchJourney, ALineOfATaskSaysWhenItIsDueAndWhereItBelongs) {
    environment->projects().create(context(), "House");
    context().save();
    addTask("Call plumber tomorrow 3pm #House @phone");
    addTask("Call Ann");
    environment->search().catchUp();
    window().go({.kind = Kind::search, .text = "call"});
    QListView& results = window().searchResults().list();
    ASSERT_TRUE(waitUntil([&] { return results.model()->rowCount() == 2; }));
    const auto* const lines = qobject_cast<ResultDelegate*>(results.itemDelegate());
    ASSERT_NE(lines, nullptr);
    for (int row = 0; row < 2; ++row) {
        const bool isPlumber = results.model()->index(row, 0).data() == "Call plumber";
        EXPECT_EQ(
            lines->details(row).toStdString(),
            isPlumber ? "Tomorrow 15:00  ·  #House  ·  @phone" : "");
    }
}

TEST_F(SearchJourney, ASearchIsTypedWalkedThroughAndLeft) {
    addNote("Invoice for May", "<p>The invoice of the carpenter.</p>");
    addNote("Lisbon", "<p>Train at 9:40.</p>");
    environment->search().catchUp();
    window();
    press(Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
    type("train");
    QAbstractItemModel* results = window().searchResults().list().model();
    ASSERT_TRUE(waitUntil([&] { return results->rowCount() == 1; }));
    EXPECT_EQ(place(), "tesserine://search/train");
    press(Qt::Key_Return);
    window().searchResults().list().setFocus();
    press(Qt::Key_Down);
    ASSERT_TRUE(waitUntil([this] { return openTitle() == "Lisbon"; }));
    window().searchField().setFocus();
    press(Qt::Key_Escape);
    EXPECT_EQ(place(), "tesserine://notes");
    EXPECT_EQ(window().searchField().text(), "");
}

TEST_F(SearchJourney, AResultGoesToTheTrashByItsKeyAndComesBack) {
    for (const char* title : {"Lisbon", "Porto", "Faro"}) {
        addNote(title, "<p>Train at 9:40.</p>");
    }
    environment->search().catchUp();
    window().go({.kind = Kind::search, .text = "train sort:oldest"});
    QListView& results = window().searchResults().list();
    ASSERT_TRUE(waitUntil([&] { return results.model()->rowCount() == 3; }));
    results.setFocus();
    results.setCurrentIndex(results.model()->index(1, 0));
    const std::string second = openTitle();
    results.setCurrentIndex(results.model()->index(0, 0));
    const std::string first = openTitle();
    press(Qt::Key_Delete);
    ASSERT_TRUE(waitUntil([&] { return results.model()->rowCount() == 2; }));
    EXPECT_EQ(openTitle(), second) << "who walks through the results goes on with the next";
    press(Qt::Key_Z, Qt::ControlModifier);
    ASSERT_TRUE(waitUntil([&] { return results.model()->rowCount() == 3; }));

    // Who writes in the note stays there when another program throws it away.
    const Uuid open = *window().notes().openedNote();
    editor().body().setFocus();
    environment->notes().moveToTrash(*context().find<CDNote>(open));
    context().save();
    ASSERT_TRUE(waitUntil([&] { return results.model()->rowCount() == 2; }));
    EXPECT_EQ(openTitle(), second);
    auto* const restore = editor().notice().findChild<QPushButton*>();
    ASSERT_NE(restore, nullptr);
    restore->click();
    EXPECT_FALSE(context().find<CDNote>(open)->trashedAt);
    EXPECT_NE(first, second);

    environment->notes().moveToTrash(*context().find<CDNote>(open));
    context().save();
    environment->search().catchUp();
    window().go({.kind = Kind::search, .text = "in:trash"});
    ASSERT_TRUE(waitUntil([&] { return results.model()->rowCount() == 1; }));
    results.setFocus();
    results.setCurrentIndex(results.model()->index(0, 0));
    press(Qt::Key_Delete);
    EXPECT_NE(window().findChild<QMessageBox*>(), nullptr) << "before it goes for good";
}

TEST_F(SearchJourney, ASavedSearchAsksWhatOthersMadeOfIt) {
    addNote("Lisbon", "<p>Train at 9:40.</p>");
    auto& search = environment->savedSearches().create(context(), "Travel", "ferry");
    context().save();
    window().go({Kind::savedSearch, *search.id});
    EXPECT_EQ(window().searchField().text(), "ferry");
    environment->savedSearches().setQuery(search, "train");
    context().save();
    EXPECT_EQ(window().searchField().text(), "train");
    environment->savedSearches().remove(context(), search);
    context().save();
    EXPECT_EQ(place(), "tesserine://notes");
}

TEST_F(SearchJourney, AResultIsOpenedAgainByAClickAfterOnesWayElsewhere) {
    addNote("Lisbon", "<p>Train at 9:40.</p>");
    const Uuid search = *environment->savedSearches().create(context(), "Travel", "train").id;
    context().save();
    environment->search().catchUp();
    QListView& results = window().searchResults().list();
    for (int round = 0; round < 2; ++round) {
        window().go({Kind::savedSearch, search});
        ASSERT_TRUE(waitUntil([&] { return results.model()->rowCount() == 1; }));
        settle();
        EXPECT_FALSE(window().notes().openedNote());
        EXPECT_FALSE(results.currentIndex().isValid());
        QTest::mouseClick(
            results.viewport(),
            Qt::LeftButton,
            {},
            results.visualRect(results.model()->index(0, 0)).center());
        EXPECT_TRUE(window().notes().openedNote());
        window().go({Kind::allNotes});
    }
    window().goBack();
    EXPECT_TRUE(window().notes().openedNote()) << "with the note that was read there";
}

TEST_F(SearchJourney, ATaskThatIsChosenLeavesNoNoteToActOn) {
    const Uuid note = *addNote("Lisbon", "<p>Train at 9:40.</p>").id;
    const Uuid task = *addTask("Book the train").id;
    context().save();
    environment->search().catchUp();
    window().go({.kind = Kind::search, .text = "train sort:oldest"});
    QListView& results = window().searchResults().list();
    ASSERT_TRUE(waitUntil([&] { return results.model()->rowCount() == 2; }));
    results.setFocus();
    results.setCurrentIndex(results.model()->index(0, 0));
    ASSERT_EQ(window().notes().openedNote(), note);
    results.setCurrentIndex(results.model()->index(1, 0));
    EXPECT_FALSE(window().notes().openedNote());
    press(Qt::Key_Delete);
    EXPECT_FALSE(context().find<CDNote>(note)->trashedAt);
    press(Qt::Key_Up);
    EXPECT_EQ(window().notes().openedNote(), note);
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    EXPECT_EQ(window().current().place, (Place{Kind::task, task}));
}

TEST_F(SearchJourney, AResultHasTheMenuOfItsNote) {
    const Uuid note = *addNote("Lisbon", "<p>Train at 9:40.</p>").id;
    addTask("Book the train");
    environment->search().catchUp();
    window().go({.kind = Kind::search, .text = "train sort:oldest"});
    QListView& results = window().searchResults().list();
    ASSERT_TRUE(waitUntil([&] { return results.model()->rowCount() == 2; }));
    const auto press = [&](int row, const char* entry) {
        const QPoint place = results.visualRect(results.model()->index(row, 0)).center();
        QTest::mouseClick(results.viewport(), Qt::RightButton, {}, place);
        QContextMenuEvent asked(
            QContextMenuEvent::Mouse, place, results.viewport()->mapToGlobal(place));
        QApplication::sendEvent(results.viewport(), &asked);
        const std::unique_ptr<QMenu> menu(results.findChild<QMenu*>("resultMenu"));
        if (!menu) return false;
        for (QAction* action : menu->actions()) {
            if (action->text() == entry) action->trigger();
        }
        return true;
    };
    EXPECT_FALSE(press(1, "Pin"));
    EXPECT_TRUE(press(0, "Pin"));
    EXPECT_TRUE(context().find<CDNote>(note)->isPinned);
    EXPECT_TRUE(press(0, "Open in New Tab"));
    EXPECT_EQ(window().current().place, (Place{Kind::allNotes}));
    EXPECT_EQ(openTitle(), "Lisbon");
}

TEST_F(SearchJourney, TheLineOfTheNoteThatIsReadIsTheChosenOne) {
    for (const char* title : {"Lisbon", "Porto", "Faro"}) {
        addNote(title, "<p>Train at 9:40.</p>");
    }
    const Uuid search =
        *environment->savedSearches().create(context(), "Travel", "train sort:oldest").id;
    context().save();
    environment->search().catchUp();
    QListView& results = window().searchResults().list();
    const auto read = [&](int row) { results.setCurrentIndex(results.model()->index(row, 0)); };
    const auto isChosen = [&](int row, const char* title) {
        return waitUntil([&] { return results.currentIndex().row() == row; })
               && openTitle() == title;
    };
    window().go({Kind::savedSearch, search});
    ASSERT_TRUE(waitUntil([&] { return results.model()->rowCount() == 3; }));
    read(1);
    window().openTab(window().current().place);
    ASSERT_TRUE(waitUntil([&] { return !window().notes().openedNote(); }));
    settle();
    read(2);
    window().turnTabs(-1);
    EXPECT_TRUE(isChosen(1, "Porto")) << "the tabs ask the same and read different notes";
    window().turnTabs(1);
    EXPECT_TRUE(isChosen(2, "Faro"));
    window().go({.kind = Kind::search, .text = "train"});
    EXPECT_FALSE(window().notes().openedNote()) << "it was read in the other search";
    window().goBack();
    EXPECT_TRUE(isChosen(2, "Faro"));
    results.setFocus();
    window().go({.kind = Kind::search, .text = "nothing"});
    ASSERT_TRUE(waitUntil([&] { return !results.isVisible(); }));
    window().goBack();
    EXPECT_TRUE(isChosen(2, "Faro")) << "the list has the keys when its lines come";
}

TEST_F(SearchJourney, TheSearchFieldIsReadyForAnotherQueryOrMoreOfThisOne) {
    addNote("Lisbon", "<p>Train at 9:40.</p>");
    environment->search().catchUp();
    window().go({Kind::today});
    press(Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
    type("train");
    press(Qt::Key_Return);
    QListView& results = window().searchResults().list();
    ASSERT_TRUE(waitUntil([&] { return results.model()->rowCount() == 1; }));
    results.setFocus();
    EXPECT_FALSE(window().notes().openedNote());
    window().searchField().setFocus();
    press(Qt::Key_Down);
    EXPECT_TRUE(results.selectionModel()->isRowSelected(0));
    window().searchField().setFocus();
    press(Qt::Key_Return);
    EXPECT_EQ(openTitle(), "Lisbon") << "the note that is read stays";
    press(Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
    type("lis");
    EXPECT_EQ(window().searchField().text().toStdString(), "lis");
    const auto* suggestions = window().searchField().findChild<QListWidget*>("suggestions");
    ASSERT_TRUE(waitUntil([&] { return suggestions->isVisible(); }));
    press(Qt::Key_Tab);
    type("9:40");
    EXPECT_EQ(window().searchField().text().toStdString(), "lisbon 9:40");
    press(Qt::Key_Escape);
    press(Qt::Key_Escape);
    EXPECT_EQ(place(), "tesserine://today") << "one step, however often it was typed";
}

TEST_F(SearchJourney, WhatIsSearchedForIsKeptByACommand) {
    window();
    const QAction& keep = commands().action("search.save");
    EXPECT_FALSE(keep.isEnabled());
    window().go({.kind = Kind::search, .text = "ferry"});
    EXPECT_TRUE(keep.isEnabled());
    commands().trigger("search.save");
    auto* dialog = window().findChild<QDialog*>("saveSearchDialog");
    ASSERT_NE(dialog, nullptr);
    dialog->accept();
    const auto* kept = context().fetchFirst<CDSavedSearch>({});
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(kept->query, "ferry");
    window().go({Kind::allNotes});
    EXPECT_FALSE(keep.isEnabled());
}

TEST_F(SearchJourney, ASavedSearchIsChangedByKeepingAnotherQueryUnderItsName) {
    environment->savedSearches().create(context(), "Travel", "ferry");
    context().save();
    const auto keepAs = [&](const char* query, const char* answer) {
        window().go({.kind = Kind::search, .text = query});
        commands().trigger("search.save");
        auto* dialog = window().findChild<QInputDialog*>("saveSearchDialog");
        dialog->setTextValue("travel");
        dialog->accept();
        const auto* question = window().findChild<QMessageBox*>("question");
        EXPECT_EQ(question->defaultButton()->text(), "Keep Both") << "nothing is lost by Return";
        const auto buttons = question->buttons();
        for (QAbstractButton* button : buttons) {
            if (button->text() == answer) button->click();
        }
        settle();
        std::string all;
        for (const CDSavedSearch* kept : environment->savedSearches().list(context())) {
            all += kept->name.valueOr("") + ": " + kept->query.valueOr("") + "; ";
        }
        return all;
    };
    EXPECT_EQ(keepAs("train", "Change It"), "Travel: train; ");
    EXPECT_EQ(keepAs("bus", "Keep Both"), "Travel: train; travel: bus; ");
}

TEST_F(SearchJourney, AResultIsNotTakenForTrashBecauseTheTrashWasShown) {
    addNote("Lisbon", "<p>Train at 9:40.</p>");
    environment->search().catchUp();
    window().go({Kind::trash});
    window().go({.kind = Kind::search, .text = "train"});
    QListView& results = window().searchResults().list();
    ASSERT_TRUE(waitUntil([&] { return results.model()->rowCount() == 1; }));
    results.setCurrentIndex(results.model()->index(0, 0));
    ASSERT_TRUE(waitUntil([this] { return openTitle() == "Lisbon"; }));
    EXPECT_EQ(editor().notice().text(), "");
}

TEST_F(SearchJourney, BesideNoResultsNoneIsAskedToBeChosen) {
    addNote("Lisbon", "<p>Train at 9:40.</p>");
    environment->search().catchUp();
    window();
    settle();
    struct Case {
        const char* query;
        int results;
    };
    for (const auto& [query, count] : {Case{"ferry", 0}, Case{"train", 1}, Case{"trams", 0}}) {
        SCOPED_TRACE(query);
        window().go({.kind = Kind::search, .text = query});
        QListView& results = window().searchResults().list();
        ASSERT_TRUE(waitUntil([&] { return results.model()->rowCount() == count; }));
        settle();
        int asking = 0;
        for (const auto* state : window().notes().findChildren<EmptyState*>()) {
            const bool isBeside = !window().searchResults().isAncestorOf(state);
            if (isBeside && state->isVisible()) ++asking;
        }
        EXPECT_EQ(asking, count);
    }
}

TEST_F(SearchJourney, FromTheFieldOneGoesBackToTheResultThatIsRead) {
    for (const char* title : {"Lisbon", "Porto"}) {
        addNote(title, "<p>Train at 9:40.</p>");
    }
    environment->search().catchUp();
    window().go({.kind = Kind::search, .text = "train"});
    QListView& results = window().searchResults().list();
    ASSERT_TRUE(waitUntil([&] { return results.model()->rowCount() == 2; }));
    window().searchField().setFocus();
    press(Qt::Key_Down);
    EXPECT_EQ(results.currentIndex().row(), 0);
    press(Qt::Key_Down);
    const std::string read = openTitle();
    window().searchField().setFocus();
    press(Qt::Key_Down);
    EXPECT_TRUE(results.hasFocus());
    EXPECT_EQ(results.currentIndex().row(), 1);
    EXPECT_EQ(openTitle(), read);
}

TEST_F(SearchJourney, WhoComesBackToASearchGoesOnWhereTheKeysWere) {
    addNote("Lisbon", "<p>Train at 9:40.</p>");
    environment->search().catchUp();
    window().openTab({Kind::allNotes});
    press(Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
    type("train");
    QListView& results = window().searchResults().list();
    ASSERT_TRUE(waitUntil([&] { return results.model()->rowCount() == 1; }));
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    ASSERT_TRUE(editor().body().hasFocus());

    struct Way {
        Qt::Key there;
        Qt::Key back;
        Qt::KeyboardModifiers modifiers;
        Qt::KeyboardModifiers backModifiers;
    };
    const Way ways[] = {
        {Qt::Key_Tab,
         Qt::Key_Backtab,
         Qt::ControlModifier,
         Qt::ControlModifier | Qt::ShiftModifier},
        {Qt::Key_Left, Qt::Key_Right, Qt::AltModifier, Qt::AltModifier}};
    const auto leaveAndReturn = [&](const Way& way) {
        press(way.there, way.modifiers);
        EXPECT_EQ(place(), "tesserine://notes");
        settle();
        press(way.back, way.backModifiers);
        EXPECT_EQ(place(), "tesserine://search/train");
        settle();
    };
    QString written;
    for (const Way& way : ways) {
        SCOPED_TRACE(way.there);
        ASSERT_EQ(openTitle(), "Lisbon");
        type("Half a sentence ");
        leaveAndReturn(way);
        ASSERT_TRUE(editor().body().hasFocus());
        type("and the other half. ");
        written += "Half a sentence and the other half. ";
        EXPECT_EQ(editor().body().toPlainText(), written + "Train at 9:40.");
        EXPECT_EQ(window().searchField().text().toStdString(), "train");

        // Of the results the same one is chosen, and none opened by the way.
        results.setFocus();
        leaveAndReturn(way);
        EXPECT_TRUE(waitUntil([&] { return results.hasFocus(); }));
        EXPECT_EQ(openTitle(), "Lisbon");
        editor().body().setFocus();
    }

    // A query that was being typed goes on, instead of being replaced.
    for (const Way& way : ways) {
        SCOPED_TRACE(way.there);
        window().searchField().setFocus();
        leaveAndReturn(way);
        EXPECT_TRUE(window().searchField().hasFocus());
        EXPECT_EQ(window().searchField().selectedText(), "");
    }
}

TEST_F(SearchJourney, AfterAStartTheTabOfAResultLeavesTheKeysToWhoWrites) {
    const Uuid note = *addNote("Lisbon", "<p>Train at 9:40.</p>").id;
    environment->search().catchUp();
    window().go({Kind::note, note});
    window().openTab({.kind = Kind::search, .text = "train"});
    QListView& found = window().searchResults().list();
    ASSERT_TRUE(waitUntil([&] { return found.model()->rowCount() == 1; }));
    found.setCurrentIndex(found.model()->index(0, 0));
    press(Qt::Key_Tab, Qt::ControlModifier);
    window().close();
    closeWindow();

    for (const bool isWriting : {true, false}) {
        isWriting ? editor().body().setFocus() : list().setFocus();
        press(Qt::Key_Tab, Qt::ControlModifier);
        EXPECT_EQ(place(), "tesserine://search/train");
        EXPECT_EQ(openTitle(), "Lisbon");
        EXPECT_FALSE(window().searchField().hasFocus());
        EXPECT_EQ(editor().body().hasFocus(), isWriting);
        closeWindow();
    }
}

TEST_F(SearchJourney, ASearchTakesTheKeysOnlyWhereTheyWouldBeLost) {
    addNote("Plan");
    window().go({Kind::today});
    window().tasks().findChild<QTextEdit*>("quickAddField")->setFocus();
    window().go({.kind = Kind::search, .text = "plan"});
    EXPECT_TRUE(window().searchField().hasFocus());
    window().sidebar().setFocus();
    window().go({.kind = Kind::search, .text = "other"});
    EXPECT_TRUE(window().sidebar().hasFocus());
}

}  // namespace
}  // namespace tesserine::app
