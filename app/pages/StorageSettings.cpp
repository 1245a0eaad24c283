#include "app/pages/StorageSettings.h"

#include "app/look/PageParts.h"
#include "app/state/DateWords.h"
#include "core/services/LibraryCare.h"
#include "core/services/LibraryChecker.h"
#include "core/services/TrashRetention.h"
#include "core/store/LibraryBackup.h"

#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <sys/stat.h>

#include <filesystem>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace tesserine::app {
namespace {

/// What the page tells of the files, read off the main thread.
struct Facts {
    std::uint64_t byteCount = 0;
    std::vector<LibraryBackup> backups{};
};

/// Attached files that are equal are one file on the disk, with several names.
std::uint64_t sizeOf(const std::filesystem::path& folder, const std::filesystem::path& without) {
    std::uint64_t size = 0;
    std::set<std::pair<dev_t, ino_t>> counted;
    std::error_code ignored;
    auto entry = std::filesystem::recursive_directory_iterator(folder, ignored);
    for (; entry != std::filesystem::recursive_directory_iterator(); entry.increment(ignored)) {
        if (entry->path() == without) entry.disable_recursion_pending();
        struct stat file {};
        const bool isFile = ::lstat(entry->path().c_str(), &file) == 0 && S_ISREG(file.st_mode);
        if (!isFile || !counted.emplace(file.st_dev, file.st_ino).second) continue;
        size += static_cast<std::uint64_t>(file.st_size);
    }
    return size;
}

LibraryBackups backupsOf(AppEnvironment& environment) {
    return LibraryBackups(
        environment.setting().library,
        environment.clock(),
        environment.random(),
        environment.log());
}

QString sizeText(std::uint64_t bytes) { return shownSize(static_cast<qint64>(bytes)); }

QString backupsText(const std::vector<LibraryBackup>& backups, const Calendar& calendar) {
    if (backups.empty()) return StorageSettings::tr("There is no backup yet.");
    const QString newest = shownMoment(backups.front().createdAt, calendar);
    if (backups.size() == 1) return StorageSettings::tr("One backup, of %1.").arg(newest);
    return StorageSettings::tr("%2 backups, the newest of %1.").arg(newest).arg(backups.size());
}

QString reportText(const LibraryReport& report) {
    if (report.wasStopped) return StorageSettings::tr("The check was stopped.");
    if (report.isClean()) {
        return StorageSettings::tr("Everything is in order: %1 objects, %2, %3.")
            .arg(report.objects)
            .arg(shownCount(report.bodies, "note body", "note bodies"))
            .arg(shownCount(report.attachments, "attached file", "attached files"));
    }
    QStringList lines{StorageSettings::tr("%1 of %2 problems could be repaired.")
                          .arg(report.repairedCount())
                          .arg(report.problems.size())};
    constexpr std::size_t mostLines = 8;
    for (const LibraryProblem& problem : report.problems) {
        if (static_cast<std::size_t>(lines.size()) > mostLines) break;
        lines << QString::fromStdString(problem.sentence);
    }
    return lines.join('\n');
}

}  // namespace

StorageSettings::StorageSettings(AppEnvironment& environment, QWidget* parent)
    : SettingsForm(tr("Storage"), environment.preferences(), parent),
      environment_(environment),
      size_(makeHint({}, this)),
      backups_(makeHint({}, this)),
      result_(makeHint({}, this)),
      job_(environment, Job::WhenLeft::goesOn) {
    addPlace();
    addHeading(tr("Trash"));
    addChoice(
        std::string(TrashRetention::daysKey),
        {tr("Keep deleted notes"),
         tr("After that they are deleted for good, at a start of the program and after a "
            "backup.")},
        std::vector<Option>{
            {tr("Until I empty the trash")},
            {tr("7 days"), 7},
            {tr("30 days"), 30},
            {tr("90 days"), 90}});
    addBackups();
    addCheck();
    connect(&job_, &Job::failed, this, [this](const QString& sentence) {
        setTone(*result_, Tone::danger);
        result_->setText(sentence);
        showFacts();
    });
    connect(&job_, &Job::finished, this, &StorageSettings::showFacts);
    showFacts();
}

void StorageSettings::addPlace() {
    const QString folder = QString::fromStdString(environment_.setting().library.string());
    size_->setObjectName("librarySize");
    addWide(size_);
    QPushButton& show =
        addButton({tr("Library folder"), QDir::toNativeSeparators(folder)}, tr("Show in Folder"));
    connect(&show, &QPushButton::clicked, this, [folder] { showFolder(folder); });
}

void StorageSettings::addBackups() {
    addHeading(tr("Backups"));
    backups_->setObjectName("backups");
    addWide(backups_);
    QPushButton& now = addButton(
        {tr("Backup"),
         tr("One is made each day and before every import. One made by hand is kept until you "
            "remove it.")},
        tr("Back Up Now"));
    connect(&now, &QPushButton::clicked, this, &StorageSettings::backUp);
}

void StorageSettings::addCheck() {
    addHeading(tr("Care"));
    QPushButton& examine = addButton(
        {tr("Check the library"),
         tr("Reads everything, compares it with what was written, and repairs what can be "
            "repaired without losing anything.")},
        tr("Check Now"));
    connect(&examine, &QPushButton::clicked, this, &StorageSettings::check);
    result_->setObjectName("careResult");
    addWide(result_);
}

void StorageSettings::showFacts() {
    const auto facts = std::make_shared<Facts>();
    environment_.inBackground(
        [&environment = environment_, facts](StoreContext&, auto) {
            const LibraryBackups backups = backupsOf(environment);
            facts->backups = backups.list();
            facts->byteCount = sizeOf(environment.setting().library, backups.folder());
        },
        this,
        [this, facts] {
            size_->setText(tr("%1 without its backups.").arg(sizeText(facts->byteCount)));
            backups_->setText(backupsText(facts->backups, environment_.calendar()));
        });
}

void StorageSettings::backUp() {
    if (job_.isRunning()) return;
    setTone(*result_, Tone::secondary);
    backups_->setText(tr("Making a backup…"));
    job_.start([&environment = environment_](const Job::Given& given) {
        backupsOf(environment).create(environment.store(), "manual", std::nullopt, given.stop);
    });
}

void StorageSettings::check() {
    if (job_.isRunning()) return;
    setTone(*result_, Tone::secondary);
    result_->setText(tr("Reading the library…"));
    const auto report = std::make_shared<LibraryReport>();
    job_.start(
        [&environment = environment_, report](const Job::Given& given) {
            *report = LibraryChecker(environment.store(), environment.clock())
                          .check({.stop = given.stop});
        },
        [this, report] {
            setTone(*result_, report->isClean() ? Tone::success : Tone::danger);
            result_->setText(reportText(*report));
        });
}

}  // namespace tesserine::app
