#include "app/editor/TypingRules.h"

#include "app/editor/NoteDocument.h"
#include "app/editor/StyleCommands.h"

#include <QRegularExpression>
#include <QTextBlock>
#include <QTextCursor>

#include <algorithm>
#include <optional>

namespace tesserine::app::editing {
namespace {

using Kind = BlockStyle::Kind;
using Paragraph = AttributedText::Paragraph;

constexpr int longestAddress = 2'000;

Paragraph styled(const Paragraph& paragraph, Kind kind, int level = 0) {
    return restyled(paragraph, BlockStyle{kind, level});
}

/// What a plain paragraph becomes that begins with `beginning` and a space.
std::optional<Paragraph> styleFor(const QString& beginning, const Paragraph& own) {
    static const QRegularExpression heading("^#{1,6}$");
    static const QRegularExpression number("^([0-9]{1,4})[.)]$");
    static const QRegularExpression box("^\\[([ xX]?)\\]$");
    if (heading.match(beginning).hasMatch()) {
        return styled(own, Kind::heading, static_cast<int>(beginning.size()));
    }
    if (beginning == "-" || beginning == "*" || beginning == "+") return styled(own, Kind::bullet);
    if (beginning == ">") return styled(own, Kind::quote);
    if (beginning == "```") return styled(own, Kind::codeBlock);
    if (const auto match = number.match(beginning); match.hasMatch()) {
        Paragraph item = styled(own, Kind::numbered);
        const int first = match.captured(1).toInt();
        if (first != 1) item.startNumber = first;
        return item;
    }
    if (const auto match = box.match(beginning); match.hasMatch()) {
        Paragraph item = styled(own, Kind::checklist);
        item.isChecked = match.captured(1).toLower() == "x";
        return item;
    }
    return {};
}

void removeBeginning(QTextCursor& cursor) {
    cursor.movePosition(QTextCursor::StartOfBlock, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
}

}  // namespace

bool applyShortcut(NoteDocument& document, QTextCursor& cursor) {
    const QTextBlock block = cursor.block();
    const QString typed = block.text().left(cursor.positionInBlock());
    if (typed.size() > 8 || !typed.endsWith(' ')) return false;
    const Paragraph own = document.paragraph(block);
    const auto style = styleFor(typed.chopped(1), own);
    const bool isBoxInList = style && kindOf(*style) == Kind::checklist
                             && (kindOf(own) == Kind::bullet || kindOf(own) == Kind::numbered);
    if (!style || (kindOf(own) != Kind::paragraph && !isBoxInList)) return false;
    cursor.beginEditBlock();
    removeBeginning(cursor);
    document.setParagraph(cursor.block(), *style);
    cursor.endEditBlock();
    return true;
}

bool applyLineShortcut(NoteDocument& document, QTextCursor& cursor) {
    const QTextBlock block = cursor.block();
    const bool isCode = block.text() == "```";
    const bool isDivider = block.text() == "---" || block.text() == "***";
    if ((!isCode && !isDivider) || document.kind(block) != Kind::paragraph) return false;
    cursor.beginEditBlock();
    cursor.movePosition(QTextCursor::EndOfBlock);
    removeBeginning(cursor);
    const Paragraph own = document.paragraph(cursor.block());
    document.setParagraph(cursor.block(), styled(own, isCode ? Kind::codeBlock : Kind::divider));
    if (isDivider) document.splitParagraph(cursor, own);
    cursor.endEditBlock();
    return true;
}

void linkAddressBefore(NoteDocument& document, const QTextCursor& cursor) {
    static const QRegularExpression address(
        R"((?:^|\s)((?:https?://|mailto:)[^\s<>"]*[^\s<>".,;:!?)\]])[.,;:!?)\]]*\s?$)");
    const QTextBlock block = cursor.block();
    const int begin = std::max(cursor.positionInBlock() - longestAddress, 0);
    const auto match = address.match(block.text().mid(begin, cursor.positionInBlock() - begin));
    if (!match.hasMatch() || document.kind(block) == Kind::codeBlock) return;
    QTextCursor link(cursor);
    link.setPosition(block.position() + begin + static_cast<int>(match.capturedStart(1)));
    link.setPosition(
        block.position() + begin + static_cast<int>(match.capturedEnd(1)), QTextCursor::KeepAnchor);
    if (hasMark(document, link, HTMLElement::a) || hasMark(document, link, HTMLElement::code)) {
        return;
    }
    setLink(document, link, match.captured(1).toStdString());
}

}  // namespace tesserine::app::editing
