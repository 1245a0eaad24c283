#pragma once

#include "app/editor/NoteObject.h"

#include <QObject>

#include <string>

namespace tesserine::app {

class BodyEdit;
class Commands;
class KeptPlace;

/// The commands "format.link" and "format.table": ask what is needed and change the text.
class LinkCommands final : public QObject {
    Q_OBJECT

public:
    /// Both outlive it.
    LinkCommands(Commands& commands, BodyEdit& body, QObject* parent);

    /// Opens the table at a position of the document, at one of its cells; false when it is not a
    /// simple one.
    bool editTable(int position, CellPlace cell = {});

private:
    void editLink();
    void setLink(const KeptPlace& place, const QString& target, const QString& words);
    void insertTable();
    void setTable(const std::string& before, int position, const std::string& after);
    void placeTable(const std::string& html);

    BodyEdit& body_;
};

}  // namespace tesserine::app
