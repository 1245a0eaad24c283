#include "app/assistant/DataNotice.h"

#include "ai/ProviderAddress.h"
#include "app/look/Notice.h"
#include "app/state/AppEnvironment.h"
#include "base/Files.h"

#include <QMessageBox>
#include <QPushButton>

namespace tesserine::app {
namespace {

constexpr const char* whatIsSent =
    "Your question is sent with the passages of your notes that match it, at most 24,000 "
    "characters; an action sends the text of that one note. Notes in the trash, templates, locked "
    "passages and what you excluded are never sent.";

/// False when it could not be kept; the user was told.
bool keepAgreement(AppEnvironment& environment, QWidget* parent) {
    try {
        AISettings settings = AISettings::load(environment.preferences());
        settings.hasSeenDataNotice = true;
        settings.save(environment.preferences());
        return true;
    } catch (const FileError& error) {
        showNotice(parent, error.what());
        return false;
    }
}

}  // namespace

void withDataNotice(AppEnvironment& environment, QWidget* parent, std::function<void()> agreed) {
    const AISettings settings = AISettings::load(environment.preferences());
    if (settings.hasSeenDataNotice) return agreed();
    const std::string where =
        explanation(settings.backend, ProviderAddress::load(environment.preferences()));
    auto* const box = new QMessageBox(parent);
    box->setObjectName("dataNotice");
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::PlainText);
    box->setText("What the assistant sends");
    box->setInformativeText(QString(whatIsSent) + "\n\n" + QString::fromStdString(where));
    auto* const going = box->addButton("Send", QMessageBox::AcceptRole);
    box->setDefaultButton(box->addButton(QMessageBox::Cancel));
    QObject::connect(
        going, &QPushButton::clicked, parent, [&environment, parent, agreed = std::move(agreed)] {
            if (keepAgreement(environment, parent)) agreed();
        });
    box->open();
}

}  // namespace tesserine::app
