#include "app/editor/FormatCommands.h"

#include "app/commands/Commands.h"
#include "app/editor/BodyEdit.h"
#include "app/editor/ColorMenu.h"
#include "app/editor/ListRules.h"
#include "app/editor/StyleCommands.h"

#include <QAction>
#include <QTextCursor>

#include <string_view>

namespace tesserine::app {
namespace {

using Kind = BlockStyle::Kind;

struct MarkCommand {
    std::string_view id;
    HTMLElement element;
};
constexpr MarkCommand markCommands[] = {
    {"format.bold", HTMLElement::strong},
    {"format.italic", HTMLElement::em},
    {"format.underline", HTMLElement::u},
    {"format.strike", HTMLElement::s},
    {"format.highlight", HTMLElement::mark},
    {"format.code", HTMLElement::code},
    {"format.subscript", HTMLElement::sub},
    {"format.superscript", HTMLElement::sup},
};

struct BlockCommand {
    std::string_view id;
    BlockStyle style;
};
constexpr BlockCommand blockCommands[] = {
    {"format.heading1", {Kind::heading, 1}},
    {"format.heading2", {Kind::heading, 2}},
    {"format.heading3", {Kind::heading, 3}},
    {"format.heading4", {Kind::heading, 4}},
    {"format.heading5", {Kind::heading, 5}},
    {"format.heading6", {Kind::heading, 6}},
    {"format.bullets", {Kind::bullet}},
    {"format.numbered", {Kind::numbered}},
    {"format.checklist", {Kind::checklist}},
    {"format.quote", {Kind::quote}},
    {"format.codeBlock", {Kind::codeBlock}},
};

struct AlignmentCommand {
    std::string_view id;
    AttributedText::Alignment alignment;
};
constexpr AlignmentCommand alignmentCommands[] = {
    {"format.alignUsual", AttributedText::Alignment::natural},
    {"format.alignLeft", AttributedText::Alignment::left},
    {"format.alignCenter", AttributedText::Alignment::center},
    {"format.alignRight", AttributedText::Alignment::right},
    {"format.justify", AttributedText::Alignment::justify},
};

/// How much wider a picture becomes at once.
constexpr double pictureStep = 1.1;

struct EditCommand {
    std::string_view id;
    void (*act)(NoteDocument& note, QTextCursor& cursor);
};
constexpr EditCommand editCommands[] = {
    {"format.paragraph",
     [](NoteDocument& note, QTextCursor& cursor) { editing::setBlockStyle(note, cursor, {}); }},
    {"format.tick", [](NoteDocument& note, QTextCursor& cursor) { editing::tick(note, cursor); }},
    {"format.indent",
     [](NoteDocument& note, QTextCursor& cursor) { editing::changeIndent(note, cursor, 1); }},
    {"format.outdent",
     [](NoteDocument& note, QTextCursor& cursor) { editing::changeIndent(note, cursor, -1); }},
    {"format.lineUp",
     [](NoteDocument& note, QTextCursor& cursor) {
         editing::moveLines(note, cursor, editing::Direction::up);
     }},
    {"format.lineDown",
     [](NoteDocument& note, QTextCursor& cursor) {
         editing::moveLines(note, cursor, editing::Direction::down);
     }},
    {"format.divider",
     [](NoteDocument& note, QTextCursor& cursor) { editing::insertDivider(note, cursor); }},
    {"format.clear",
     [](NoteDocument& note, QTextCursor& cursor) { editing::clearMarks(note, cursor); }},
};

}  // namespace

FormatCommands::FormatCommands(Commands& commands, BodyEdit& body, QObject* parent)
    : QObject(parent), commands_(commands), body_(body) {
    for (const MarkCommand& command : markCommands) {
        commands.on(command.id, this, [this, command] {
            body_.toggleMark(command.element);
            showState();
        });
    }
    for (const BlockCommand& command : blockCommands) {
        commands.on(command.id, this, [this, command] {
            body_.edit([&](NoteDocument& note, QTextCursor& cursor) {
                editing::toggleBlockStyle(note, cursor, command.style);
            });
        });
    }
    for (const AlignmentCommand& command : alignmentCommands) {
        commands.on(command.id, this, [this, command] {
            body_.edit([&](NoteDocument& note, QTextCursor& cursor) {
                editing::setAlignment(note, cursor, command.alignment);
            });
        });
    }
    for (const EditCommand& command : editCommands) {
        commands.on(command.id, this, [this, command] { body_.edit(command.act); });
    }
    commands.on("format.textColor", this, [this] { askColor(body_, editing::ColorUse::text); });
    commands.on(
        "format.highlightColor", this, [this] { askColor(body_, editing::ColorUse::highlight); });
    commands.on("format.pictureLarger", &body, [this] { body_.scalePicture(pictureStep); });
    commands.on("format.pictureSmaller", &body, [this] { body_.scalePicture(1 / pictureStep); });
    commands.on("edit.undo", &body, [this] { body_.undo(); });
    commands.on("edit.redo", &body, [this] { body_.redo(); });
    commands.attach(CommandContext::note, body);
    connect(&body, &QTextEdit::cursorPositionChanged, this, &FormatCommands::showState);
    connect(&body, &QTextEdit::selectionChanged, this, &FormatCommands::showState);
}

void FormatCommands::showState() {
    if (body_.isLoading()) return;
    const QTextCursor cursor = body_.textCursor();
    for (const MarkCommand& command : markCommands) {
        commands_.action(command.id)
            .setChecked(editing::hasMark(body_.note(), cursor, command.element));
    }
}

}  // namespace tesserine::app
