#pragma once

#include <QToolBar>

namespace tesserine::app {

class Commands;

/// The buttons above a note; what does not fit is reached by the arrow at the end.
class EditorToolBar final : public QToolBar {
    Q_OBJECT

public:
    explicit EditorToolBar(Commands& commands, QWidget* parent = nullptr);
};

}  // namespace tesserine::app
