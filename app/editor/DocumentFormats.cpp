#include "app/editor/DocumentFormats.h"

#include "app/editor/BlockLook.h"

#include <QTextBlockFormat>
#include <QTextCharFormat>

#include <string>
#include <string_view>

namespace tesserine::app {
namespace {

/// Texts with their lengths and numbers in a row, which nothing else can be taken for.
class Key {
public:
    Key& number(int value) {
        key_ += std::to_string(value) + ' ';
        return *this;
    }
    Key& text(std::string_view value) {
        number(static_cast<int>(value.size()));
        key_ += value;
        return *this;
    }
    Key& attributes(const OwnedAttributes& attributes) {
        number(static_cast<int>(attributes.size()));
        for (const OwnedAttribute& attribute : attributes) {
            text(attribute.name).text(attribute.value);
        }
        return *this;
    }
    const std::string& result() const { return key_; }

private:
    std::string key_;
};

std::string keyOf(const InlineStyle& style) {
    Key key;
    for (const InlineMark& mark : style.marks) {
        key.number(static_cast<int>(mark.element)).number(mark.isApart ? 1 : 0);
        key.attributes(mark.attributes);
    }
    return key.text(style.object).result();
}

std::string keyOf(const AttributedText::Paragraph& paragraph) {
    Key key;
    key.number(static_cast<int>(kindOf(paragraph)));
    key.number(paragraph.style ? paragraph.style->level : 0);
    key.number(paragraph.indent).number(static_cast<int>(paragraph.alignment));
    key.number(paragraph.isChecked ? 1 : 0);
    key.number(paragraph.startNumber ? 1 : 0).number(paragraph.startNumber.value_or(0));
    key.number(static_cast<int>(paragraph.holder)).number(paragraph.beginsBlock ? 1 : 0);
    key.number(static_cast<int>(paragraph.container));
    return key.attributes(paragraph.attributes).attributes(paragraph.frameAttributes).result();
}

}  // namespace

QTextBlockFormat DocumentFormats::blockFormat(const Paragraph& paragraph) {
    QTextBlockFormat format;
    format.setProperty(blockProperty, paragraphs_.add(keyOf(paragraph), paragraph));
    look::dress(format, paragraph);
    return format;
}

const AttributedText::Paragraph& DocumentFormats::paragraph(const QTextFormat& blockFormat) const {
    static const Paragraph plain{.style = BlockStyle{BlockStyle::Kind::paragraph}};
    const bool isOurs = blockFormat.hasProperty(blockProperty);
    const int number = isOurs ? blockFormat.intProperty(blockProperty) : -1;
    return paragraphs_.has(number) ? paragraphs_.at(number) : plain;
}

QTextCharFormat DocumentFormats::charFormat(const InlineStyle& style, const Paragraph& paragraph) {
    QTextCharFormat format;
    format.setProperty(styleProperty, styles_.add(keyOf(style), style));
    look::dress(format, style, paragraph);
    if (!style.object.empty()) format.setObjectType(objectType);
    return format;
}

const InlineStyle& DocumentFormats::style(const QTextFormat& charFormat) const {
    static const InlineStyle plain;
    const bool isOurs = charFormat.hasProperty(styleProperty);
    const int number = isOurs ? charFormat.intProperty(styleProperty) : -1;
    return styles_.has(number) ? styles_.at(number) : plain;
}

}  // namespace tesserine::app
