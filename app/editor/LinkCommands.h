#pragma once

#include <QObject>

namespace tesserine::app {

class BodyEdit;
class Commands;

/// The command "format.link": asks for an address and puts a link into the text.
class LinkCommands final : public QObject {
    Q_OBJECT

public:
    /// Both outlive it.
    LinkCommands(Commands& commands, BodyEdit& body, QObject* parent);

private:
    void editLink();

    BodyEdit& body_;
};

}  // namespace tesserine::app
