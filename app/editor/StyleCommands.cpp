#include "app/editor/StyleCommands.h"

#include "app/editor/NoteDocument.h"

#include <QTextBlock>
#include <QTextCursor>

#include <algorithm>
#include <utility>

namespace tesserine::app::editing {
namespace {

using Kind = BlockStyle::Kind;
using Paragraph = AttributedText::Paragraph;

OwnedAttributes withoutAttribute(const OwnedAttributes& attributes, std::string_view name) {
    OwnedAttributes kept = attributes;
    std::erase_if(kept, [&](const OwnedAttribute& attribute) { return attribute.name == name; });
    return kept;
}

/// Takes a declaration out of the attribute style, which has the form of a stored body.
void dropDeclaration(InlineMark& mark, std::string_view property) {
    const auto found = std::ranges::find(mark.attributes, "style", &OwnedAttribute::name);
    if (found == mark.attributes.end()) return;
    std::string kept;
    std::string_view rest = found->value;
    while (!rest.empty()) {
        const std::string_view declaration = rest.substr(0, rest.find("; "));
        rest.remove_prefix(std::min(declaration.size() + 2, rest.size()));
        if (declaration.substr(0, declaration.find(':')) == property) continue;
        if (!kept.empty()) kept += "; ";
        kept += declaration;
    }
    found->value = kept;
    if (kept.empty()) mark.attributes.erase(found);
}

/// Calls `change(paragraph)` for the selected paragraphs that can be edited.
template <class Change>
void changeParagraphs(NoteDocument& document, const QTextCursor& cursor, Change change) {
    QTextCursor step(cursor);
    step.beginEditBlock();
    for (const QTextBlock& block : selectedBlocks(cursor)) {
        if (document.isObjectBlock(block)) continue;
        document.setParagraph(block, change(document.paragraph(block)));
    }
    step.endEditBlock();
}

}  // namespace

std::vector<QTextBlock> selectedBlocks(const QTextCursor& cursor) {
    const QTextDocument& document = *cursor.document();
    std::vector<QTextBlock> blocks{document.findBlock(cursor.selectionStart())};
    for (QTextBlock next = blocks.back().next();
         next.isValid() && next.position() < cursor.selectionEnd();
         next = next.next()) {
        blocks.push_back(next);
    }
    return blocks;
}

void removeMark(InlineStyle& style, HTMLElement element) {
    std::erase_if(style.marks, [&](const InlineMark& mark) { return mark.element == element; });
}

void setMark(InlineStyle& style, InlineMark mark) {
    removeMark(style, mark.element);
    style.marks.push_back(std::move(mark));
}

void setMark(InlineStyle& style, HTMLElement element, bool isOn) {
    removeMark(style, element);
    if (!isOn) return;
    if (element == HTMLElement::sub) removeMark(style, HTMLElement::sup);
    if (element == HTMLElement::sup) removeMark(style, HTMLElement::sub);
    style.marks.push_back({.element = element});
}

void setColor(InlineStyle& style, ColorUse use, std::string_view color) {
    const bool isText = use == ColorUse::text;
    const std::string_view property = isText ? "color" : "background-color";
    for (InlineMark& mark : style.marks) {
        dropDeclaration(mark, property);
    }
    std::erase_if(style.marks, [&](const InlineMark& mark) {
        const bool isPlainMark = mark.element == HTMLElement::mark && !isText;
        const bool isSpan = mark.element == HTMLElement::span || isPlainMark;
        return isSpan && mark.attributes.empty();
    });
    if (color.empty()) return;
    std::string declaration(property);
    declaration.append(": ").append(color);
    style.marks.push_back(
        {.element = isText ? HTMLElement::span : HTMLElement::mark,
         .attributes = {{"style", std::move(declaration)}}});
}

bool hasMark(const NoteDocument& document, const QTextCursor& cursor, HTMLElement element) {
    if (!cursor.hasSelection()) return document.style(cursor.charFormat()).has(element);
    bool isEverywhere = true;
    for (const QTextBlock& block : selectedBlocks(cursor)) {
        for (auto place = block.begin(); !place.atEnd(); ++place) {
            const QTextFragment fragment = place.fragment();
            const bool isSelected =
                fragment.position() < cursor.selectionEnd()
                && fragment.position() + fragment.length() > cursor.selectionStart();
            if (isSelected) {
                isEverywhere &= document.style(fragment.charFormat()).has(element);
            }
        }
    }
    return isEverywhere;
}

void setLink(NoteDocument& document, const QTextCursor& selection, std::string_view address) {
    document.changeStyles(selection, [&](InlineStyle& style) {
        removeMark(style, HTMLElement::a);
        if (address.empty()) return;
        const OwnedAttributes attributes{{"href", std::string(address)}};
        style.marks.insert(
            style.marks.begin(), {.element = HTMLElement::a, .attributes = attributes});
    });
}

void clearMarks(NoteDocument& document, const QTextCursor& selection) {
    document.changeStyles(selection, [](InlineStyle& style) {
        std::erase_if(
            style.marks, [](const InlineMark& mark) { return mark.element != HTMLElement::a; });
    });
}

std::string selectLink(const NoteDocument& document, QTextCursor& cursor) {
    const auto linkAt = [&](int position) {
        return std::string(document.styleAt(position).link());
    };
    const QTextBlock block = cursor.block();
    int start = cursor.selectionStart();
    std::string address = linkAt(start);
    if (address.empty() && start > block.position()) address = linkAt(--start);
    if (address.empty()) return {};
    int end = start;
    while (start > block.position() && linkAt(start - 1) == address) {
        --start;
    }
    while (end < block.position() + block.length() - 1 && linkAt(end) == address) {
        ++end;
    }
    cursor.setPosition(start);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    return address;
}

Paragraph restyled(const Paragraph& paragraph, BlockStyle style) {
    if (paragraph.style == style) return paragraph;
    Paragraph changed{
        .style = style,
        .alignment = paragraph.alignment,
        .container = paragraph.container,
        .attributes = withoutAttribute(paragraph.attributes, "class")};
    if (isListItem(paragraph) && isListItem(changed)) changed.indent = paragraph.indent;
    if (style.kind == Kind::codeBlock) changed.alignment = AttributedText::Alignment::natural;
    return changed;
}

void toggleBlockStyle(NoteDocument& document, const QTextCursor& cursor, BlockStyle style) {
    const auto blocks = selectedBlocks(cursor);
    const bool areSo = std::ranges::all_of(blocks, [&](const QTextBlock& block) {
        return document.isObjectBlock(block) || document.paragraph(block).style == style;
    });
    setBlockStyle(document, cursor, areSo ? BlockStyle{} : style);
}

void setBlockStyle(NoteDocument& document, const QTextCursor& cursor, BlockStyle style) {
    changeParagraphs(
        document, cursor, [&](const Paragraph& paragraph) { return restyled(paragraph, style); });
}

void setAlignment(
    NoteDocument& document, const QTextCursor& cursor, AttributedText::Alignment alignment) {
    changeParagraphs(document, cursor, [&](const Paragraph& paragraph) {
        Paragraph changed = paragraph;
        if (kindOf(paragraph) != Kind::codeBlock) changed.alignment = alignment;
        return changed;
    });
}

void insertDivider(NoteDocument& document, QTextCursor& cursor) {
    AttributedText divider;
    divider.append("\n", BlockStyle{Kind::divider});
    divider.append("\n", BlockStyle{});
    cursor.movePosition(QTextCursor::EndOfBlock);
    document.insertParagraphs(cursor, divider);
}

}  // namespace tesserine::app::editing
