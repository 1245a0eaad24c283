#include "app/editor/BlockLook.h"

#include "app/look/Theme.h"

#include <QFontDatabase>
#include <QTextBlockFormat>
#include <QTextCharFormat>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace tesserine::app::look {
namespace {

using Kind = BlockStyle::Kind;
using Alignment = AttributedText::Alignment;

struct Distances {
    double top;
    double bottom;
    double sides = 0;  // at both sides
    int indent = 0;    // levels, at the side where reading begins
};

/// Neighbours stand apart by the larger of the two distances between them.
Distances distancesOf(const AttributedText::Paragraph& paragraph) {
    switch (kindOf(paragraph)) {
    case Kind::heading: return {paragraph.style->level < 3 ? 20.0 : 14.0, 6};
    case Kind::codeBlock: return {0, 0, 14, 0};
    case Kind::bullet:
    case Kind::numbered:
    case Kind::checklist: return {4, 4, 0, 1 + std::clamp(paragraph.indent, 0, 8)};
    case Kind::quote: return {9, 9, 0, 1};
    case Kind::divider:
    case Kind::preserved:
    case Kind::encrypted: return {10, 10};
    case Kind::paragraph: break;
    }
    return {9, 9};
}

Qt::Alignment alignmentFlag(Alignment alignment) {
    constexpr std::array<Qt::Alignment, 5> flags{
        Qt::AlignLeading,
        Qt::AlignLeft | Qt::AlignAbsolute,
        Qt::AlignHCenter,
        Qt::AlignRight | Qt::AlignAbsolute,
        Qt::AlignJustify};
    return flags[static_cast<std::size_t>(alignment)];
}

Qt::LayoutDirection directionOf(const AttributedText::Paragraph& paragraph) {
    for (const OwnedAttribute& attribute : paragraph.attributes) {
        if (attribute.name != "dir") continue;
        if (attribute.value == "rtl") return Qt::RightToLeft;
        if (attribute.value == "ltr") return Qt::LeftToRight;
    }
    return Qt::LayoutDirectionAuto;
}

QColor colorFrom(std::string_view hex) {
    return QColor(QString::fromUtf8(hex.data(), static_cast<qsizetype>(hex.size())));
}

bool isDone(const AttributedText::Paragraph& paragraph) {
    return kindOf(paragraph) == Kind::checklist && paragraph.isChecked;
}

/// Whether its words stand back.
bool isSecondary(const AttributedText::Paragraph& paragraph) {
    const Kind kind = kindOf(paragraph);
    const bool isSmallHeading = kind == Kind::heading && paragraph.style->level > 3;
    return isSmallHeading || kind == Kind::quote || isDone(paragraph);
}

void dressForParagraph(QTextCharFormat& format, const AttributedText::Paragraph& paragraph) {
    const Kind kind = kindOf(paragraph);
    if (kind == Kind::heading) {
        constexpr std::array steps{2, 1, 0, 0, 0, 0};
        const int level = std::clamp(paragraph.style->level, 1, 6);
        format.setProperty(
            QTextFormat::FontSizeAdjustment, steps[static_cast<std::size_t>(level - 1)]);
        format.setFontWeight(QFont::Bold);
    }
    if (isDone(paragraph)) format.setFontStrikeOut(true);
}

void dressAsCode(QTextCharFormat& format) {
    format.setFontFamilies(QFontDatabase::systemFont(QFontDatabase::FixedFont).families());
    format.setFontFixedPitch(true);
}

/// What the writer of the note chose. A ground of their own takes dark words in every scheme.
void dressInColors(QTextCharFormat& format, const InlineStyle& style) {
    const QColor color = colorFrom(style.color());
    const QColor background = colorFrom(style.background());
    if (color.isValid()) format.setForeground(color);
    if (!background.isValid()) return;
    format.setBackground(background);
    const bool isLight = background.lightness() > 140;
    if (!color.isValid()) format.setForeground(isLight ? QColor(Qt::black) : QColor(Qt::white));
}

}  // namespace

void dress(QTextBlockFormat& format, const AttributedText::Paragraph& paragraph) {
    const Distances distances = distancesOf(paragraph);
    const auto direction = directionOf(paragraph);
    format.setTopMargin(distances.top);
    format.setBottomMargin(distances.bottom);
    format.setLeftMargin(distances.sides);
    format.setRightMargin(distances.sides);
    format.setIndent(distances.indent);
    if (direction != Qt::LayoutDirectionAuto) format.setLayoutDirection(direction);
    const bool isHeading = kindOf(paragraph) == Kind::heading;
    // Added to each line, and not a share of it: a picture in a line is high already.
    format.setLineHeight(isHeading ? 2 : 6, QTextBlockFormat::LineDistanceHeight);
    if (isHeading) format.setHeadingLevel(paragraph.style->level);
    if (paragraph.alignment != Alignment::natural) {
        format.setAlignment(alignmentFlag(paragraph.alignment));
    }
}

void dress(
    QTextCharFormat& format, const InlineStyle& style, const AttributedText::Paragraph& paragraph) {
    dressForParagraph(format, paragraph);
    if (kindOf(paragraph) == Kind::codeBlock || style.has(HTMLElement::code)) dressAsCode(format);
    if (style.has(HTMLElement::strong)) format.setFontWeight(QFont::Bold);
    if (style.has(HTMLElement::em)) format.setFontItalic(true);
    if (style.has(HTMLElement::u)) format.setFontUnderline(true);
    if (style.has(HTMLElement::s)) format.setFontStrikeOut(true);
    if (style.has(HTMLElement::sub)) {
        format.setVerticalAlignment(QTextCharFormat::AlignSubScript);
    } else if (style.has(HTMLElement::sup)) {
        format.setVerticalAlignment(QTextCharFormat::AlignSuperScript);
    }
    dressInColors(format, style);
    const std::string_view link = style.link();
    if (link.empty()) return;
    format.setAnchor(true);
    format.setAnchorHref(QString::fromUtf8(link.data(), static_cast<qsizetype>(link.size())));
    format.setFontUnderline(true);
}

QTextCharFormat themeColors(const InlineStyle& style, const AttributedText::Paragraph& paragraph) {
    const Colors& colors = Theme::colors();
    QTextCharFormat format;
    const bool hasGround = !style.background().empty();
    if (!style.link().empty()) {
        format.setForeground(colors.accent);
    } else if (isSecondary(paragraph) && style.color().empty() && !hasGround) {
        format.setForeground(colors.secondaryText);
    }
    if (hasGround) return format;
    if (style.has(HTMLElement::mark)) {
        format.setBackground(colors.highlight);
    } else if (style.has(HTMLElement::code)) {
        format.setBackground(colors.code);
    }
    return format;
}

}  // namespace tesserine::app::look
