#pragma once

#include "base/Uuid.h"

#include <QStringList>
#include <QStyledItemDelegate>

#include <functional>
#include <utility>

namespace tesserine {
struct SearchResult;
}

namespace tesserine::app {

class AppEnvironment;
class ResultsModel;

/// When a task is due and where it belongs, piece by piece, as lists of tasks say it.
using TaskDetails = std::function<QStringList(const Uuid& task)>;

/// Draws one result: title, the words around what matched, then where it is.
class ResultDelegate final : public QStyledItemDelegate {
    Q_OBJECT

public:
    ResultDelegate(const AppEnvironment& environment, const ResultsModel& model, QObject* parent);

    /// What is said of a task; nothing as long as it is not set.
    void setTaskDetails(TaskDetails details) { taskDetails_ = std::move(details); }
    /// What stands below the words: of a note when it was changed and where it is, of a task when
    /// it is due and where it belongs.
    QString details(int row) const;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index)
        const override;

private:
    QStringList detailsOfNote(const SearchResult& found) const;

    const AppEnvironment& environment_;
    const ResultsModel& model_;
    TaskDetails taskDetails_;
};

}  // namespace tesserine::app
