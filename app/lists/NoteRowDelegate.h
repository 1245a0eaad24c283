#pragma once

#include "base/Instant.h"

#include <QStyledItemDelegate>

namespace tesserine::app {

class AppEnvironment;
class NoteListModel;

/// Draws one note of a list: title, small signs, then the beginning of the text, then date and
/// tags. Texts that run from right to left are set so.
class NoteRowDelegate final : public QStyledItemDelegate {
    Q_OBJECT

public:
    NoteRowDelegate(const AppEnvironment& environment, const NoteListModel& model, QObject* parent);

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index)
        const override;

private:
    void paintTitle(QPainter& painter, QRect line, int row) const;
    void paintSnippet(QPainter& painter, const QRect& line, int row) const;
    void paintDate(QPainter& painter, QRect& line, Instant date) const;
    void paintDetails(QPainter& painter, QRect line, int row) const;

    const AppEnvironment& environment_;
    const NoteListModel& model_;
};

}  // namespace tesserine::app
