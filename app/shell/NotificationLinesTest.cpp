#include "app/shell/NotificationLines.h"

#include "app/editor/NoticeBar.h"
#include "app/shell/ShellFixture.h"

#include <gtest/gtest.h>
#include <QDialog>
#include <QPushButton>

#include <string>

namespace tesserine::app {
namespace {

std::string shownTexts(const NotificationLines& lines) {
    std::string text;
    for (const auto* const line : lines.findChildren<NoticeBar*>()) {
        if (!line->isHidden()) text += line->text().toStdString() + ";";
    }
    return text;
}

void press(NotificationLines& lines, const QString& title) {
    for (auto* const line : lines.findChildren<NoticeBar*>()) {
        for (auto* const button : line->findChildren<QPushButton*>()) {
            if (!line->isHidden() && button->text() == title) return button->click();
        }
    }
    ADD_FAILURE() << "no button " << title.toStdString();
}

TEST(NotificationLines, EachStaysUntilItIsActedOnAndIsReplacedByItsSuccessor) {
    NotificationLines lines;
    std::string acted;
    QObject::connect(
        &lines,
        &NotificationLines::acted,
        [&](const std::string& identifier, const std::string& action) {
            acted += identifier + " " + action + ";";
        });
    lines.show(
        {.identifier = "task-1",
         .title = "Call Ana",
         .body = "Today 09:00",
         .actions = {{"complete", "Complete"}, {"open", "Open"}}});
    lines.show({.identifier = "note-1", .title = "Read", .actions = {{"open", "Open"}}});
    EXPECT_EQ(shownTexts(lines), "Call Ana\nToday 09:00;Read;");
    lines.show(
        {.identifier = "task-1", .title = "Call Ana again", .actions = {{"complete", "Complete"}}});
    EXPECT_EQ(shownTexts(lines), "Call Ana again;Read;") << "one line for each";
    press(lines, "Complete");
    press(lines, "Open");
    EXPECT_EQ(acted, "task-1 complete;note-1 open;");
    EXPECT_EQ(shownTexts(lines), "");
    lines.show({.identifier = "task-1", .title = "Tomorrow again"});
    EXPECT_EQ(shownTexts(lines), "Tomorrow again;");
    lines.withdraw("note-2");
    lines.withdraw("task-1");
    EXPECT_EQ(shownTexts(lines), "");
}

class LinesInTheWindow : public test::ShellFixture {};

TEST_F(LinesInTheWindow, LeaveTheKeysToTheListAndToNoButtonThatComesNext) {
    CDNote& bill = addNote("Bill of May", "<p>Not paid yet.</p>");
    environment->notes().addTag(bill, *environment->tags().findOrCreate(context(), "open"));
    context().save();
    auto* const lines = new NotificationLines(&window());
    window().setNoticeLine(lines);
    const auto chosen = [&] {
        lines->show({.identifier = "1", .title = "Call Ana", .actions = {{"open", "Open"}}});
        settle();
        auto* const button = lines->findChild<QPushButton*>();
        button->setFocus();
        EXPECT_TRUE(button->hasFocus());
        return button;
    };
    const auto hasList = [&] { return list().isAncestorOf(window().focusWidget()); };
    chosen()->click();
    EXPECT_TRUE(hasList());
    press(Qt::Key_Space);
    EXPECT_EQ(bill.tags.all().size(), 1U) << "the button that takes the tag off stands below";

    chosen();
    QDialog question(&window());
    question.open();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&question));
    lines->withdraw("1");
    question.close();
    EXPECT_TRUE(waitUntil(hasList)) << "also behind a dialog";
}

}  // namespace
}  // namespace tesserine::app
