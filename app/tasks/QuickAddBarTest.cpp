#include "app/tasks/QuickAddBar.h"

#include "app/state/WindowFixture.h"
#include "app/tasks/QuickAddField.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QPushButton>
#include <QTest>

namespace tesserine::app {
namespace {

class QuickAddBarTest : public test::WindowFixture {
public:
    QuickAddBarTest() {
        bar.resize(600, bar.sizeHint().height());
        bar.show();
        QApplication::setActiveWindow(&bar);
        field.setFocus();
    }
    void type(const QString& text) { QTest::keyClicks(&field, text); }
    void press(Qt::Key key, Qt::KeyboardModifiers with = Qt::NoModifier) {
        QTest::keyClick(&field, key, with);
    }
    void clickOn(int position) {
        QTextCursor cursor(field.document());
        cursor.setPosition(position);
        const QPoint place = field.cursorRect(cursor).center() + QPoint(3, 0);
        QTest::mouseClick(field.viewport(), Qt::LeftButton, {}, place);
    }
    std::string words() { return bar.findChild<QLabel*>("quickAddWords")->text().toStdString(); }
    std::string typed() const { return field.toPlainText().toStdString(); }
    std::vector<CDTask*> tasks() {
        return environment->tasks().tasks(context(), TaskView::all(), environment->calendar());
    }

    QuickAddBar bar{*environment};
    QuickAddField& field{*bar.findChild<QuickAddField*>()};
    QPushButton& add{*bar.findChild<QPushButton*>("addTask")};
};

TEST_F(QuickAddBarTest, EnterMakesTheTaskThatTheWordsPromise) {
    type("Send invoice tomorrow 9am p1");
    EXPECT_EQ(words(), "Tomorrow, Sunday 15 March at 09:00 · P1");
    press(Qt::Key_Return);
    ASSERT_EQ(tasks().size(), 1U);
    const CDTask& task = *tasks().front();
    EXPECT_EQ(task.title, "Send invoice");
    EXPECT_EQ(task.dueDate->iso(), "2026-03-15T09:00:00.000Z");
    EXPECT_FALSE(context().hasChanges()) << "saved";
    EXPECT_EQ(typed(), "") << "ready for the next one";
    EXPECT_EQ(words(), "");
}

TEST_F(QuickAddBarTest, ATokenIsTurnedBackByBackspaceUndoOrClick) {
    type("Call mum today #Home");
    press(Qt::Key_Escape);  // the list of projects, if there is one, not the sentence
    field.setPlainText("Call mum today #Home");
    field.moveCursor(QTextCursor::End);

    press(Qt::Key_Backspace);
    EXPECT_EQ(typed(), "Call mum today #Home") << "the first one only turns back";
    EXPECT_EQ(words(), "Today, Saturday 14 March");
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(words(), "Today, Saturday 14 March · #Home") << "what Backspace did is taken back";
    press(Qt::Key_Backspace);
    press(Qt::Key_Backspace);
    EXPECT_EQ(typed(), "Call mum today #Hom")
        << "the second one deletes, which recognises it again";
    EXPECT_EQ(words(), "Today, Saturday 14 March · #Hom");

    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(words(), "Today, Saturday 14 March");
    clickOn(10);
    EXPECT_EQ(words(), "");
    EXPECT_EQ(typed(), "Call mum today #Hom");
    clickOn(10);
    EXPECT_EQ(words(), "Today, Saturday 14 March") << "and recognised again";
}

TEST_F(QuickAddBarTest, UndoBringsBackWhatEscapeTookAway) {
    type("Send invoice tomorrow 9am p1");
    press(Qt::Key_Escape);
    EXPECT_EQ(typed(), "");
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(typed(), "Send invoice tomorrow 9am p1");
    EXPECT_EQ(words(), "Tomorrow, Sunday 15 March at 09:00 · P1");
    press(Qt::Key_Return);
    EXPECT_EQ(tasks().size(), 1U);
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(typed(), "") << "a task was made of it";
}

TEST_F(QuickAddBarTest, DownLeavesItAndWhatWasTypedWaits) {
    bool isLeft = false;
    QObject::connect(&bar, &QuickAddBar::left, &bar, [&] { isLeft = true; });
    type("Call");
    press(Qt::Key_Down);
    EXPECT_TRUE(isLeft);
    EXPECT_EQ(typed(), "Call");
}

TEST_F(QuickAddBarTest, NothingIsMadeWithoutATitle) {
    type("tomorrow p1");
    EXPECT_FALSE(add.isEnabled());
    press(Qt::Key_Return);
    EXPECT_TRUE(tasks().empty());
    EXPECT_EQ(typed(), "tomorrow p1");
    press(Qt::Key_Escape);
    EXPECT_EQ(typed(), "");

    int timesLeft = 0;
    QObject::connect(&bar, &QuickAddBar::left, &bar, [&timesLeft] { ++timesLeft; });
    press(Qt::Key_Escape);
    EXPECT_EQ(timesLeft, 1) << "from the empty bar one goes away";
}

TEST_F(QuickAddBarTest, CompletesProjectsAndLabelsThatAreThere) {
    environment->projects().create(context(), "Home renovation");
    addTask("Old one @urgent");
    type("Paint walls #hom");
    QWidget* const popup = QApplication::activePopupWidget();
    ASSERT_NE(popup, nullptr);
    QTest::keyClick(popup, Qt::Key_Return);
    EXPECT_EQ(typed(), "Paint walls #\"Home renovation\" ");
    type("@u");
    ASSERT_NE(QApplication::activePopupWidget(), nullptr);
    QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Return);
    EXPECT_EQ(typed(), "Paint walls #\"Home renovation\" @urgent ");
    EXPECT_EQ(tasks().size(), 1U) << "Enter took the name, not the sentence";
    EXPECT_EQ(words(), "#Home renovation · @urgent");
}

TEST_F(QuickAddBarTest, ANameTypedInFullStaysWhereOthersOnlyHoldIt) {
    environment->projects().create(context(), "Workshop");
    addTask("Old one @workshop");
    for (const char* const sentence : {"Fetch the router bits @shop", "Sort screws #shop"}) {
        type(sentence);
        QWidget* const popup = QApplication::activePopupWidget();
        ASSERT_NE(popup, nullptr) << "the longer name is offered";
        QTest::keyClick(popup, Qt::Key_Return);
        EXPECT_EQ(typed(), "") << "Enter makes the task";
    }
    EXPECT_EQ(context().count<CDTask>(), 3U);
    EXPECT_NE(environment->tags().find(context(), "shop"), nullptr);
    type("Sweep @shop");
    QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Down);
    QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Return);
    EXPECT_EQ(typed(), "Sweep @workshop ");
}

TEST_F(QuickAddBarTest, ThePreferenceMakesANumberAPriority) {
    type("Buy 2 eggs");
    EXPECT_EQ(words(), "");
    environment->preferences().set(QuickAddBar::numberIsPriorityKey, true);
    type(" ");
    EXPECT_EQ(words(), "P2");
}

TEST_F(QuickAddBarTest, AParagraphThatIsPastedIsOneSentence) {
    QApplication::clipboard()->setText("Buy milk\ntomorrow\n");
    field.paste();
    EXPECT_EQ(typed(), "Buy milk tomorrow");
    field.insertPlainText(QString(11'000, u'x'));
    press(Qt::Key_Return);
    EXPECT_EQ(words(), "The title is longer than 10,000 characters.");
    EXPECT_TRUE(tasks().empty());
}

}  // namespace
}  // namespace tesserine::app
