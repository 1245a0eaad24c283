#pragma once

#include "app/commands/QuickPicker.h"

#include <QAbstractListModel>
#include <QStyledItemDelegate>

namespace tesserine::app {

/// The rows of a picker.
class PickerModel final : public QAbstractListModel {
    Q_OBJECT

public:
    using QAbstractListModel::QAbstractListModel;

    void setRows(std::vector<PickerRow> rows);
    const PickerRow& row(int index) const { return rows_[static_cast<std::size_t>(index)]; }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    std::vector<PickerRow> rows_;
};

/// Draws a row of a `PickerModel`.
class PickerDelegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index)
        const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

}  // namespace tesserine::app
