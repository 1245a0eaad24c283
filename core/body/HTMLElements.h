#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string_view>

namespace tesserine {

/// The elements that parser, sanitizer or plain text treat in a way of their own. Any other one is
/// `other` and has only its name.
// clang-format off
enum class HTMLElement : std::uint8_t {
    other,
    a, abbr, acronym, address, applet, area, article, aside, audio, b, base, big, blockquote,
    body, br, button, canvas, caption, center, cite, code, col, colgroup, dd, del, div, dl, dt,
    em, embed, enNote, fieldset, figcaption, figure, font, footer, form, frame, frameset, h1,
    h2, h3, h4, h5, h6, head, header, hr, html, i, iframe, img, input, ins, kbd, label, li,
    link, main, map, mark, math, meta, nav, noembed, noframes, noscript, object, ol, optgroup,
    option, p, param, plaintext, pre, s, samp, script, section, select, small, source, span,
    strike, strong, style, sub, sup, svg, table, tbody, td, templateElement, textarea, tfoot,
    th, thead, title, tr, track, tt, u, ul, var, video, wbr, xmp,
};
// clang-format on

namespace html {

inline constexpr std::size_t elementCount = static_cast<std::size_t>(HTMLElement::xmp) + 1;

/// The names in the order of `HTMLElement`; `other` has none.
// clang-format off
inline constexpr std::array<std::string_view, elementCount> elementNames{
    "",
    "a", "abbr", "acronym", "address", "applet", "area", "article", "aside", "audio", "b",
    "base", "big", "blockquote", "body", "br", "button", "canvas", "caption", "center", "cite",
    "code", "col", "colgroup", "dd", "del", "div", "dl", "dt", "em", "embed", "en-note",
    "fieldset", "figcaption", "figure", "font", "footer", "form", "frame", "frameset", "h1",
    "h2", "h3", "h4", "h5", "h6", "head", "header", "hr", "html", "i", "iframe", "img", "input",
    "ins", "kbd", "label", "li", "link", "main", "map", "mark", "math", "meta", "nav",
    "noembed", "noframes", "noscript", "object", "ol", "optgroup", "option", "p", "param",
    "plaintext", "pre", "s", "samp", "script", "section", "select", "small", "source", "span",
    "strike", "strong", "style", "sub", "sup", "svg", "table", "tbody", "td", "template",
    "textarea", "tfoot", "th", "thead", "title", "tr", "track", "tt", "u", "ul", "var", "video",
    "wbr", "xmp",
};
// clang-format on

constexpr std::size_t indexOf(HTMLElement element) { return static_cast<std::size_t>(element); }

constexpr std::string_view nameOf(HTMLElement element) { return elementNames[indexOf(element)]; }

/// The element of a lower-case name, or `other`. Constant time.
HTMLElement elementNamed(std::string_view name);

/// What the syntax or the page layout says of an element.
enum ElementTrait : std::uint16_t {
    isVoid = 1 << 0,           ///< has neither content nor an end tag
    isRawText = 1 << 1,        ///< its content is text up to its end tag, whatever it looks like
    isReferenceText = 1 << 2,  ///< the same, but character references count
    endsParagraph = 1 << 3,    ///< its start tag ends an open paragraph
    isHeading = 1 << 4,
    isFormatting = 1 << 5,  ///< marks text in a line; reopened when something else closed it
    isBlock = 1 << 6,       ///< begins and ends a line of its own
    isTableFrame = 1 << 7,  ///< holds parts of a table: white space in it is layout of the source
    isCell = 1 << 8,        ///< what is inside does not close what is outside
    isItemFrame = 1 << 9,   ///< holds items, rows or cells
    isTablePart = 1 << 10,  ///< closed by its peers in the same table
};

struct TraitWords {
    ElementTrait trait;
    std::string_view elements;
};

/// Every trait with its elements, separated by a space.
inline constexpr std::array traitWords{
    TraitWords{isVoid, "area base br col embed hr img input link meta param source track wbr"},
    TraitWords{isRawText, "script style xmp iframe noembed noframes plaintext title textarea"},
    TraitWords{isReferenceText, "title textarea"},
    TraitWords{
        endsParagraph,
        "address article aside blockquote center div dl fieldset figure figcaption footer form "
        "h1 h2 h3 h4 h5 h6 header hr main nav ol p pre section table ul"},
    TraitWords{isHeading, "h1 h2 h3 h4 h5 h6"},
    TraitWords{isFormatting, "a b big code em font i mark s small span strike strong sub sup tt u"},
    TraitWords{
        isBlock,
        "p div h1 h2 h3 h4 h5 h6 ul ol li blockquote pre hr table tr td th caption figure "
        "figcaption dl dt dd thead tbody tfoot"},
    TraitWords{isTableFrame, "table thead tbody tfoot tr colgroup"},
    TraitWords{isCell, "td th caption"},
    TraitWords{isItemFrame, "ul ol dl table thead tbody tfoot tr colgroup"},
    TraitWords{isTablePart, "thead tbody tfoot tr td th caption colgroup"},
};

/// Calls `take` with each word of `words`, which are separated by one space.
template <class Take>
constexpr void forEachWord(std::string_view words, Take take) {
    while (!words.empty()) {
        const std::size_t end = std::min(words.find(' '), words.size());
        take(words.substr(0, end));
        words.remove_prefix(std::min(end + 1, words.size()));
    }
}

/// As `elementNamed`, for tables made while compiling: an unknown name does not compile.
constexpr HTMLElement knownElement(std::string_view name) {
    const auto* const found = std::find(elementNames.begin() + 1, elementNames.end(), name);
    if (found == elementNames.end()) throw std::invalid_argument("not a known element");
    return static_cast<HTMLElement>(found - elementNames.begin());
}

inline constexpr auto elementTraits = [] {
    std::array<std::uint16_t, elementCount> traits{};
    for (const TraitWords& row : traitWords) {
        forEachWord(row.elements, [&](std::string_view name) {
            std::uint16_t& element = traits[indexOf(knownElement(name))];
            element = static_cast<std::uint16_t>(element | row.trait);
        });
    }
    return traits;
}();

constexpr bool has(HTMLElement element, ElementTrait trait) {
    return (elementTraits[indexOf(element)] & trait) != 0;
}

constexpr bool isSpace(char c) {
    return c == ' ' || c == '\n' || c == '\t' || c == '\f' || c == '\r';
}

/// Whether `text` is white space as HTML means it.
constexpr bool isSpaceOnly(std::string_view text) {
    return std::all_of(text.begin(), text.end(), isSpace);
}

}  // namespace html
}  // namespace tesserine
