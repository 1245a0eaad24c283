#include "app/account/ServiceSection.h"

#include "app/look/PageParts.h"
#include "app/state/SyncControl.h"
#include "base/Files.h"
#include "base/Product.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace tesserine::app {
namespace {

QString wordsFor(bool isGivenForThisRun) {
    if (isGivenForThisRun) {
        return ServiceSection::tr(
            "Tesserine was started with this address (TESSERINE_SERVICE_URL), so it cannot be "
            "changed here. Nothing is contacted before you sign in.");
    }
    if (product::hasService) {
        return ServiceSection::tr(
            "Leave the field empty for the service of Tesserine itself. Nothing is contacted "
            "before you sign in.");
    }
    return ServiceSection::tr(
        "The address of a service that somebody you trust runs, perhaps you. Nothing is contacted "
        "before you sign in.");
}

}  // namespace

ServiceSection::ServiceSection(AppEnvironment& environment, QWidget* parent)
    : Section(tr("Service"), environment, parent),
      address_(new QLineEdit(this)),
      use_(makeButton(tr("Use This Service"), "useService")) {
    address_->setObjectName("serviceAddress");
    address_->setAccessibleName(tr("Address of the service"));
    address_->setPlaceholderText("https://notes.example.org");
    auto* const row = new QHBoxLayout;
    row->setSpacing(space::medium);
    row->addWidget(address_, 1);
    row->addWidget(use_);
    column().addLayout(row);
    const auto& given = environment.setting().serviceURL;
    column().addWidget(makeHint(wordsFor(given.has_value()), this));
    connect(address_, &QLineEdit::textChanged, this, &ServiceSection::follow);
    address_->installEventFilter(this);
    connect(use_, &QPushButton::clicked, this, &ServiceSection::useAddress);
    const auto own = environment.preferences().string(SyncService::addressKey);
    address_->setText(QString::fromStdString(own.value_or("")));
    // Of one run only, and stronger than what is set here.
    address_->setDisabled(given.has_value());
    if (given) address_->setText(QString::fromStdString(*given));
    follow();
}

/// Return in the field uses the address, and does not press the main button of the dialog as well.
bool ServiceSection::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            use_->click();
            return true;
        }
    }
    return Section::eventFilter(watched, event);
}

void ServiceSection::follow() {
    const auto present = environment().preferences().string(SyncService::addressKey);
    const QString known = QString::fromStdString(present.value_or(""));
    use_->setEnabled(address_->isEnabled() && address_->text().trimmed() != known);
}

void ServiceSection::useAddress() {
    const std::string address = address_->text().trimmed().toStdString();
    try {
        environment().syncControl().setAddress(
            address.empty() ? std::nullopt : std::optional(address));
        showFailure({});
    } catch (const SyncSetupError& error) {
        showFailure(QString::fromUtf8(error.what()));
    } catch (const FileError& error) {
        showFailure(QString::fromUtf8(error.what()));
    }
    follow();
}

}  // namespace tesserine::app
