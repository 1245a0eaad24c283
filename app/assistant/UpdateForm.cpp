#include "app/assistant/UpdateForm.h"

#include "app/assistant/UpdateDialog.h"
#include "app/assistant/UpdateSettings.h"
#include "app/look/PageParts.h"
#include "app/state/AppEnvironment.h"
#include "app/state/DateWords.h"
#include "base/Product.h"

#include <QLabel>
#include <QPushButton>

#include <utility>

namespace tesserine::app {

UpdateForm::UpdateForm(AppEnvironment& environment, UpdateSource source, QWidget* parent)
    : SettingsForm("Updates", environment.preferences(), parent),
      environment_(environment),
      work_(environment, std::move(source)) {
    addSwitch(
        std::string(updates::automaticKey),
        {"Look for updates once a day",
         "Nothing is downloaded without you, and nothing that is downloaded is run."},
        true);
    check_ = &addButton({"Version", QString::fromUtf8(product::version.data())}, "Check Now");
    check_->setObjectName("checkNow");
    state_ = makeHint({}, this);
    state_->setObjectName("updateState");
    addWide(state_);
    details_ = new QPushButton("Details…", this);
    details_->setObjectName("updateDetails");
    details_->setAutoDefault(false);
    addWide(details_);
    connect(check_, &QPushButton::clicked, &work_, &UpdateWork::check);
    connect(details_, &QPushButton::clicked, this, [this] {
        (new UpdateDialog(work_, downloadsFolder(), this))->open();
    });
    connect(&work_, &UpdateWork::changed, this, &UpdateForm::follow);
    follow();
}

void UpdateForm::follow() {
    const QString sentence = work_.sentence();
    state_->setText(sentence.isEmpty() ? idleSentence() : sentence);
    check_->setEnabled(!work_.isRunning());
    details_->setVisible(work_.offer().has_value());
}

/// What there is to say before anything was asked.
QString UpdateForm::idleSentence() const {
    if (!work_.source().hasService) {
        return "This build of Tesserine has no service of its own, so there is nowhere to look for "
               "updates.";
    }
    if (work_.source().isOwnedByPackages()) {
        return "The system's package manager installed this program and updates it.";
    }
    const auto last = updates::lastCheck(environment_.preferences());
    if (!last) return "Nobody has looked for updates so far.";
    return "Last looked for updates: "
           + shownTime(*last, environment_.now(), environment_.calendar()) + ".";
}

QWidget* makeUpdateSettings(AppEnvironment& environment, QWidget* parent) {
    return new UpdateForm(environment, updateSourceOfThisProgram(), parent);
}

}  // namespace tesserine::app
