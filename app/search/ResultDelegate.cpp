#include "app/search/ResultDelegate.h"

#include "app/look/Icon.h"
#include "app/look/RowPainting.h"
#include "app/look/Theme.h"
#include "app/search/MarkedLine.h"
#include "app/search/ResultsModel.h"
#include "app/state/AppEnvironment.h"
#include "app/state/DateWords.h"

#include <QPainter>

namespace tesserine::app {
namespace {

constexpr int iconSide = 16;

int heightOf(TextRole role) { return QFontMetrics(Theme::font(role)).height(); }

}  // namespace

ResultDelegate::ResultDelegate(
    const AppEnvironment& environment, const ResultsModel& model, QObject* parent)
    : QStyledItemDelegate(parent), environment_(environment), model_(model) {}

QSize ResultDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    const int height = heightOf(TextRole::emphasis) + heightOf(TextRole::body)
                       + heightOf(TextRole::caption) + 2 * space::medium + 2 * space::tiny;
    return {160, height};
}

void ResultDelegate::paint(
    QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    paintRowGround(*painter, option, Theme::colors().surface);
    const SearchResult& found = model_.result(index.row());

    QRect line = option.rect.adjusted(space::large, space::medium, -space::large, 0);
    line.setHeight(heightOf(TextRole::emphasis));
    QRect title = line;
    icon(found.kind == SearchKind::task ? "task" : "note", Ink::secondary)
        .paint(painter, cutStart(*painter, title, {iconSide, iconSide}));
    cutStart(*painter, title, {space::small, 0});
    painter->setFont(Theme::font(TextRole::emphasis));
    painter->setPen(Theme::colors().text);
    MarkedLine(found.title.empty() ? "Untitled" : found.highlightedTitle).paint(*painter, title);

    painter->setPen(Theme::colors().secondaryText);
    if (!found.snippet.empty()) {
        line.moveTop(line.bottom() + 1 + space::tiny);
        line.setHeight(heightOf(TextRole::body));
        painter->setFont(Theme::font(TextRole::body));
        MarkedLine(found.snippet).paint(*painter, line);
    }

    line.moveTop(line.bottom() + 1 + space::tiny);
    line.setHeight(heightOf(TextRole::caption));
    painter->setFont(Theme::font(TextRole::caption));
    paintName(*painter, line, details(index.row()));
    painter->restore();
}

QString ResultDelegate::details(int row) const {
    const SearchResult& found = model_.result(row);
    QStringList parts;
    if (found.kind == SearchKind::note) parts = detailsOfNote(found);
    if (found.kind == SearchKind::task && taskDetails_) parts = taskDetails_(found.id);
    if (!found.attachments.empty()) {
        parts << "in " + QString::fromStdString(found.attachments.front().filename);
    }
    if (found.isTrashed) parts << "in the trash";
    return parts.join("  ·  ");
}

QStringList ResultDelegate::detailsOfNote(const SearchResult& found) const {
    QStringList parts;
    if (found.updatedAt) {
        parts << shownDate(*found.updatedAt, environment_.now(), environment_.calendar());
    }
    if (!found.notebook.empty()) parts << QString::fromStdString(found.notebook);
    for (const std::string& tag : found.tags) {
        parts << "#" + QString::fromStdString(tag);
    }
    return parts;
}

}  // namespace tesserine::app
