#include "app/commands/Commands.h"

#include "app/commands/KeysError.h"
#include "app/look/Icon.h"
#include "app/look/QtText.h"
#include "base/Preferences.h"

#include <QMenu>
#include <QMenuBar>
#include <QWidget>

#include <algorithm>
#include <cassert>
#include <map>

namespace tesserine::app {
namespace {

std::string preferenceOf(std::string_view id) { return "tesserine.keys." + std::string(id); }

/// Whether the command would be carried out instead of what was typed.
bool disturbsTyping(const Command& command, const QKeySequence& keys) {
    const bool actsInText =
        command.context == CommandContext::everywhere || command.context == CommandContext::note;
    const QKeyCombination stroke = keys[0];
    const bool isAlone =
        !(stroke.keyboardModifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
    return actsInText && isAlone && stroke.key() < Qt::Key_F1;
}

/// The menu that `menu` stands in.
CommandMenu outer(CommandMenu menu) {
    if (menu == CommandMenu::assistant) return CommandMenu::note;
    if (menu == CommandMenu::heading) return CommandMenu::format;
    if (menu == CommandMenu::alignment) return CommandMenu::format;
    if (menu == CommandMenu::priority) return CommandMenu::task;
    return menu;
}

}  // namespace

Commands::Commands(Preferences& preferences, QObject* parent)
    : QObject(parent), preferences_(preferences) {
    for (const Command& command : commandTable())
        makeAction(command);
    for (const Command& command : commandTable()) {
        // What was written into the file by hand may ask for keys twice: the first one has them.
        QList<QKeySequence> keys = chosenKeys(command);
        keys.removeIf([&](const QKeySequence& one) {
            return disturbsTyping(command, one) || ownerOf(one, command) != nullptr;
        });
        applyKeys(command, keys);
    }
}

void Commands::makeAction(const Command& command) {
    auto* const made = new QAction(qt(command.title), this);
    made->setObjectName(qt(command.id));
    if (!command.icon.empty()) made->setIcon(icon(qt(command.icon)));
    made->setCheckable(command.kind == Command::Kind::toggle);
    made->setEnabled(false);
    made->setShortcutContext(
        command.context == CommandContext::everywhere ? Qt::WindowShortcut
                                                      : Qt::WidgetWithChildrenShortcut);
    // Otherwise "Quit" and "Settings" would be moved about on some desktops.
    made->setMenuRole(QAction::NoRole);
    actions_.emplace(command.id, made);
}

QAction& Commands::action(std::string_view id) const {
    const auto found = actions_.find(id);
    assert(found != actions_.end() && "commands are named as the table does");
    return *found->second;
}

void Commands::attach(CommandContext context, QWidget& widget) const {
    for (const Command& command : commandTable()) {
        if (command.context == context) widget.addAction(&action(command.id));
    }
}

void Commands::fill(QMenuBar& bar) const {
    struct Filled {
        QMenu* menu = nullptr;
        int group = 0;
    };
    std::map<CommandMenu, Filled> filled;
    const auto into = [&](CommandMenu menu, int group) -> QMenu& {
        Filled& place = filled[menu];
        if (!place.menu) place = {bar.addMenu(qt(titleOf(menu))), group};
        if (place.group != group) place.menu->addSeparator();
        place.group = group;
        return *place.menu;
    };
    for (const Command& command : commandTable()) {
        QMenu* menu = nullptr;
        if (outer(command.menu) == command.menu) {
            menu = &into(command.menu, command.group);
        } else if (Filled& inner = filled[command.menu]; inner.menu) {
            menu = inner.menu;
        } else {
            menu = inner.menu =
                into(outer(command.menu), command.group).addMenu(qt(titleOf(command.menu)));
        }
        menu->addAction(&action(command.id));
    }
}

QList<QKeySequence> Commands::usualKeys(std::string_view id) {
    QList<QKeySequence> keys;
    const QString all = qt(command(id).keys);
    for (const QString& one : all.split(' ', Qt::SkipEmptyParts)) {
        keys.append(QKeySequence(one, QKeySequence::PortableText));
    }
    return keys;
}

QString Commands::keysText(std::string_view id) const {
    return action(id).shortcut().toString(QKeySequence::NativeText);
}

void Commands::setKeys(std::string_view id, const QList<QKeySequence>& keys) {
    const Command& changed = command(id);
    for (const QKeySequence& one : keys) {
        const std::string name = one.toString(QKeySequence::NativeText).toStdString();
        if (disturbsTyping(changed, one)) throw KeysError::neededForTyping(name);
        if (const Command* owner = ownerOf(one, changed)) {
            throw KeysError::taken(name, std::string(owner->title));
        }
    }
    if (keys == usualKeys(id)) {
        preferences_.remove(preferenceOf(id));
    } else {
        std::vector<std::string> texts;
        for (const QKeySequence& one : keys)
            texts.push_back(one.toString().toStdString());
        preferences_.set(preferenceOf(id), texts);
    }
    applyKeys(changed, keys);
    emit keysChanged(qt(id));
}

void Commands::resetKeys(std::string_view id) { setKeys(id, usualKeys(id)); }

void Commands::applyKeys(const Command& command, const QList<QKeySequence>& keys) {
    QAction& changed = action(command.id);
    changed.setShortcuts(keys);
    QString tip = qt(command.title);
    tip.remove(QChar(0x2026));  // "…"
    if (!keys.isEmpty()) tip += " (" + keysText(command.id) + ")";
    changed.setToolTip(tip);
}

QList<QKeySequence> Commands::chosenKeys(const Command& command) const {
    const auto texts = preferences_.strings(preferenceOf(command.id));
    if (!texts) return usualKeys(command.id);
    QList<QKeySequence> keys;
    for (const std::string& text : *texts) {
        const QKeySequence one(QString::fromStdString(text), QKeySequence::PortableText);
        if (!one.isEmpty() && one[0].key() != Qt::Key_unknown) keys.append(one);
    }
    return keys;
}

const Command* Commands::ownerOf(const QKeySequence& keys, const Command& asking) const {
    for (const Command& command : commandTable()) {
        const bool isOther = command.id != asking.id && overlap(command.context, asking.context);
        if (isOther && action(command.id).shortcuts().contains(keys)) return &command;
    }
    return nullptr;
}

}  // namespace tesserine::app
