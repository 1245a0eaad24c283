#include "app/pages/RestoreDialog.h"

#include "app/look/Icon.h"
#include "app/look/PageParts.h"
#include "app/state/DateWords.h"
#include "base/UserError.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include <exception>
#include <string_view>
#include <utility>
#include <vector>

namespace tesserine::app {
namespace {

constexpr int folderRole = Qt::UserRole;

QString reasonText(std::string_view reason) {
    if (reason == "daily") return RestoreDialog::tr("daily");
    if (reason == "import") return RestoreDialog::tr("before an import");
    if (reason == "migration") return RestoreDialog::tr("before an update");
    if (reason == "purge") return RestoreDialog::tr("before the trash was emptied");
    return RestoreDialog::tr("made by hand");
}

QString contentText(std::optional<std::size_t> noteCount) {
    if (!noteCount) return RestoreDialog::tr("cannot be read");
    return shownCount(*noteCount, RestoreDialog::tr("note"), RestoreDialog::tr("notes"));
}

}  // namespace

RestoreDialog::RestoreDialog(const AppSetting& setting, QWidget* parent)
    : QDialog(parent),
      backups_(setting.library, setting.clock, setting.random),
      calendar_(setting.zone.empty() ? Calendar::systemZone() : setting.zone),
      list_(new QListWidget(this)),
      state_(makeHint({}, this)),
      other_(new QPushButton(tr("Backup in Another Folder…"), this)),
      restore_(makeMainButton(tr("Restore"), this)) {
    setObjectName("restoreDialog");
    setWindowTitle(tr("Restore a Backup"));
    list_->setObjectName("backupList");
    list_->setAccessibleName(tr("Backups, newest first"));
    list_->setIconSize(QSize(20, 20));
    list_->setSpacing(space::hair);
    state_->setObjectName("restoreState");
    restore_->setObjectName("restore");
    auto* const cancel = new QPushButton(tr("Cancel"), this);

    auto* const buttons = new QHBoxLayout;
    buttons->addWidget(other_);
    buttons->addStretch(1);
    buttons->addWidget(cancel);
    buttons->addWidget(restore_);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(space::large, space::large, space::large, space::large);
    column->setSpacing(space::medium);
    column->addWidget(makeText(
        tr("The library becomes what it was when the backup was made. What was written after "
           "that is not in it."),
        TextRole::body,
        this));
    column->addWidget(list_, 1);
    column->addWidget(state_);
    column->addWidget(makeHint(
        tr("The file that cannot be opened is kept in the folder of the library, as "
           "“Tesserine.sqlite.replaced-” and the time. Nothing is deleted."),
        this));
    column->addLayout(buttons);
    resizeToFit(*this, {520, 440});

    connect(list_, &QListWidget::currentRowChanged, this, &RestoreDialog::showState);
    connect(other_, &QPushButton::clicked, this, &RestoreDialog::chooseFolder);
    connect(cancel, &QPushButton::clicked, this, &RestoreDialog::reject);
    connect(restore_, &QPushButton::clicked, this, &RestoreDialog::restore);
    findBackups();
}

RestoreDialog::~RestoreDialog() = default;

void RestoreDialog::beside(const QString& doing, Work work) {
    isBusy_ = true;
    setTone(*state_, Tone::secondary);
    state_->setText(doing);
    showState();
    worker_ = std::jthread([this, work = std::move(work)] {
        std::function<void()> afterwards;
        try {
            afterwards = work();
        } catch (const UserError& error) {
            afterwards = [this, sentence = QString::fromUtf8(error.what())] { fail(sentence); };
        } catch (const std::exception& error) {
            const auto sentence = tr("Something unexpected went wrong (%1).").arg(error.what());
            afterwards = [this, sentence] { fail(sentence); };
        }
        QMetaObject::invokeMethod(
            this,
            [this, afterwards = std::move(afterwards)] {
                isBusy_ = false;
                afterwards();
                showState();
            },
            Qt::QueuedConnection);
    });
}

void RestoreDialog::findBackups() {
    beside(tr("Looking for backups…"), [this] {
        std::vector<std::pair<LibraryBackup, std::optional<std::size_t>>> found;
        for (const LibraryBackup& backup : backups_.list()) {
            found.emplace_back(backup, LibraryBackups::noteCount(backup.folder));
        }
        return [this, found = std::move(found)] {
            state_->setText(found.empty() ? tr("There is no backup in this library.") : QString());
            for (const auto& [backup, noteCount] : found) {
                add(backup, noteCount);
            }
            list_->setCurrentRow(0);
            list_->setFocus();
        };
    });
}

void RestoreDialog::add(const LibraryBackup& backup, std::optional<std::size_t> noteCount) {
    auto* const item = new QListWidgetItem(
        icon("history", Ink::secondary),
        tr("%1, %2\n%3, %4")
            .arg(
                shownMoment(backup.createdAt, calendar_),
                reasonText(backup.reason),
                contentText(noteCount),
                shownSize(static_cast<qint64>(backup.byteCount))),
        list_);
    item->setData(folderRole, QString::fromStdString(backup.folder.string()));
}

void RestoreDialog::chooseFolder() {
    const QString chosen = QFileDialog::getExistingDirectory(this, tr("Choose a backup"));
    if (chosen.isEmpty()) return;
    beside(tr("Reading the backup…"), [this, folder = std::filesystem::path(chosen.toStdString())] {
        const LibraryBackup backup = backups_.verify(folder);
        return [this, backup, noteCount = LibraryBackups::noteCount(folder)] {
            state_->clear();
            add(backup, noteCount);
            list_->setCurrentRow(list_->count() - 1);
        };
    });
}

void RestoreDialog::restore() {
    const QListWidgetItem* const chosen = list_->currentItem();
    if (chosen == nullptr) return;
    const std::filesystem::path folder = chosen->data(folderRole).toString().toStdString();
    beside(tr("Restoring…"), [this, folder] {
        backups_.restore(folder);
        return [this] { accept(); };
    });
}

void RestoreDialog::fail(const QString& sentence) {
    setTone(*state_, Tone::danger);
    state_->setText(sentence);
}

void RestoreDialog::showState() {
    list_->setEnabled(!isBusy_);
    other_->setEnabled(!isBusy_);
    restore_->setEnabled(!isBusy_ && list_->currentItem() != nullptr);
}

/// What has begun to change the library is waited for.
void RestoreDialog::reject() {
    if (!isBusy_) QDialog::reject();
}

}  // namespace tesserine::app
