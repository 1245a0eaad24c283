#pragma once

#include <QElapsedTimer>
#include <QString>
#include <QWidget>

#include <vector>

class QVBoxLayout;

namespace tesserine::app {

/// Lines below each other with thin lines between them, each with at most one button.
class RowList final : public QWidget {
    Q_OBJECT

public:
    struct Row {
        QString title;
        QString hint{};
        QString button{};  ///< empty: none
        QString id{};      ///< comes back when the button is pressed
    };

    RowList(const QString& name, QWidget* parent);

    void setRows(const std::vector<Row>& rows);
    /// Shows one quiet sentence in the place of lines.
    void setHint(const QString& sentence);
    /// Says in the place of lines that they are on their way.
    void showAsking();
    /// They did not come, and nothing is said of it here.
    void stopAsking();

signals:
    void pressed(const QString& id);

private:
    void clear();
    void addRow(const Row& row);
    void press(const QString& id);

    QVBoxLayout* const column_;
    bool isAsking_ = false;  // as it is shown
    bool isPressed_ = false;
    QElapsedTimer sinceAnswer_;  // since a press brought other rows
};

}  // namespace tesserine::app
