#pragma once

#include "app/commands/CommandTable.h"

#include <QAction>
#include <QKeySequence>
#include <QList>
#include <QObject>

#include <string>
#include <unordered_map>
#include <utility>

class QMenuBar;

namespace tesserine {
class Preferences;
}

namespace tesserine::app {

/// The actions of the table with the user's keys. One per program, on the main thread.
///
/// A command that nobody handles is disabled. Keys act in the widgets of their context, once these
/// were made known by `attach`. Changed keys are kept in the preferences, "tesserine.keys." and
/// the command's id.
class Commands final : public QObject {
    Q_OBJECT

public:
    explicit Commands(Preferences& preferences, QObject* parent = nullptr);

    QAction& action(std::string_view id) const;

    /// Enables the command: `handle()`, or for a toggle `handle(bool isOn)`, is called for it while
    /// `receiver` lives.
    template <class Receiver, class Handle>
    void on(std::string_view id, Receiver* receiver, Handle handle) {
        QAction& handled = action(id);
        connect(&handled, &QAction::triggered, receiver, std::move(handle));
        handled.setEnabled(true);
    }
    /// Does the command as if it had been chosen from a menu.
    void trigger(std::string_view id) const { action(id).trigger(); }

    /// Lets the keys of a context act while `widget` or one inside it has the focus; for
    /// `everywhere` the window.
    void attach(CommandContext context, QWidget& widget) const;
    /// Fills the menu bar with every command.
    void fill(QMenuBar& bar) const;

    static QList<QKeySequence> usualKeys(std::string_view id);
    QList<QKeySequence> keys(std::string_view id) const { return action(id).shortcuts(); }
    /// The first of its keys as the desktop writes them; empty when there are none.
    QString keysText(std::string_view id) const;
    /// Gives the command other keys, or none. Throws `KeysError` when a command that acts at the
    /// same place has one of them, `FileError` when it cannot be kept; nothing is changed then.
    void setKeys(std::string_view id, const QList<QKeySequence>& keys);
    /// Back to the usual keys. Throws as `setKeys` does.
    void resetKeys(std::string_view id);

signals:
    void keysChanged(const QString& id);

private:
    void makeAction(const Command& command);
    void applyKeys(const Command& command, const QList<QKeySequence>& keys);
    QList<QKeySequence> chosenKeys(const Command& command) const;
    const Command* ownerOf(const QKeySequence& keys, const Command& asking) const;

    Preferences& preferences_;
    std::unordered_map<std::string_view, QAction*> actions_;
};

}  // namespace tesserine::app
