#include "app/account/InfoRow.h"

#include "app/look/LongWords.h"
#include "app/look/PageParts.h"

#include <QHBoxLayout>
#include <QLabel>

namespace tesserine::app {

InfoRow::InfoRow(const QString& title, const QString& hint, QWidget* control, QWidget* parent)
    : QWidget(parent), title_(makeText({}, TextRole::body, this)), hint_(makeHint({}, this)) {
    hint_->setFont(Theme::font(TextRole::caption));
    auto* const texts = new QVBoxLayout;
    texts->setSpacing(space::hair);
    texts->addWidget(title_);
    texts->addWidget(hint_);
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(space::huge);
    row->addLayout(texts, 1);
    if (control != nullptr) row->addWidget(control, 0, Qt::AlignTop);
    setTexts(title, hint);
}

void InfoRow::setTexts(const QString& title, const QString& hint) {
    title_->setText(withBreaks(title));
    hint_->setText(withBreaks(hint));
    hint_->setVisible(!hint.isEmpty());
    setAccessibleName(title);
    setAccessibleDescription(hint);
}

}  // namespace tesserine::app
