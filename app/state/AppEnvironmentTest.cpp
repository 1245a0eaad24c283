#include "app/state/AppEnvironment.h"

#include "app/state/WindowFixture.h"
#include "core/store/LibraryBackup.h"
#include "search/SearchCoordinator.h"
#include "tests/support/FaultyVFS.h"

#include <QMessageBox>
#include <QPointer>
#include <QWidget>

namespace tesserine::app {
namespace {

class AppEnvironmentTest : public test::WindowFixture {
public:
    /// Titles of the notes that saves changed, in order, as far as they are still there.
    void noteChanges() {
        QObject::connect(
            environment.get(),
            &AppEnvironment::libraryChanged,
            environment.get(),
            [this](const std::vector<ObjectChange>& changes) {
                for (const ObjectChange& change : changes) {
                    if (change.entity != EntityKind::note || !change.uuid) continue;
                    const CDNote* note = context().find<CDNote>(*change.uuid);
                    changed += (note == nullptr ? "-" : note->title.valueOr("")) + ";";
                }
            });
    }
    std::string changed;
};

TEST_F(AppEnvironmentTest, ChangesOfAllKindsOfWritersAreTold) {
    noteChanges();
    environment->startWork();
    addNote("own");
    EXPECT_EQ(changed, "own;");

    environment->inBackground(
        [this](StoreContext& background, const std::stop_token&) {
            environment->notes().createNote(background, {.title = "background"});
            background.save();
        },
        environment.get());
    ASSERT_TRUE(waitUntil([this] { return changed == "own;background;"; })) << changed;

    TesserineStore other({.directory = setting().library}, {.clock = clock, .random = random});
    environment->notes().createNote(other.viewContext(), {.title = "terminal"});
    other.viewContext().save();
    ASSERT_TRUE(waitUntil([this] { return changed == "own;background;terminal;"; })) << changed;
}

TEST_F(AppEnvironmentTest, BackgroundWorkReportsToWhoeverIsStillThere) {
    std::string heard;
    const auto fail = [](StoreContext&, const std::stop_token&) {
        throw StoreError::readFailed("The disk is gone.");
    };
    const auto hear = [&heard](const std::string& sentence) { heard = sentence; };
    QPointer<QObject> gone = new QObject;
    environment->inBackground(fail, gone, {}, hear);
    delete gone;
    environment->waitForBackground();
    settle();
    EXPECT_EQ(heard, "");

    environment->inBackground(fail, environment.get(), {}, hear);
    ASSERT_TRUE(waitUntil([&heard] { return !heard.empty(); }));
    EXPECT_EQ(heard, "Tesserine could not read its library. The disk is gone.");
}

TEST_F(AppEnvironmentTest, ClosingStopsWhatRunsInTheBackground) {
    bool wasStopped = false;
    environment->inBackground(
        [&wasStopped](StoreContext&, const std::stop_token& stop) {
            while (!stop.stop_requested()) {
                QThread::msleep(1);
            }
            wasStopped = true;
        },
        environment.get());
    environment.reset();
    EXPECT_TRUE(wasStopped);
}

TEST_F(AppEnvironmentTest, ASaveThatFailsIsSaidAndKeepsTheChanges) {
    test::FaultyVFS disk("full");
    AppSetting onFaultyDisk = setting();
    onFaultyDisk.sqliteVFS = disk.name();
    open(onFaultyDisk);
    QWidget window;
    environment->notes().createNote(context(), {.title = "Plan"});
    disk.fail(
        {.operation = test::FaultyVFS::Operation::write,
         .fault = test::FaultyVFS::Fault::full,
         .isLasting = true});
    EXPECT_FALSE(environment->save(&window));
    const auto* notice = window.findChild<QMessageBox*>("notice");
    ASSERT_NE(notice, nullptr);
    EXPECT_TRUE(notice->text().startsWith("Your changes could not be saved."))
        << notice->text().toStdString();
    disk.clear();
    EXPECT_TRUE(environment->save(&window));
    EXPECT_EQ(context().count<CDNote>(), 1U);
    environment.reset();  // before its disk goes
}

TEST_F(AppEnvironmentTest, AStartMakesTheDailyBackupAndBeginsToSearch) {
    addNote("Plan");
    open(setting());
    environment->startWork();
    const LibraryBackups backups(setting().library, clock, random);
    EXPECT_TRUE(backups.list().empty()) << "the first window comes first";
    ASSERT_TRUE(waitUntil([&] { return backups.list().size() == 1; }));
    EXPECT_EQ(backups.list().front().reason, "daily");
    EXPECT_TRUE(environment->search().isOn());
    environment->waitForBackground();
}

TEST_F(AppEnvironmentTest, MidnightAndANewFirstDayOfTheWeekAreTold) {
    AppSetting free = setting();
    free.firstWeekday.reset();
    open(free);
    int times = 0;
    QObject::connect(
        environment.get(), &AppEnvironment::calendarChanged, environment.get(), [&times] {
            ++times;
        });
    clock.advance(std::chrono::hours(14));
    environment->refreshCalendar();
    EXPECT_EQ(times, 0);
    clock.advance(std::chrono::hours(1));
    environment->refreshCalendar();
    environment->refreshCalendar();
    EXPECT_EQ(times, 1);
    EXPECT_EQ(environment->calendar().firstWeekday(), 2) << "that of Great Britain";
    environment->preferences().set("tesserine.firstWeekday", 1);
    environment->refreshCalendar();
    EXPECT_EQ(times, 2);
    EXPECT_EQ(environment->calendar().firstWeekday(), 1);
}

}  // namespace
}  // namespace tesserine::app
