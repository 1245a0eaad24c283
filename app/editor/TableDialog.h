#pragma once

#include "app/editor/TableContent.h"

#include <QDialog>

class QTableWidget;

namespace tesserine::app {

/// A simple table to be filled in, with rows and columns to add and to take away.
class TableDialog final : public QDialog {
    Q_OBJECT

public:
    TableDialog(TableContent content, QWidget* parent);

    const TableContent& content() const { return content_; }

private:
    void addRow();
    void show(int row, int column);

    TableContent content_;
    QTableWidget* const grid_;
};

}  // namespace tesserine::app
