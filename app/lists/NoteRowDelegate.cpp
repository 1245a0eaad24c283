#include "app/lists/NoteRowDelegate.h"

#include "app/lists/NoteListModel.h"
#include "app/look/Icon.h"
#include "app/look/RowPainting.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "app/state/DateWords.h"

#include <QPainter>

namespace tesserine::app {
namespace {

int heightOf(TextRole role) { return QFontMetrics(Theme::font(role)).height(); }

}  // namespace

NoteRowDelegate::NoteRowDelegate(
    const AppEnvironment& environment, const NoteListModel& model, QObject* parent)
    : QStyledItemDelegate(parent), environment_(environment), model_(model) {}

QSize NoteRowDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    const int height = heightOf(TextRole::emphasis) + heightOf(TextRole::body)
                       + heightOf(TextRole::caption) + 2 * space::medium + 2 * space::tiny;
    return {160, height};
}

void NoteRowDelegate::paint(
    QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    paintRowGround(*painter, option, Theme::colors().surface);

    const QRect inside =
        option.rect.adjusted(space::large, space::medium, -space::large, -space::medium);
    QRect line = inside;
    line.setHeight(heightOf(TextRole::emphasis));
    paintTitle(*painter, line, index.row());
    line.moveTop(line.bottom() + 1 + space::tiny);
    line.setHeight(heightOf(TextRole::body));
    paintSnippet(*painter, line, index.row());
    line.moveTop(line.bottom() + 1 + space::tiny);
    line.setHeight(heightOf(TextRole::caption));
    paintDetails(*painter, line, index.row());
    painter->restore();
}

void NoteRowDelegate::paintTitle(QPainter& painter, QRect line, int row) const {
    const NoteSummary& note = model_.summary(row);
    if (note.hasConflict) paintSign(painter, line, icon("conflict", Ink::warning));
    if (note.isPinned) paintSign(painter, line, icon("pin", Ink::accent));
    if (note.hasAttachments) paintSign(painter, line, icon("attachment", Ink::secondary));
    if (note.reminderAt) paintSign(painter, line, icon("bell", Ink::secondary));
    painter.setFont(Theme::font(TextRole::emphasis));
    painter.setPen(note.title.isEmpty() ? Theme::colors().secondaryText : Theme::colors().text);
    paintText(painter, line, shownTitle(note));
}

void NoteRowDelegate::paintSnippet(QPainter& painter, const QRect& line, int row) const {
    const QString& snippet = model_.summary(row).snippet;
    painter.setFont(Theme::font(TextRole::body));
    painter.setPen(Theme::colors().secondaryText);
    paintText(painter, line, snippet.isEmpty() ? QString("No text yet") : snippet);
}

void NoteRowDelegate::paintDate(QPainter& painter, QRect& line, Instant date) const {
    const Instant now = environment_.now();
    const bool isReminder = model_.scope().place().kind == Place::Kind::reminders;
    const auto shown = isReminder ? shownTime : shownDate;
    const QString text = shown(date, now, environment_.calendar());
    const bool isLate = isReminder && date < now;
    painter.setPen(isLate ? Theme::colors().danger : Theme::colors().secondaryText);
    const int width = painter.fontMetrics().horizontalAdvance(text);
    painter.drawText(
        cutStart(painter, line, {width, line.height()}),
        Qt::AlignCenter | Qt::TextSingleLine,
        text);
    cutStart(painter, line, {space::small, 0});
}

void NoteRowDelegate::paintDetails(QPainter& painter, QRect line, int row) const {
    painter.setFont(Theme::font(TextRole::caption));
    if (const auto date = model_.date(row)) paintDate(painter, line, *date);
    painter.setPen(Theme::colors().secondaryText);
    for (const QString& tag : model_.summary(row).tags) {
        if (!paintChip(painter, line, tag)) break;
    }
}

}  // namespace tesserine::app
