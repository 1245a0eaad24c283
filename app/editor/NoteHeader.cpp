#include "app/editor/NoteHeader.h"

#include "app/editor/ListDrag.h"
#include "app/editor/ReminderButton.h"
#include "app/editor/TagsField.h"
#include "app/look/Theme.h"

#include <QDragEnterEvent>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QVBoxLayout>

namespace tesserine::app {
namespace {

class TitleField final : public QLineEdit {
public:
    using QLineEdit::QLineEdit;

private:
    void dragEnterEvent(QDragEnterEvent* event) override {
        const QMimeData& dragged = *event->mimeData();
        if (isListDrag(dragged) || isFileDrag(dragged)) return event->ignore();
        QLineEdit::dragEnterEvent(event);
    }
};

}  // namespace

NoteHeader::NoteHeader(AppEnvironment& environment, OpenNote& open, QWidget* parent)
    : QWidget(parent),
      reminder_(new ReminderButton(environment, open, this)),
      tags_(new TagsField(environment, open, this)),
      title_(new TitleField(this)) {
    title_->setObjectName("noteTitle");
    title_->setAccessibleName("Title");
    title_->setPlaceholderText("Title");
    title_->setFrame(false);
    QFont large = Theme::font(TextRole::title);
    large.setPointSizeF(large.pointSizeF() * 1.2);
    title_->setFont(large);
    auto* const row = new QHBoxLayout;
    row->addWidget(tags_, 1);
    row->addWidget(reminder_, 0, Qt::AlignTop);
    auto* const column = new QVBoxLayout(this);
    column->setSpacing(space::tiny);
    column->addWidget(title_);
    column->addLayout(row);
    setColumn(space::huge);
}

void NoteHeader::setColumn(int side) {
    layout()->setContentsMargins(side - space::hair, space::medium, side, space::small);
}

void NoteHeader::refresh() {
    tags_->refresh();
    reminder_->refresh();
}

}  // namespace tesserine::app
