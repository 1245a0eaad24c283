#pragma once

#include <QWidget>

class QHBoxLayout;

namespace tesserine::app {

class Commands;

/// The bar above the panes: back and forward, the search field, new note and new task.
class TopBar final : public QWidget {
    Q_OBJECT

public:
    explicit TopBar(Commands& commands, QWidget* parent = nullptr);

    /// Puts the field in the middle.
    void setField(QWidget* field);

private:
    void addButton(Commands& commands, std::string_view command);

    QHBoxLayout* row_;
    int fieldPlace_ = 0;
};

}  // namespace tesserine::app
