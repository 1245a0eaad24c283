#include "app/editor/ListRules.h"

#include "app/editor/NoteDocument.h"
#include "app/editor/StyleCommands.h"

#include <QTextBlock>
#include <QTextCursor>

#include <algorithm>

namespace tesserine::app::editing {
namespace {

using Kind = BlockStyle::Kind;
using Paragraph = AttributedText::Paragraph;

bool isEmpty(const QTextBlock& block) { return block.length() == 1; }

/// A paragraph that is split off `paragraph`.
Paragraph splitOff(const Paragraph& paragraph) {
    Paragraph next{
        .style = paragraph.style,
        .indent = paragraph.indent,
        .alignment = paragraph.alignment,
        .holder = paragraph.holder,
        .container = paragraph.container,
        .attributes = paragraph.attributes};
    return next;
}

Paragraph plainBeside(const Paragraph& paragraph) {
    return {.style = BlockStyle{}, .container = paragraph.container};
}

/// One level out of a list, or out of what it is.
Paragraph oneLevelOut(const Paragraph& paragraph) {
    if (!isListItem(paragraph) || paragraph.indent == 0) return restyled(paragraph, BlockStyle{});
    Paragraph moved = paragraph;
    --moved.indent;
    return moved;
}

/// Whether Enter on this empty paragraph leaves what it stands in.
bool leavesOnEnter(const NoteDocument& document, const QTextBlock& block) {
    const Paragraph& paragraph = document.paragraph(block);
    if (isListItem(paragraph) || kindOf(paragraph) == Kind::quote) return true;
    const bool isCode = kindOf(paragraph) == Kind::codeBlock;
    const bool isLast = !block.next().isValid() || document.kind(block.next()) != Kind::codeBlock;
    return isCode && isLast && block.previous().isValid()
           && document.kind(block.previous()) == Kind::codeBlock;
}

bool cannotBeJoined(const NoteDocument& document, const QTextBlock& block) {
    return document.isObjectBlock(block) || document.kind(block) == Kind::divider;
}

void removeBlock(const QTextBlock& block) {
    QTextCursor cursor(block);
    const bool isLast = !block.next().isValid();
    if (isLast) {
        cursor.setPosition(block.position() - 1);
        cursor.setPosition(block.position() + block.length() - 1, QTextCursor::KeepAnchor);
    } else {
        cursor.setPosition(block.next().position(), QTextCursor::KeepAnchor);
    }
    cursor.removeSelectedText();
}

/// Beside an object or a line: an empty paragraph before it or behind it.
void newLineBeside(NoteDocument& document, QTextCursor& cursor) {
    const Paragraph own = document.paragraph(cursor.block());
    const bool isBefore = cursor.atBlockStart() && !cursor.atBlockEnd();
    if (!isBefore) {
        cursor.movePosition(QTextCursor::EndOfBlock);
        return document.splitParagraph(cursor, plainBeside(own));
    }
    document.splitParagraph(cursor, own);
    document.setParagraph(cursor.block().previous(), plainBeside(own));
    cursor.setPosition(cursor.block().previous().position());
}

void splitHere(NoteDocument& document, QTextCursor& cursor) {
    const Paragraph own = document.paragraph(cursor.block());
    if (kindOf(own) != Kind::heading) return document.splitParagraph(cursor, splitOff(own));
    const bool isAtStart = cursor.atBlockStart();
    const bool isAtEnd = cursor.atBlockEnd();
    document.splitParagraph(cursor, isAtEnd ? plainBeside(own) : splitOff(own));
    if (isAtStart && !isAtEnd) {
        document.setParagraph(cursor.block().previous(), plainBeside(own));
    }
}

}  // namespace

void newLine(NoteDocument& document, QTextCursor& cursor) {
    cursor.beginEditBlock();
    cursor.removeSelectedText();
    const QTextBlock block = cursor.block();
    if (cannotBeJoined(document, block)) {
        newLineBeside(document, cursor);
    } else if (isEmpty(block) && leavesOnEnter(document, block)) {
        document.setParagraph(block, oneLevelOut(document.paragraph(block)));
    } else {
        splitHere(document, cursor);
    }
    cursor.endEditBlock();
}

bool backspaceAtStart(NoteDocument& document, QTextCursor& cursor) {
    const QTextBlock block = cursor.block();
    const bool isObject = document.isObjectBlock(block);
    if (!isObject && document.kind(block) != Kind::paragraph) {
        document.setParagraph(block, oneLevelOut(document.paragraph(block)));
        return true;
    }
    const QTextBlock before = block.previous();
    if (!before.isValid()) return false;
    if (isObject && isEmpty(before)) {
        removeBlock(before);
        return true;
    }
    if (!isObject && !cannotBeJoined(document, before)) return false;
    if (document.kind(before) == Kind::divider) {
        removeBlock(before);
        return true;
    }
    const int end = before.position() + before.length() - 1;
    if (isEmpty(block)) removeBlock(block);
    cursor.setPosition(end);
    return true;
}

bool deleteAtEnd(NoteDocument& document, QTextCursor& cursor) {
    const QTextBlock block = cursor.block();
    const QTextBlock next = block.next();
    if (!next.isValid() || (!cannotBeJoined(document, next) && !cannotBeJoined(document, block))) {
        return false;
    }
    if (document.kind(next) == Kind::divider) {
        removeBlock(next);
    } else if (isEmpty(block) || isEmpty(next)) {
        removeBlock(isEmpty(block) ? block : next);
    } else {
        cursor.setPosition(next.position());
    }
    return true;
}

bool changeIndent(NoteDocument& document, const QTextCursor& cursor, int levels) {
    bool hasItems = false;
    QTextCursor step(cursor);
    step.beginEditBlock();
    for (const QTextBlock& block : selectedBlocks(cursor)) {
        Paragraph moved = document.paragraph(block);
        if (!isListItem(moved)) continue;
        hasItems = true;
        const Paragraph before = document.paragraph(block.previous());
        const bool isInList = block.previous().isValid() && isListItem(before);
        const int deepest = isInList ? before.indent + 1 : 0;
        moved.indent =
            std::clamp(moved.indent + levels, 0, std::min(deepest, AttributedText::deepestIndent));
        if (levels > 0) {
            moved.beginsBlock = false;
            moved.frameAttributes.clear();
        }
        document.setParagraph(block, moved);
    }
    step.endEditBlock();
    return hasItems;
}

void toggleChecked(NoteDocument& document, const QTextBlock& item) {
    Paragraph changed = document.paragraph(item);
    changed.isChecked = !changed.isChecked;
    document.setParagraph(item, changed);
}

void tick(NoteDocument& document, const QTextCursor& cursor) {
    QTextCursor step(cursor);
    const auto blocks = selectedBlocks(cursor);
    const auto isItem = [&](const QTextBlock& block) {
        return document.kind(block) == Kind::checklist;
    };
    step.beginEditBlock();
    if (std::ranges::none_of(blocks, isItem)) {
        setBlockStyle(document, cursor, BlockStyle{Kind::checklist});
    } else {
        const bool areAllChecked = std::ranges::all_of(blocks, [&](const QTextBlock& block) {
            return !isItem(block) || document.paragraph(block).isChecked;
        });
        for (const QTextBlock& block : blocks) {
            if (isItem(block) && document.paragraph(block).isChecked == areAllChecked) {
                toggleChecked(document, block);
            }
        }
    }
    step.endEditBlock();
}

int numberOf(const NoteDocument& document, const QTextBlock& item) {
    const Paragraph& own = document.paragraph(item);
    int before = 0;
    const Paragraph* first = &own;
    for (QTextBlock block = item; !first->beginsBlock && block.previous().isValid();) {
        block = block.previous();
        const Paragraph& paragraph = document.paragraph(block);
        if (!isListItem(paragraph) || paragraph.indent < own.indent) break;
        if (paragraph.indent > own.indent) continue;
        if (kindOf(paragraph) != Kind::numbered) break;
        first = &paragraph;
        ++before;
    }
    return first->startNumber.value_or(1) + before;
}

bool moveLines(NoteDocument& document, QTextCursor& cursor, Direction direction) {
    const auto blocks = selectedBlocks(cursor);
    const QTextBlock other =
        direction == Direction::up ? blocks.front().previous() : blocks.back().next();
    if (!other.isValid()) return false;
    QTextCursor whole(other);
    whole.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    const AttributedText content = document.content(whole);
    const int length = other.length();
    const int anchor = cursor.anchor();
    const int position = cursor.position();
    // The one neighbour moves to the other side, so that what is selected stays selected.
    QTextCursor step(cursor);
    step.beginEditBlock();
    if (direction == Direction::up) {
        step.setPosition(blocks.back().position() + blocks.back().length() - 1);
        const Paragraph last = document.paragraph(blocks.back());
        document.splitParagraph(step, last);
        document.insertParagraphs(step, content);
        removeBlock(document.findBlock(other.position()));
    } else {
        removeBlock(other);
        step.setPosition(blocks.front().position());
        document.splitParagraph(step, document.paragraph(blocks.front()));
        step.movePosition(QTextCursor::PreviousCharacter);
        document.insertParagraphs(step, content);
    }
    step.endEditBlock();
    const int moved = direction == Direction::up ? -length : length;
    cursor.setPosition(anchor + moved);
    cursor.setPosition(position + moved, QTextCursor::KeepAnchor);
    return true;
}

}  // namespace tesserine::app::editing
