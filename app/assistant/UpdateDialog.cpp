#include "app/assistant/UpdateDialog.h"

#include "app/assistant/UpdateWork.h"
#include "app/look/PageParts.h"
#include "app/look/QtText.h"
#include "updates/ReleaseNotes.h"

#include <QDesktopServices>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QStandardPaths>
#include <QUrl>
#include <QVBoxLayout>

#include <utility>

namespace tesserine::app {
namespace {

using State = UpdateWork::State;

constexpr int thousandths = 1'000;

/// One block of the notes.
QWidget* makeBlock(const ReleaseNotes::Block& block, QWidget* parent) {
    QLabel* const text = makeText(shownText(block.text), TextRole::body, parent);
    if (block.kind == ReleaseNotes::Block::Kind::paragraph) return text;
    auto* const row = new QWidget(parent);
    auto* const layout = new QHBoxLayout(row);
    layout->setContentsMargins(space::small, 0, 0, 0);
    layout->setSpacing(space::small);
    layout->addWidget(makeHint("•", row), 0, Qt::AlignTop);
    layout->addWidget(text, 1);
    return row;
}

QPushButton* makeDialogButton(const QString& title, const char* name, QWidget* parent) {
    auto* const button = new QPushButton(title, parent);
    button->setObjectName(name);
    button->setAutoDefault(false);
    return button;
}

}  // namespace

UpdateDialog::UpdateDialog(UpdateWork& work, std::filesystem::path downloads, QWidget* parent)
    : QDialog(parent),
      work_(work),
      downloads_(std::move(downloads)),
      version_(work.offer()->release.stamp.version.text) {
    setObjectName("updateDialog");
    setWindowTitle("Update");
    setAttribute(Qt::WA_DeleteOnClose);
    resize(520, 420);
    state_ = makeHint({}, this);
    state_->setObjectName("updateState");
    progress_ = new QProgressBar(this);
    progress_->setRange(0, thousandths);
    progress_->setTextVisible(false);
    progress_->setFixedHeight(space::small);
    progress_->setAccessibleName("Download");

    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(space::huge, space::huge, space::huge, space::large);
    column->setSpacing(space::medium);
    column->addWidget(makeText("Tesserine " + shownText(version_), TextRole::title, this));
    column->addWidget(state_);
    column->addWidget(makeNotes(), 1);
    column->addWidget(progress_);
    column->addWidget(makeButtons());
    connect(&work, &UpdateWork::changed, this, &UpdateDialog::follow);
    follow();
}

QWidget* UpdateDialog::makeNotes() {
    auto* const notes = new QWidget;
    auto* const column = new QVBoxLayout(notes);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(space::small);
    const std::string& text = work_.offer()->release.releaseNotes;
    for (const ReleaseNotes::Block& block : ReleaseNotes::parse(text).blocks) {
        column->addWidget(makeBlock(block, notes));
    }
    column->addStretch(1);
    auto* const area = new QScrollArea(this);
    area->setObjectName("releaseNotes");
    area->setAccessibleName("What is new");
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setWidget(notes);
    return area;
}

QWidget* UpdateDialog::makeButtons() {
    auto* const buttons = new QWidget(this);
    auto* const page = makeDialogButton("Open Web Page", "webPage", buttons);
    skip_ = makeDialogButton("Skip This Version", "skipVersion", buttons);
    later_ = makeDialogButton("Later", "later", buttons);
    cancel_ = makeDialogButton("Cancel", "cancelDownload", buttons);
    main_ = makeMainButton("Download", buttons);
    main_->setObjectName("download");
    auto* const row = new QHBoxLayout(buttons);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(space::small);
    row->addWidget(page);
    row->addStretch(1);
    for (QPushButton* const button : {skip_, later_, cancel_, main_}) {
        row->addWidget(button);
    }
    connect(page, &QPushButton::clicked, this, [this] {
        // Trusted, or the feed would have been refused.
        const auto& notes = work_.offer()->release.releaseNotesAddress;
        QDesktopServices::openUrl(QUrl(qt(notes ? notes->text : work_.source().site)));
    });
    connect(skip_, &QPushButton::clicked, this, [this] {
        accept();
        work_.skip();
    });
    connect(later_, &QPushButton::clicked, this, &QDialog::reject);
    connect(cancel_, &QPushButton::clicked, &work_, &UpdateWork::cancel);
    connect(main_, &QPushButton::clicked, this, &UpdateDialog::act);
    return buttons;
}

void UpdateDialog::act() {
    if (work_.state() == State::downloaded) return showInFolder(work_.file());
    work_.download(downloads_);
}

/// A look that ends meanwhile may find another version, or none.
void UpdateDialog::follow() {
    const bool isShown = work_.offer() && work_.offer()->release.stamp.version.text == version_;
    if (!isShown) return reject();
    const UpdateOffer& offer = *work_.offer();
    const bool isDownloading = work_.state() == State::downloading;
    const bool isDownloaded = work_.state() == State::downloaded;
    QString sentence = work_.sentence();
    if (offer.isRequired && !isDownloaded) {
        sentence += " This version is no longer supported; your notes stay as they are.";
    }
    if (work_.source().isOwnedByPackages()) {
        sentence += " The system's package manager installed this program and updates it.";
    } else if (isDownloaded) {
        sentence += " Replace the program with it whenever it suits you.";
    }
    state_->setText(sentence);
    progress_->setVisible(isDownloading);
    if (isDownloading) {
        const double share = static_cast<double>(work_.receivedBytes())
                             / static_cast<double>(offer.release.download->length);
        progress_->setValue(static_cast<int>(share * thousandths));
    }
    main_->setText(isDownloaded ? "Show in Folder" : "Download");
    main_->setVisible(!isDownloading && work_.canDownload());
    cancel_->setVisible(isDownloading);
    skip_->setVisible(!isDownloading && !isDownloaded && !offer.isRequired);
    later_->setText(isDownloaded ? "Close" : "Later");
    later_->setVisible(!isDownloading);
}

std::filesystem::path downloadsFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::DownloadLocation).toStdString();
}

}  // namespace tesserine::app
