#include "app/tasks/RemindersPage.h"

#include "app/state/WindowFixture.h"
#include "app/tasks/RemindersModel.h"
#include "app/tasks/WhenPopup.h"

#include <QApplication>
#include <QClipboard>
#include <QListView>
#include <QMenu>
#include <QTest>

namespace tesserine::app {
namespace {

class RemindersPageTest : public test::WindowFixture {
public:
    CDTask& remind(const char* sentence, const char* at) {
        CDTask& task = addTask(sentence);
        environment->tasks().setReminder(task, Instant::parseISO(at));
        context().save();
        return task;
    }
    CDNote& remindOf(const char* title, const char* at) {
        CDNote& note = addNote(title, "<p>The beginning</p>");
        environment->notes().setReminder(note, Instant::parseISO(at));
        context().save();
        return note;
    }
    void open() {
        page.resize(500, 400);
        page.open();
        page.show();
        QApplication::setActiveWindow(&page);
        list.setFocus();
    }
    std::string rows() {
        QStringList titles;
        for (int row = 0; row < list.model()->rowCount(); ++row) {
            titles += list.model()->index(row, 0).data().toString();
        }
        return titles.join(" | ").toStdString();
    }

    RemindersPage page{*environment};
    QListView& list{*page.findChild<QListView*>("reminderList")};
};

TEST_F(RemindersPageTest, ShowsNotesAndTasksByDayAndWhatWasMissedFirst) {
    remind("Long ago", "2026-03-01T08:00:00Z");
    remindOf("Just now", "2026-03-14T08:59:59Z");
    remind("Now", "2026-03-14T09:00:00Z");
    remindOf("", "2026-03-15T07:00:00Z");
    remind("Later that day", "2026-03-15T20:00:00Z");
    environment->tasks().complete(
        context(), remind("Done", "2026-03-16T08:00:00Z"), environment->calendar());
    environment->notes().moveToTrash(remindOf("Thrown away", "2026-03-16T08:00:00Z"));
    context().save();
    open();
    EXPECT_EQ(
        rows(),
        "Past | Just now | Long ago | Today, Saturday 14 March | Now | "
        "Tomorrow, Sunday 15 March | The beginning | Later that day");
}

TEST_F(RemindersPageTest, IsOpenedPutOffAndRemovedByKeys) {
    const CDTask& task = remind("Call", "2026-03-14T12:00:00Z");
    const CDNote& note = remindOf("Read", "2026-03-14T13:00:00Z");
    open();
    std::optional<Uuid> chosen;
    QObject::connect(
        &page, &RemindersPage::taskChosen, &page, [&](const Uuid& id) { chosen = id; });
    list.setCurrentIndex(list.model()->index(1, 0));
    QTest::keyClick(&list, Qt::Key_Return);
    EXPECT_EQ(chosen, *task.id);
    QTest::keyClick(&list, Qt::Key_Down);
    QTest::keyClick(&list, Qt::Key_Delete);
    EXPECT_FALSE(note.reminderAt);
    EXPECT_EQ(rows(), "Today, Saturday 14 March | Call");
    EXPECT_FALSE(context().hasChanges());
}

TEST_F(RemindersPageTest, AMenuIsOfTheRowItWasOpenedForWhateverOthersChangeMeanwhile) {
    CDTask& first = remind("First", "2026-03-14T11:00:00Z");
    const CDTask& chosen = remind("Chosen", "2026-03-14T12:00:00Z");
    const CDTask& last = remind("Last", "2026-03-14T13:00:00Z");
    open();
    list.setCurrentIndex(list.model()->index(2, 0));
    emit list.customContextMenuRequested(list.visualRect(list.model()->index(0, 0)).center());
    EXPECT_EQ(page.findChild<QMenu*>(), nullptr) << "a heading has none";
    emit list.customContextMenuRequested(list.visualRect(list.currentIndex()).center());
    auto* const menu = page.findChild<QMenu*>("reminderMenu");
    ASSERT_NE(menu, nullptr);
    environment->tasks().setReminder(first, {});  // the rows below it move up
    context().save();
    menu->actions().back()->trigger();
    EXPECT_FALSE(chosen.reminderAt);
    EXPECT_TRUE(last.reminderAt);
}

TEST_F(RemindersPageTest, TheChosenRowStaysChosenWhateverOthersChange) {
    CDTask& first = remind("First", "2026-03-14T11:00:00Z");
    const CDTask& chosen = remind("Chosen", "2026-03-14T12:00:00Z");
    const CDTask& last = remind("Last", "2026-03-14T13:00:00Z");
    open();
    list.setCurrentIndex(list.model()->index(2, 0));
    environment->tasks().setReminder(first, {});
    context().save();
    QTest::keyClick(&list, Qt::Key_Delete);
    EXPECT_FALSE(chosen.reminderAt);
    EXPECT_TRUE(last.reminderAt);
    QTest::keyClick(&list, Qt::Key_Delete);
    EXPECT_FALSE(last.reminderAt) << "the next one takes its place";
}

TEST_F(RemindersPageTest, AnEmptyListHasNothingToCopy) {
    open();
    QApplication::clipboard()->clear();
    QTest::keySequence(&list, QKeySequence::Copy);
    EXPECT_TRUE(QApplication::clipboard()->text().isEmpty());
}

}  // namespace
}  // namespace tesserine::app
