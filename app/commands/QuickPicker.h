#pragma once

#include <QFrame>
#include <QIcon>

#include <vector>

class QLabel;
class QLineEdit;
class QListView;

namespace tesserine::app {

class PickerModel;

/// A row that can be picked.
struct PickerRow {
    QIcon icon{};
    QString title{};
    std::vector<int> marks{};  ///< positions in the title that match what was typed
    QString aside{};           ///< after the title, less loud: where it belongs
    QString detail{};          ///< at the end: keys, a date
};

/// A field and the rows that fit what is typed into it, in a pop-up at the top of a window.
///
/// Arrows and Page Up, Page Down move, Return picks, Escape and a click outside close. Deletes
/// itself when it closes. Who makes it answers `typed` with `setRows`, at once or later; Return
/// waits for that.
class QuickPicker : public QFrame {
    Q_OBJECT

public:
    /// `hint` stands in the empty field and names the pop-up to screen readers.
    QuickPicker(const QString& hint, QWidget* window);

    /// Shows it at the top of the window, with nothing typed.
    void open();
    void setRows(std::vector<PickerRow> rows);
    /// What is said when nothing fits.
    void setEmptyText(const QString& text);
    QString text() const;

signals:
    void typed(const QString& text);
    /// After the pop-up has closed; `row` counts in the rows set last.
    void picked(int row);

private:
    void ask();
    bool eventFilter(QObject* watched, QEvent* event) override;
    void fit();
    void pick(int row);
    void move(int steps);

    QLineEdit* const field_;
    QListView* const list_;
    QLabel* const empty_;
    PickerModel* const model_;
    bool isAnswered_ = false;   // the rows are those of what was typed last
    bool picksAnswer_ = false;  // Return was pressed before they were there
};

}  // namespace tesserine::app
