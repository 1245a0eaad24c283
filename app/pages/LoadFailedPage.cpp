#include "app/pages/LoadFailedPage.h"

#include "app/look/IconLabel.h"
#include "app/look/PageParts.h"
#include "app/pages/RestoreDialog.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace tesserine::app {
namespace {

constexpr int sentenceWidth = 460;

}  // namespace

LoadFailedPage::LoadFailedPage(Failure failure, QWidget* parent)
    : ColumnPage(parent),
      folder_(QString::fromStdString(failure.library.string())),
      setting_(std::move(failure.setting)) {
    setObjectName("loadFailedPage");
    auto* const reason = makeText(failure.sentence, TextRole::body, middle());
    reason->setObjectName("loadFailedSentence");
    reason->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    auto* const promise = makeHint(
        tr("Nothing was changed in the folder of the library:\n%1").arg(folder_), middle());
    promise->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto* const buttons = new QHBoxLayout;
    if (setting_) buttons->addWidget(makeRestoreButton());
    auto* const show = new QPushButton(tr("Show in Folder"), middle());
    auto* const other = new QPushButton(tr("Choose Another Folder"), middle());
    auto* const quit = makeMainButton(tr("Quit"), middle());
    connect(show, &QPushButton::clicked, this, [this] { showFolder(folder_); });
    connect(other, &QPushButton::clicked, this, &LoadFailedPage::chooseFolder);
    connect(quit, &QPushButton::clicked, this, &LoadFailedPage::quitAsked);

    buttons->addWidget(show);
    buttons->addWidget(other);
    buttons->addStretch(1);
    buttons->addWidget(quit);

    column().addStretch(2);
    column().addWidget(new IconLabel(icon("warning", Ink::warning), 48, middle()));
    column().addSpacing(space::large);
    column().addWidget(makeText(tr("The library could not be opened"), TextRole::title, middle()));
    column().addSpacing(space::small);
    column().addWidget(reason);
    column().addSpacing(space::small);
    column().addWidget(promise);
    column().addSpacing(space::huge);
    column().addLayout(buttons);
    column().addStretch(3);
    limitColumn(sentenceWidth);
    quit->setFocus();
}

QPushButton* LoadFailedPage::makeRestoreButton() {
    auto* const button = new QPushButton(tr("Restore a Backup…"), middle());
    button->setObjectName("restoreBackup");
    connect(button, &QPushButton::clicked, this, [this] {
        auto* const dialog = new RestoreDialog(*setting_, this);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        connect(dialog, &QDialog::accepted, this, &LoadFailedPage::restored);
        dialog->open();
    });
    return button;
}

void LoadFailedPage::chooseFolder() {
    const QString chosen =
        QFileDialog::getExistingDirectory(this, tr("Choose the folder of a library"), folder_);
    if (!chosen.isEmpty()) emit folderChosen(chosen);
}

}  // namespace tesserine::app
