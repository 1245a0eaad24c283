#include "app/editor/TableDialog.h"

#include "app/look/Theme.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QMessageBox>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <functional>
#include <utility>

namespace tesserine::app {
namespace {

/// Tab leads from the last cell into a new row, not back over what stands in the first one.
class Grid final : public QTableWidget {
public:
    Grid(std::function<void()> addRow, QWidget* parent)
        : QTableWidget(parent), addRow_(std::move(addRow)) {}

private:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override {
        const bool isAtEnd = currentRow() == rowCount() - 1 && currentColumn() == columnCount() - 1;
        if (action == MoveNext && isAtEnd) addRow_();
        return QTableWidget::moveCursor(action, modifiers);
    }

    std::function<void()> addRow_;
};

}  // namespace

TableDialog::TableDialog(TableContent content, QWidget* parent, CellPlace cell)
    : QDialog(parent),
      content_(std::move(content)),
      before_(content_.html()),
      grid_(new Grid([this] { addRow(); }, this)) {
    setObjectName("tableDialog");
    setWindowTitle("Table");
    grid_->setObjectName("tableGrid");
    grid_->setAccessibleName("Table");
    grid_->horizontalHeader()->hide();
    grid_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    grid_->verticalHeader()->hide();

    auto* const tools = new QHBoxLayout;
    const auto add = [&](const QString& title, const std::function<CellPlace(int, int)>& change) {
        auto* const button = new QPushButton(title, this);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, [this, change] {
            const int row = std::max(grid_->currentRow(), 0);
            const int column = std::max(grid_->currentColumn(), 0);
            const CellPlace next = change(row, column);
            show(next.row, next.column);
        });
        tools->addWidget(button);
    };
    const auto at = [](int place) { return static_cast<std::size_t>(place); };
    // What is typed next goes into what was added, not over what stood in the cell.
    add("Add Row", [this, at](int row, int) {
        content_.insertRow(at(row) + 1);
        return CellPlace{.row = row + 1};
    });
    add("Add Column", [this, at](int row, int column) {
        content_.insertColumn(at(column) + 1);
        return CellPlace{.row = row, .column = column + 1};
    });
    add("Remove Row", [this, at](int row, int column) {
        content_.removeRow(at(row));
        return CellPlace{.row = row, .column = column};
    });
    add("Remove Column", [this, at](int row, int column) {
        content_.removeColumn(at(column));
        return CellPlace{.row = row, .column = column};
    });
    tools->addStretch(1);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    buttons->addButton("Done", QDialogButtonBox::AcceptRole);
    auto* const column = new QVBoxLayout(this);
    column->setSpacing(space::medium);
    column->addLayout(tools);
    column->addWidget(grid_, 1);
    column->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(grid_, &QTableWidget::itemChanged, this, [this, at](const QTableWidgetItem* item) {
        content_.setText(at(item->row()), at(item->column()), item->text().toStdString());
    });
    show(cell.row, cell.column);
    resize(640, 420);
}

void TableDialog::reject() {
    if (content_.html() == before_) return QDialog::reject();
    auto* const box = new QMessageBox(
        QMessageBox::Question,
        "Throw Away",
        "Throw away what was changed in this table?",
        QMessageBox::Cancel,
        this);
    box->setObjectName("question");
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setDefaultButton(QMessageBox::Cancel);
    const QPushButton* const button = box->addButton("Throw Away", QMessageBox::DestructiveRole);
    connect(button, &QPushButton::clicked, this, [this] { done(Rejected); });
    box->open();
}

/// Behind the last one; the cursor stays.
void TableDialog::addRow() {
    content_.insertRow(content_.rowCount());
    show(grid_->currentRow(), grid_->currentColumn());
}

/// The content as it is now, with the cursor in a cell.
void TableDialog::show(int row, int column) {
    const QSignalBlocker blocker(grid_);
    const int rows = static_cast<int>(content_.rowCount());
    const int columns = static_cast<int>(content_.columnCount());
    grid_->setRowCount(rows);
    grid_->setColumnCount(columns);
    for (int i = 0; i < rows * columns; ++i) {
        const TableContent::Cell& cell = content_.cell(
            static_cast<std::size_t>(i / columns), static_cast<std::size_t>(i % columns));
        auto* const item = new QTableWidgetItem(QString::fromStdString(cell.text));
        if (cell.isHeader) item->setFont(Theme::font(TextRole::emphasis));
        grid_->setItem(i / columns, i % columns, item);
    }
    grid_->setCurrentCell(std::min(row, rows - 1), std::min(column, columns - 1));
    grid_->setFocus();
}

}  // namespace tesserine::app
