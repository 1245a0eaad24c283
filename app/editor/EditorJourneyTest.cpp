#include "app/editor/EditorFixture.h"
#include "app/editor/EditorPreferences.h"
#include "app/editor/EditorSettings.h"
#include "app/editor/FindBar.h"
#include "app/editor/TableDialog.h"
#include "base/Preferences.h"
#include "core/body/LockedPassages.h"
#include "core/model/NoteEntities.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QLabel>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QTableWidget>
#include <QTextBlock>

namespace tesserine::app {
namespace {

/// What somebody does with a note, by keys, clicks and commands.
class EditorJourney : public test::EditorFixture {
public:
    TableDialog& tableDialog() { return *editor.findChild<TableDialog*>("tableDialog"); }
    void press(QWidget& parent, const QString& button) {
        for (auto* const found : parent.findChildren<QPushButton*>()) {
            if (found->text() == button) found->click();
        }
    }
    void fill(int row, int column, const QString& text) {
        tableDialog().findChild<QTableWidget*>("tableGrid")->item(row, column)->setText(text);
    }
    /// A picture of the note, 200 by 100 pixels, as the HTML that shows it.
    std::string addPicture(CDNote& note) {
        const CDAttachment& picture = environment->attachments().insert(
            context(), note, {.filename = "green.png", .data = png({200, 100}, Qt::darkGreen)});
        context().save();
        return AttachmentService::bodyElement(picture);
    }
    void drag(const QPoint& from, const QPoint& to) {
        QWidget* const view = editor.body().viewport();
        QTest::mousePress(view, Qt::LeftButton, {}, from);
        QTest::mouseMove(view, to);
        QTest::mouseRelease(view, Qt::LeftButton, {}, to);
    }
};

TEST_F(EditorJourney, ATableIsMadeFilledAndChanged) {
    const CDNote& note = openNote("<p>a|b</p>");
    commands.trigger("format.table");
    fill(0, 0, "Kind");
    fill(1, 0, "Seeds & string");
    press(tableDialog(), "Remove Column");
    press(tableDialog(), "Remove Column");
    press(tableDialog(), "Remove Row");
    press(tableDialog(), "Done");
    ASSERT_TRUE(editor.save());
    const std::string made = *note.html;
    EXPECT_NE(made.find("<table>"), std::string::npos);
    EXPECT_TRUE(made.starts_with("<p>ab</p><table><tr>")) << made;
    settle();

    editor.body().setTextCursor(document().find(QString(QChar::ObjectReplacementCharacter)));
    commands.trigger("format.table");
    press(tableDialog(), "Add Row");
    const auto* const grid = tableDialog().findChild<QTableWidget*>("tableGrid");
    EXPECT_EQ(grid->currentRow(), 1) << "what is typed next goes into the new row";
    press(tableDialog(), "Done");
    EXPECT_NE(html(), made);
    commands.trigger("edit.undo");
    EXPECT_EQ(html(), made);
    commands.trigger("edit.undo");
    EXPECT_EQ(html(), "<p>ab</p>");
}

TEST_F(EditorJourney, TabLeadsFromTheLastCellOfATableIntoANewRow) {
    openNote("<p>|</p>");
    commands.trigger("format.table");
    press(tableDialog(), "Remove Column");
    for (const char* const word : {"Place", "Time", "Weir", "12", "Lock", "25", "Mill", "31"}) {
        QWidget* const grid = tableDialog().findChild<QTableWidget*>("tableGrid");
        if (QString(word) == "Place") QTest::keyClick(grid, Qt::Key_F2);
        QTest::keyClicks(grid->findChild<QLineEdit*>(), word);
        if (QString(word) != "31") QTest::keyClick(grid->findChild<QLineEdit*>(), Qt::Key_Tab);
        settle();
    }
    press(tableDialog(), "Done");
    EXPECT_EQ(
        html(),
        "<table><tr><th>Place</th><th>Time</th></tr><tr><td>Weir</td><td>12</td></tr>"
        "<tr><td>Lock</td><td>25</td></tr><tr><td>Mill</td><td>31</td></tr></table>");
}

TEST_F(EditorJourney, ATableThatIsNotSimpleSaysThatItStaysAsItIs) {
    openNote("<p>|a</p><table><tr><td colspan=\"2\">wide</td></tr>"
             "<tr><td>b</td><td>c</td></tr></table>");
    emit editor.body().objectActivated(2);
    EXPECT_EQ(editor.findChild<TableDialog*>(), nullptr);
    auto* const notice = editor.findChild<QMessageBox*>("notice");
    ASSERT_NE(notice, nullptr);
    notice->close();
    settle();
}

TEST_F(EditorJourney, AFilledTableIsNotThrownAwayUnasked) {
    openNote("<p>a|</p>");
    commands.trigger("format.table");
    QTest::keyClick(&tableDialog(), Qt::Key_Escape);
    settle();
    EXPECT_EQ(editor.findChild<TableDialog*>(), nullptr) << "nothing was filled in";
    commands.trigger("format.table");
    fill(0, 0, "Kind");
    const auto answer = [this](QMessageBox::StandardButton kept) {
        QTest::keyClick(&tableDialog(), Qt::Key_Escape);
        auto* const question = tableDialog().findChild<QMessageBox*>("question");
        ASSERT_NE(question, nullptr);
        kept == QMessageBox::Cancel ? question->button(kept)->click()
                                    : press(*question, "Throw Away");
        settle();
    };
    answer(QMessageBox::Cancel);
    ASSERT_TRUE(tableDialog().isVisible());
    answer(QMessageBox::NoButton);
    EXPECT_EQ(editor.findChild<TableDialog*>(), nullptr);
    EXPECT_EQ(html(), "<p>a</p>");
}

TEST_F(EditorJourney, WhatIsWrittenInATableStaysWhateverOthersChange) {
    const std::string table = "<table><tr><td>one</td></tr></table>";
    const std::string mine = "<table><tr><td>mine</td></tr></table>";
    const std::string theirs = "<table><tr><td>theirs</td></tr></table>";
    struct Case {
        std::string changed;
        std::string expected;
    };
    for (const auto& [changed, expected] : {
             Case{"<p>new</p><p>a</p>" + table, "<p>new</p><p>a</p>" + mine},
             Case{"<p>a</p>" + theirs, "<p>a</p>" + mine + theirs},
             Case{"<p>a</p>", "<p>a</p>" + mine},
         }) {
        SCOPED_TRACE(changed);
        CDNote& note = openNote("<p>a|</p>" + table);
        ASSERT_TRUE(editor.body().findChild<TableDialog*>() == nullptr);
        emit editor.body().objectActivated(2);
        fill(0, 0, "mine");
        change(note, changed);
        press(tableDialog(), "Done");
        EXPECT_EQ(html(), expected);
        EXPECT_TRUE(editor.save());
        settle();
    }
}

TEST_F(EditorJourney, AnObjectTakesClicksThoughOnlyTheCursorWasDrawnSince) {
    openNote("<p>a|</p><p></p>" + lockedBlock("QUJD") + "<p>b</p>");
    const auto place = [this] {
        return static_cast<int>(document().content().text.find(AttributedText::objectCharacter));
    };
    QList<int> clicked;
    editor.body().disconnect(&editor);  // no dialog is wanted here
    QObject::connect(&editor.body(), &BodyEdit::objectActivated, &editor, [&](int position) {
        clicked.append(position);
    });
    QWidget* const view = editor.body().viewport();
    const auto click = [&] {
        QTextCursor block(&document());
        block.setPosition(place());
        const QPoint point = editor.body().cursorRect(block).center() + QPoint(20, 0);
        view->repaint(editor.body().cursorRect());
        QTest::mouseClick(view, Qt::LeftButton, {}, point);
    };
    settle();
    click();
    EXPECT_EQ(clicked, QList<int>{place()});
    editor.body().moveCursor(QTextCursor::Start);
    type("words ");
    click();
    ASSERT_EQ(clicked.size(), 2);
    EXPECT_EQ(clicked.back(), place()) << "it moved along with the words before it";
}

TEST_F(EditorJourney, ClicksGoToTheCellThatIsSeenAndBesideTheTableBehindIt) {
    const std::string table =
        "<table><tr><td>a</td><td>b</td></tr><tr><td>c</td><td>d</td></tr></table>";
    openNote("<p>a|</p>" + table + "<p>b</p>");
    settle();
    QTextCursor behind(&document());
    behind.setPosition(3);
    const QPoint corner = editor.body().cursorRect(behind).bottomLeft();
    QWidget* const view = editor.body().viewport();
    QTest::mouseDClick(view, Qt::LeftButton, {}, corner - QPoint(12, 12));
    const auto* const grid = tableDialog().findChild<QTableWidget*>();
    EXPECT_EQ(grid->currentRow(), 1);
    EXPECT_EQ(grid->currentColumn(), 1);
    press(tableDialog(), "Done");

    QTest::mouseClick(view, Qt::LeftButton, {}, corner + QPoint(60, -12));
    type("x");
    EXPECT_EQ(html(), "<p>a</p>" + table + "<p>x</p><p>b</p>");
    QTest::mouseClick(&editor.body(), Qt::LeftButton, {}, QPoint(4, view->y() + 4));
    type("y");
    EXPECT_EQ(html(), "<p>ya</p>" + table + "<p>x</p><p>b</p>");
}

TEST_F(EditorJourney, ATableThatIsSelectedStaysReadable) {
    openNote("<p>a|</p><table><tr><td>one</td></tr></table>");
    QTextCursor table = document().find(QString(QChar::ObjectReplacementCharacter));
    const QPoint ground = editor.body().cursorRect(table).bottomRight() - QPoint(20, 10);
    const auto lightness = [&] {
        return editor.body().viewport()->grab().toImage().pixelColor(ground).lightness();
    };
    const int usual = lightness();
    const int selection = editor.body().palette().highlight().color().lightness();
    editor.body().setTextCursor(table);
    EXPECT_LT(lightness(), usual) << "it is seen to be selected";
    EXPECT_GT(lightness(), (usual + selection) / 2 - 10);
}

TEST_F(EditorJourney, WhatIsDraggedOutOfAListIsNotWrittenIntoANote) {
    openNote("<p>one</p>");
    for (const char* format : {"text/plain", "application/x-tesserine-notes"}) {
        QMimeData dragged;
        dragged.setText("A title");
        dragged.setData(format, "x");
        for (QWidget* const target :
             {editor.body().viewport(), static_cast<QWidget*>(&editor.title())}) {
            QDragEnterEvent enter(
                target->rect().center(), Qt::CopyAction, &dragged, Qt::LeftButton, Qt::NoModifier);
            enter.ignore();
            QApplication::sendEvent(target, &enter);
            EXPECT_EQ(enter.isAccepted(), format == std::string("text/plain")) << format;
        }
    }
}

TEST_F(EditorJourney, APictureIsDraggedByItsCorner) {
    CDNote& note = addNote("Plan", "<p>a</p>");
    const std::string picture = addPicture(note);
    environment->notes().updateNote(context(), note, {.html = "<p>a</p><p>" + picture + "</p>"});
    context().save();
    editor.open(*note.id);
    const std::string before = html();
    const int position = document().lastBlock().position();
    // What is known of a picture is read in the background.
    const auto width = [&] {
        QTextCursor left(&document());
        left.setPosition(position);
        QTextCursor right(left);
        right.setPosition(position + 1);
        return editor.body().cursorRect(right).left() - editor.body().cursorRect(left).left();
    };
    ASSERT_TRUE(waitUntil([&] { return width() >= 200; }));
    editor.body().viewport()->grab();  // paints, and with that knows where the picture stands
    QTextCursor end(&document());
    end.setPosition(position + 1);
    const QPoint corner = editor.body().cursorRect(end).bottomLeft() - QPoint(4, 8);
    drag(corner, corner + QPoint(60, 20));
    ASSERT_TRUE(editor.save());
    EXPECT_NE(note.html->find(" width=\"2"), std::string::npos) << *note.html;
    EXPECT_EQ(note.html->find("height="), std::string::npos) << "the proportions stay";
    EXPECT_NEAR(width(), 256, 4);
    commands.trigger("edit.undo");
    EXPECT_EQ(html(), before);

    ASSERT_TRUE(editor.save());
    QWidget* const view = editor.body().viewport();
    view->grab();
    QTest::mousePress(view, Qt::LeftButton, {}, corner);
    const std::string another = "<p>a</p><p>" + addPicture(note) + "</p>";
    change(note, another);
    QTest::mouseRelease(view, Qt::LeftButton, {}, corner + QPoint(60, 20));
    EXPECT_EQ(html(), another) << "the picture that was dragged is gone";
}

TEST_F(EditorJourney, WhatIsFoundIsReplacedOneAfterTheOther) {
    openNote("<p>|Tea and tea</p><ul><li><em>tea</em> again</li></ul>");
    const std::string before = html();
    commands.trigger("find.replace");
    auto& bar = *editor.findChild<FindBar*>("findBar");
    bar.findChild<QLineEdit*>("findField")->setText("tea");
    bar.findChild<QLineEdit*>("replaceField")->setText("milk");
    press(bar, "Replace");
    press(bar, "Replace");
    EXPECT_EQ(html(), "<p>milk and milk</p><ul><li><em>tea</em> again</li></ul>");
    press(bar, "Replace");
    EXPECT_EQ(html(), "<p>milk and milk</p><ul><li><em>milk</em> again</li></ul>");
    press(bar, "Replace");  // there is nothing left
    EXPECT_EQ(bar.findChild<QLabel*>()->text(), "Not found");
    for (int i = 0; i < 3; ++i) {
        commands.trigger("edit.undo");
    }
    EXPECT_EQ(html(), before);
    press(bar, "Replace All");
    EXPECT_EQ(html(), "<p>milk and milk</p><ul><li><em>milk</em> again</li></ul>");
}

TEST_F(EditorJourney, SettingsCountAsSoonAsTheEditorIsSeenAgain) {
    openNote("<p>|</p>");
    const double usual = document().defaultFont().pointSizeF();
    const std::unique_ptr<QWidget> page(makeEditorSettings(*environment, nullptr));
    const auto choose = [&](std::string_view key, const QString& title) {
        auto* const box = page->findChild<QComboBox*>(QString::fromUtf8(key.data()));
        ASSERT_NE(box, nullptr) << key;
        const int place = box->findText(title);
        ASSERT_GE(place, 0) << title.toStdString();
        box->setCurrentIndex(place);
        emit box->activated(place);
    };
    const auto turnOff = [&](std::string_view key) {
        page->findChild<QCheckBox*>(QString::fromUtf8(key.data()))->click();
    };
    choose(EditorPreferences::zoomKey, "150 %");
    choose(EditorPreferences::fontKey, "Of a typewriter");
    choose(EditorPreferences::spellingKey, "Off");
    turnOff(EditorPreferences::shortcutsKey);
    turnOff(EditorPreferences::wordCountKey);
    editor.hide();
    editor.show();
    editor.body().setFocus();
    EXPECT_NEAR(document().defaultFont().pointSizeF() / usual, 1.5, 0.01);
    EXPECT_FALSE(editor.findChild<QLabel*>("wordCount")->isVisible());
    type("# teh\n---\n");
    EXPECT_EQ(html(), "<p># teh</p><p>---</p><p></p>");
    EXPECT_TRUE(editor.body().extraSelections().isEmpty());
    // What the keys change is kept as well.
    commands.trigger("view.zoomOut");
    EXPECT_EQ(environment->preferences().integer(EditorPreferences::zoomKey), 4);
    commands.trigger("view.zoomReset");
    EXPECT_FALSE(environment->preferences().integer(EditorPreferences::zoomKey));
}

}  // namespace
}  // namespace tesserine::app
