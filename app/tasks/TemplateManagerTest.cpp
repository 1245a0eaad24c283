#include "app/tasks/TemplateManager.h"

#include "app/state/WindowFixture.h"
#include "app/tasks/GrowingText.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>

namespace tesserine::app {
namespace {

class TemplateManagerTest : public test::WindowFixture {
public:
    TemplateManagerTest() {
        page.resize(900, 700);
        page.open();
        page.show();
        QApplication::setActiveWindow(&page);
    }
    template <class Widget>
    Widget& find(const char* name) {
        return *page.findChild<Widget*>(name);
    }
    void type(const char* field, const char* text) {
        auto& edit = find<QLineEdit>(field);
        edit.setFocus();
        edit.selectAll();
        QTest::keyClicks(&edit, text);
    }
    void press(const char* button) { find<QPushButton>(button).click(); }
    std::string names() {
        QStringList names;
        for (int row = 0; row < find<QListWidget>("templateList").count(); ++row) {
            names += find<QListWidget>("templateList").item(row)->text();
        }
        return names.join(" | ").toStdString();
    }
    std::string summary() { return find<QLabel>("templateSummary").text().toStdString(); }

    TemplateManager page{*environment};
};

TEST_F(TemplateManagerTest, WordsMeantForATemplateThatGoesAreNotTypedIntoTheNextOne) {
    press("newTemplate");
    type("templateName", "A stays");
    press("newTemplate");
    type("templateName", "B goes");
    EXPECT_TRUE(page.flush());
    for (CDTaskTemplate* one : context().fetch<CDTaskTemplate>()) {
        if (one->name == "B goes") context().remove(*one);
    }
    context().save();
    QTest::keyClicks(QApplication::focusWidget(), " and more");
    EXPECT_TRUE(page.flush());
    EXPECT_EQ(names(), "A stays");
}

TEST_F(TemplateManagerTest, WhatAnotherProgramChangesInATemplateThatIsTypedIntoStays) {
    press("newTemplate");
    type("templateName", "Month end");
    EXPECT_TRUE(page.flush());
    type("templateTitle", "Close");
    CDTaskTemplate& stored = *context().fetch<CDTaskTemplate>().front();
    auto theirs = TaskTemplateContent::of(stored);
    theirs.notes = "with Ana";
    theirs.priority = TaskPriority::p1;
    environment->taskTemplates().update(context(), *stored.id, theirs);
    context().save();
    QTest::keyClicks(QApplication::focusWidget(), " books");
    EXPECT_TRUE(page.flush());
    const auto kept = TaskTemplateContent::of(stored);
    EXPECT_EQ(kept.title, "Close books");
    EXPECT_EQ(kept.notes, "with Ana");
    EXPECT_EQ(kept.summary(), "P1 · No due date") << "and the form shows it";
    EXPECT_EQ(summary(), kept.summary());
}

TEST_F(TemplateManagerTest, AProjectChosenForATemplateThatGoesIsNotThatOfTheNextOne) {
    environment->projects().create(context(), "Work");
    for (const char* name : {"A stays", "B goes"}) {
        press("newTemplate");
        type("templateName", name);
    }
    EXPECT_TRUE(page.flush());
    press("Project");
    ASSERT_TRUE(find<QWidget>("projectPicker").isVisible());
    for (CDTaskTemplate* one : context().fetch<CDTaskTemplate>()) {
        if (one->name == "B goes") context().remove(*one);
    }
    context().save();
    EXPECT_FALSE(find<QWidget>("projectPicker").isVisible());
    EXPECT_EQ(find<QLineEdit>("templateName").text(), "A stays");
    settle();
}

TEST_F(TemplateManagerTest, WhatIsTypedBecomesATemplateAndTheTemplateATask) {
    press("newTemplate");
    EXPECT_EQ(names(), "Untitled Template");
    type("templateName", "Month end");
    type("templateTitle", "Close the books");
    find<QCheckBox>("templateIsDue").click();
    find<QSpinBox>("templateDueDays").setValue(2);
    type("templateDueTime", "25:99");
    EXPECT_TRUE(find<QLabel>("templateNoTime").isVisible());
    EXPECT_EQ(summary(), "Due 2 days after it is created");
    type("templateDueTime", "9:05");
    EXPECT_FALSE(find<QLabel>("templateNoTime").isVisible());
    find<GrowingText>("templateSubtasks").setFocus();
    QTest::keyClicks(&find<GrowingText>("templateSubtasks"), "Receipts");
    QTest::keyClick(&find<GrowingText>("templateSubtasks"), Qt::Key_Return);
    QTest::keyClicks(&find<GrowingText>("templateSubtasks"), "Bank");
    EXPECT_EQ(summary(), "Due 2 days after it is created at 09:05 · 2 subtasks");
    EXPECT_TRUE(page.flush());
    EXPECT_EQ(names(), "Month end");

    std::optional<Uuid> made;
    QObject::connect(&page, &TemplateManager::used, &page, [&](const Uuid& task) { made = task; });
    press("useTemplate");
    ASSERT_TRUE(made);
    const CDTask& task = *context().find<CDTask>(*made);
    EXPECT_EQ(task.title, "Close the books");
    EXPECT_EQ(task.dueDate->iso(), "2026-03-16T09:05:00.000Z");
    EXPECT_EQ(task.subtasks.count(), 2U);
}

TEST_F(TemplateManagerTest, ATemplateWithoutANameIsNotSavedAndSaysWhy) {
    press("newTemplate");
    type("templateName", " ");
    EXPECT_FALSE(page.flush());
    EXPECT_EQ(summary(), "A template needs a name.");
    type("templateName", "Packing ");
    EXPECT_TRUE(page.flush());
    QTest::keyClicks(&find<QLineEdit>("templateName"), "list");
    EXPECT_EQ(find<QLineEdit>("templateName").text(), "Packing list") << "saved between two words";
    page.flush();
    EXPECT_EQ(names(), "Packing list");
}

TEST_F(TemplateManagerTest, WhatStandsInTheFormIsWhatIsChosenAndDeleted) {
    press("newTemplate");
    type("templateName", "Other");
    press("newTemplate");
    auto& list = find<QListWidget>("templateList");
    type("templateName", "Zoo");
    list.setCurrentRow(0);  // with something to be saved first
    EXPECT_EQ(list.currentItem()->text(), "Other");
    EXPECT_EQ(find<QLineEdit>("templateName").text(), "Other");

    list.setCurrentRow(1);
    type("templateName", " ");
    list.setCurrentRow(0);  // with something that cannot be saved
    EXPECT_EQ(summary(), "A template needs a name.");
    EXPECT_EQ(list.currentItem()->text(), "Zoo");
    press("deleteTemplate");
    EXPECT_EQ(find<QMessageBox>("deleteTemplateQuestion").text(), "Delete the template “Zoo”?");
}

TEST_F(TemplateManagerTest, DeletingAsksFirstAndShowsTheNext) {
    press("newTemplate");
    type("templateName", "First");
    press("newTemplate");
    type("templateName", "Second");
    page.flush();
    for (const auto answer : {QMessageBox::RejectRole, QMessageBox::DestructiveRole}) {
        EXPECT_EQ(names(), "First | Second");
        press("deleteTemplate");
        auto& question = find<QMessageBox>("deleteTemplateQuestion");
        for (QAbstractButton* button : question.buttons()) {
            if (question.buttonRole(button) == answer) button->click();
        }
        settle();
    }
    EXPECT_EQ(names(), "First");
    EXPECT_EQ(find<QLineEdit>("templateName").text(), "First");
}

}  // namespace
}  // namespace tesserine::app
