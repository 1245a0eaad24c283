#include "app/pages/ProgressStep.h"

#include "app/state/Job.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace tesserine::app {

ProgressStep::ProgressStep(const QString& title, Job& job, QWidget* parent)
    : AssistantStep(title, parent), bar_(new QProgressBar(page)), doing_(makeHint({}, page)) {
    bar_->setTextVisible(false);
    bar_->setAccessibleName(title);
    column->addStretch(1);
    column->addWidget(bar_);
    column->addWidget(doing_);
    column->addStretch(2);
    auto* const stop = new QPushButton(Job::tr("Stop"), page);
    buttons->addWidget(stop);
    QObject::connect(stop, &QPushButton::clicked, &job, &Job::cancel);
    QObject::connect(
        &job,
        &Job::progressed,
        page,
        [bar = bar_, doing = doing_](std::size_t done, std::size_t total) {
            if (total == 0) return;
            bar->setMaximum(static_cast<int>(total));
            bar->setValue(static_cast<int>(done));
            doing->setText(Job::tr("%L1 of %L2 notes").arg(done).arg(total));
        });
}

void ProgressStep::begin(const QString& text) {
    bar_->setRange(0, 0);
    doing_->setText(text);
}

}  // namespace tesserine::app
