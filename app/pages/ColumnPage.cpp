#include "app/pages/ColumnPage.h"

#include "app/look/Theme.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <algorithm>

namespace tesserine::app {

ColumnPage::ColumnPage(QWidget* parent)
    : QScrollArea(parent), middle_(new QWidget), column_(new QVBoxLayout(middle_)) {
    auto* const content = new QWidget;
    auto* const row = new QHBoxLayout(content);
    row->setContentsMargins(space::huge, space::huge, space::huge, space::huge);
    row->addStretch(1);
    row->addWidget(middle_, 1000);
    row->addStretch(1);
    setWidget(content);
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->setBackgroundRole(QPalette::Window);
}

int ColumnPage::heightForWidth(int width) const { return widget()->heightForWidth(width); }

void ColumnPage::limitColumn(int width) {
    middle_->setMaximumWidth(std::max(width, column_->minimumSize().width()));
    setMinimumWidth(widget()->minimumSizeHint().width());
}

}  // namespace tesserine::app
