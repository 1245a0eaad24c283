#include "app/pages/AboutDialog.h"

#include "app/look/IconLabel.h"
#include "app/look/PageParts.h"
#include "app/pages/AssistantStep.h"
#include "base/Product.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <string>

namespace tesserine::app {

AboutDialog::AboutDialog(QWidget* parent) : QDialog(parent) {
    setObjectName("aboutDialog");
    setWindowTitle(tr("About Tesserine"));
    const AssistantStep step("Tesserine", this);
    const QString version = QString::fromStdString(std::string(product::version));
    QLabel* const number = makeHint(tr("Version %1").arg(version), step.page);
    number->setTextInteractionFlags(Qt::TextSelectableByMouse);
    step.column->addWidget(number);
    step.column->addSpacing(space::small);
    step.column->addWidget(makeText(
        tr("Notes and tasks that stay yours, in one library on your own disk."),
        TextRole::body,
        step.page));
    step.column->addWidget(makeHint(tr("Free software under the MIT licence."), step.page));
    auto* const close = makeMainButton(tr("Close"), step.page);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    step.buttons->addWidget(close);

    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(space::huge, 0, 0, 0);
    row->addWidget(new IconLabel(programIcon(), 96, this), 0, Qt::AlignVCenter);
    row->addWidget(step.page, 1);
    resizeToFit(*this, {460, 240});
}

}  // namespace tesserine::app
