#include "app/pages/LoadFailedPage.h"

#include "app/look/IconLabel.h"
#include "app/look/PageParts.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace tesserine::app {
namespace {

constexpr int columnWidth = 460;

}  // namespace

LoadFailedPage::LoadFailedPage(
    const std::filesystem::path& library, const QString& sentence, QWidget* parent)
    : QWidget(parent), folder_(QString::fromStdString(library.string())) {
    setObjectName("loadFailedPage");
    auto* const middle = new QWidget(this);

    auto* const reason = makeText(sentence, TextRole::body, middle);
    reason->setObjectName("loadFailedSentence");
    reason->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    auto* const promise = makeHint(
        tr("Nothing was changed. Your notes are where they were:\n%1").arg(folder_), middle);
    promise->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto* const show = new QPushButton(tr("Show in Folder"), middle);
    auto* const other = new QPushButton(tr("Choose Another Folder"), middle);
    auto* const quit = makeMainButton(tr("Quit"), middle);
    connect(show, &QPushButton::clicked, this, [this] { showFolder(folder_); });
    connect(other, &QPushButton::clicked, this, &LoadFailedPage::chooseFolder);
    connect(quit, &QPushButton::clicked, this, &LoadFailedPage::quitAsked);

    auto* const buttons = new QHBoxLayout;
    buttons->addWidget(show);
    buttons->addWidget(other);
    buttons->addStretch(1);
    buttons->addWidget(quit);

    auto* const column = new QVBoxLayout(middle);
    column->addStretch(2);
    column->addWidget(new IconLabel(icon("warning", Ink::warning), 48, middle));
    column->addSpacing(space::large);
    column->addWidget(makeText(tr("The library could not be opened"), TextRole::title, middle));
    column->addSpacing(space::small);
    column->addWidget(reason);
    column->addSpacing(space::small);
    column->addWidget(promise);
    column->addSpacing(space::huge);
    column->addLayout(buttons);
    column->addStretch(3);

    middle->setMaximumWidth(std::max(columnWidth, column->minimumSize().width()));
    auto* const row = new QHBoxLayout(this);
    row->addStretch(1);
    row->addWidget(middle, 1000);
    row->addStretch(1);
}

void LoadFailedPage::chooseFolder() {
    const QString chosen =
        QFileDialog::getExistingDirectory(this, tr("Choose the folder of a library"), folder_);
    if (!chosen.isEmpty()) emit folderChosen(chosen);
}

}  // namespace tesserine::app
