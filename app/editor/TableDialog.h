#pragma once

#include "app/editor/NoteObject.h"
#include "app/editor/TableContent.h"

#include <QDialog>

#include <string>

class QTableWidget;

namespace tesserine::app {

/// A simple table to be filled in, with rows and columns to add and to take away.
class TableDialog final : public QDialog {
    Q_OBJECT

public:
    /// With the cursor in `cell`, or near it where there is none.
    TableDialog(TableContent content, QWidget* parent, CellPlace cell = {});

    const TableContent& content() const { return content_; }
    /// Asks first where something was filled in; `done` does not.
    void reject() override;

private:
    void addRow();
    void show(int row, int column);

    TableContent content_;
    const std::string before_;  // the table, unchanged
    QTableWidget* const grid_;
};

}  // namespace tesserine::app
