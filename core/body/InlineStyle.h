#pragma once

#include "core/body/HTMLElements.h"
#include "core/body/HTMLNode.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// Attributes of an element in the order of the stored form, with their values as they are meant
/// (no character references). As `HTMLAttribute`, but they own their texts.
struct OwnedAttribute {
    std::string name;
    std::string value;

    friend bool operator==(const OwnedAttribute&, const OwnedAttribute&) = default;
};
using OwnedAttributes = std::vector<OwnedAttribute>;

OwnedAttribute owned(const HTMLAttribute& attribute);
OwnedAttributes owned(std::span<const HTMLAttribute> attributes);

/// One element around a stretch of text: strong, em, u, s, code, mark, sub, sup, span or a.
struct InlineMark {
    HTMLElement element = HTMLElement::span;
    OwnedAttributes attributes{};
    /// Tells the mark from an equal one right before it: they are two elements and not one.
    bool isApart = false;

    friend bool operator==(const InlineMark&, const InlineMark&) = default;
};

/// How a stretch of text looks inside its paragraph.
struct InlineStyle {
    /// The outermost first.
    std::vector<InlineMark> marks{};
    /// Of a U+FFFC: the canonical HTML it stands for, such as a picture. Empty for text.
    std::string object{};

    /// Whether it is bold (strong), italic (em), underlined (u), struck (s), code, highlighted
    /// (mark), subscript (sub), superscript (sup) or a link (a).
    bool has(HTMLElement element) const;
    /// The address of the link, or empty.
    std::string_view link() const;
    /// "#rrggbb" of the innermost element that gives one, or empty.
    std::string_view color() const;
    std::string_view background() const;

    friend bool operator==(const InlineStyle&, const InlineStyle&) = default;
};

}  // namespace tesserine
