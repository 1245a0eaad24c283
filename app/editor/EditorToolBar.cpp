#include "app/editor/EditorToolBar.h"

#include "app/commands/Commands.h"
#include "app/look/Icon.h"
#include "app/look/Theme.h"

#include <QMenu>
#include <QToolButton>

#include <string_view>

namespace tesserine::app {
namespace {

/// Empty entries are the gaps between groups.
constexpr std::string_view buttons[] = {
    "format.bold",
    "format.italic",
    "format.underline",
    "format.strike",
    "format.highlight",
    "format.code",
    "",
    "format.bullets",
    "format.numbered",
    "format.checklist",
    "",
    "format.quote",
    "format.codeBlock",
    "format.divider",
    "format.table",
    "",
    "format.link",
    "format.noteLink",
    "format.image",
    "note.attach",
    "note.lock"};

constexpr std::string_view styles[] = {
    "format.paragraph",
    "format.heading1",
    "format.heading2",
    "format.heading3",
    "format.heading4",
    "format.heading5",
    "format.heading6"};

}  // namespace

EditorToolBar::EditorToolBar(Commands& commands, QWidget* parent) : QToolBar(parent) {
    setObjectName("editorToolBar");
    setAccessibleName("Format");
    setIconSize(QSize(18, 18));
    setMovable(false);
    setContextMenuPolicy(Qt::PreventContextMenu);

    auto* const menu = new QMenu(this);
    for (const std::string_view id : styles) {
        menu->addAction(&commands.action(id));
    }
    auto* const heading = new QToolButton(this);
    heading->setObjectName("paragraphStyle");
    heading->setIcon(icon("heading"));
    heading->setToolTip("Paragraph style");
    heading->setAccessibleName("Paragraph style");
    heading->setAutoRaise(true);
    heading->setPopupMode(QToolButton::InstantPopup);
    heading->setMenu(menu);
    addWidget(heading);
    for (const std::string_view id : buttons) {
        if (id.empty()) {
            addSeparator();
        } else {
            addAction(&commands.action(id));
        }
    }
}

}  // namespace tesserine::app
