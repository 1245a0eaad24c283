#include "app/shell/NotificationLines.h"

#include "app/editor/NoticeBar.h"

#include <gtest/gtest.h>
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

}  // namespace
}  // namespace tesserine::app
