#pragma once

#include <QScrollArea>

class QVBoxLayout;

namespace tesserine::app {

/// A page of one column in the middle of the window. It scrolls where the screen is too small for
/// it, as with large letters.
class ColumnPage : public QScrollArea {
    Q_OBJECT

public:
    explicit ColumnPage(QWidget* parent);

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

protected:
    QWidget* middle() const { return middle_; }
    QVBoxLayout& column() const { return *column_; }
    /// Once the column is filled: makes it no wider than reads well, unless its controls need more.
    void limitColumn(int width);

private:
    QWidget* const middle_;
    QVBoxLayout* const column_;
};

}  // namespace tesserine::app
