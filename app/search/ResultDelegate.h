#pragma once

#include <QStyledItemDelegate>

namespace tesserine::app {

class AppEnvironment;
class ResultsModel;

/// Draws one result: title, the words around what matched, then where it is.
class ResultDelegate final : public QStyledItemDelegate {
    Q_OBJECT

public:
    ResultDelegate(const AppEnvironment& environment, const ResultsModel& model, QObject* parent);

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index)
        const override;

private:
    QString details(int row) const;

    const AppEnvironment& environment_;
    const ResultsModel& model_;
};

}  // namespace tesserine::app
