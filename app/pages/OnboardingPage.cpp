#include "app/pages/OnboardingPage.h"

#include "app/look/IconLabel.h"
#include "app/look/PageParts.h"
#include "app/pages/ChoiceCard.h"
#include "core/store/TesserineStore.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tesserine::app {
namespace {

constexpr int columnWidth = 480;

/// "~/Notes" for what lies in the user's own folder.
QString shortPath(const QString& path) {
    const QString home = QDir::homePath();
    return path.startsWith(home + "/") ? "~" + path.mid(home.size()) : path;
}

}  // namespace

OnboardingPage::OnboardingPage(const std::filesystem::path& proposed, QWidget* parent)
    : ColumnPage(parent),
      folder_(QString::fromStdString(proposed.string())),
      place_(makeText({}, TextRole::body, middle())) {
    setObjectName("onboardingPage");
    auto* const fresh = new ChoiceCard(
        "note-add",
        tr("Start Fresh"),
        tr("An empty library with five short notes that show how things work."),
        middle());
    auto* const bringIn = new ChoiceCard(
        "import",
        tr("Import Notes"),
        tr("Bring in a folder of Markdown or an export of another program. What was there stays "
           "as it is."),
        middle());
    auto* const signIn = new ChoiceCard(
        "sync",
        tr("Sign In"),
        tr("Fetch the library that another computer of yours keeps in step with a service."),
        middle());
    fresh->setObjectName("startFresh");
    bringIn->setObjectName("importNotes");
    signIn->setObjectName("signInFirst");
    connect(fresh, &ChoiceCard::clicked, this, [this] { emit freshStartChosen(folder_); });
    connect(bringIn, &ChoiceCard::clicked, this, [this] { emit importChosen(folder_); });
    connect(signIn, &ChoiceCard::clicked, this, [this] { emit signInChosen(folder_); });

    auto* const change = new QPushButton(tr("Choose Another Folder"), middle());
    connect(change, &QPushButton::clicked, this, &OnboardingPage::chooseFolder);
    place_->setObjectName("libraryFolder");
    auto* const placeWords = new QVBoxLayout;
    placeWords->setSpacing(space::hair);
    placeWords->addWidget(makeHint(tr("Your library will be kept in"), middle()));
    placeWords->addWidget(place_);
    auto* const placeRow = new QHBoxLayout;
    placeRow->addWidget(new IconLabel(icon("folder", Ink::secondary), 20, middle()));
    placeRow->addSpacing(space::small);
    placeRow->addLayout(placeWords, 1);
    placeRow->addWidget(change);

    column().setSpacing(space::small);
    column().addStretch(2);
    column().addWidget(new IconLabel(programIcon(), 72, middle()));
    column().addSpacing(space::medium);
    column().addWidget(makeText(tr("Welcome to Tesserine"), TextRole::display, middle()));
    column().addWidget(makeHint(
        tr("Notes and tasks that stay yours: one library on your own disk, and nothing that "
           "needs an account."),
        middle()));
    column().addSpacing(space::huge);
    column().addWidget(fresh);
    column().addWidget(bringIn);
    column().addWidget(signIn);
    column().addSpacing(space::huge);
    column().addLayout(placeRow);
    column().addStretch(3);
    showPlace();
    limitColumn(columnWidth);
    fresh->setFocus();
}

void OnboardingPage::chooseFolder() {
    const QString chosen = QFileDialog::getExistingDirectory(
        this, tr("Choose a folder for the library"), QDir::homePath());
    if (chosen.isEmpty()) return;
    if (QFileInfo::exists(QDir(chosen).filePath(TesserineStore::fileName))) {
        emit libraryChosen(chosen);
        return;
    }
    folder_ = chosen;
    showPlace();
}

void OnboardingPage::showPlace() {
    place_->setText(shortPath(folder_));
    place_->setToolTip(folder_);
}

}  // namespace tesserine::app
