#pragma once

#include <QObject>

namespace tesserine::app {

class BodyEdit;
class Commands;

/// The commands "format.…" and "edit.…" that need nothing but the text: handles them for `body` and
/// keeps their ticks true to where the cursor stands.
class FormatCommands final : public QObject {
    Q_OBJECT

public:
    /// Both outlive it.
    FormatCommands(Commands& commands, BodyEdit& body, QObject* parent);

private:
    void showState();

    Commands& commands_;
    BodyEdit& body_;
};

}  // namespace tesserine::app
