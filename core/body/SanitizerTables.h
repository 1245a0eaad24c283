#pragma once

#include "core/body/HTMLElements.h"

#include <array>
#include <cstdint>
#include <string_view>

/// Which elements a stored body may hold, and what becomes of the others.
namespace tesserine::html {

/// Left out with everything inside.
inline constexpr std::array<std::string_view, 33> dropSet{
    "script",   "style",  "head",     "title",  "meta",     "link",  "base",     "iframe", "frame",
    "frameset", "object", "embed",    "applet", "noscript", "svg",   "math",     "video",  "audio",
    "source",   "track",  "canvas",   "map",    "area",     "param", "template", "form",   "input",
    "button",   "select", "textarea", "option", "optgroup", "label"};

struct Renaming {
    std::string_view from;
    std::string_view to;
};

/// Written under another name.
inline constexpr std::array<Renaming, 24> renamings{
    Renaming{"b", "strong"},    Renaming{"i", "em"},         Renaming{"strike", "s"},
    Renaming{"del", "s"},       Renaming{"ins", "u"},        Renaming{"big", "span"},
    Renaming{"font", "span"},   Renaming{"tt", "code"},      Renaming{"var", "em"},
    Renaming{"cite", "em"},     Renaming{"article", "div"},  Renaming{"kbd", "code"},
    Renaming{"section", "div"}, Renaming{"main", "div"},     Renaming{"header", "div"},
    Renaming{"footer", "div"},  Renaming{"aside", "div"},    Renaming{"nav", "div"},
    Renaming{"body", "div"},    Renaming{"html", "div"},     Renaming{"en-note", "div"},
    Renaming{"abbr", "span"},   Renaming{"acronym", "span"}, Renaming{"samp", "code"}};

/// Written as they are. Whatever is in none of the tables is unwrapped: its children take its
/// place.
inline constexpr std::array<std::string_view, 39> keepSet{
    "p",     "div",        "span",   "strong",     "em", "u",  "s",       "code",
    "pre",   "blockquote", "h1",     "h2",         "h3", "h4", "h5",      "h6",
    "ul",    "ol",         "li",     "hr",         "br", "a",  "img",     "table",
    "thead", "tbody",      "tfoot",  "tr",         "td", "th", "caption", "sub",
    "sup",   "mark",       "figure", "figcaption", "dl", "dt", "dd"};

/// Their text is kept to the letter, white space included.
inline constexpr std::array<std::string_view, 3> preformattedSet{"pre", "code", "textarea"};

/// The tables' word on one element.
struct ElementPolicy {
    HTMLElement canonical = HTMLElement::other;
    bool isDropped = false;
    bool isKept = false;
};

inline constexpr auto elementPolicies = [] {
    std::array<ElementPolicy, elementCount> policies{};
    const auto contains = [](const auto& names, std::string_view name) {
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    for (std::size_t i = 1; i < elementCount; ++i) {
        const std::string_view name = elementNames[i];
        const auto* const renaming =
            std::find_if(renamings.begin(), renamings.end(), [&](const Renaming& row) {
                return row.from == name;
            });
        const std::string_view canonical = renaming == renamings.end() ? name : renaming->to;
        policies[i] = {
            knownElement(canonical),
            contains(dropSet, name) || contains(dropSet, canonical),
            contains(keepSet, canonical)};
    }
    return policies;
}();

constexpr const ElementPolicy& policyFor(HTMLElement element) {
    return elementPolicies[indexOf(element)];
}

constexpr bool isPreformatted(HTMLElement canonical) {
    const std::string_view name = nameOf(canonical);
    return std::find(preformattedSet.begin(), preformattedSet.end(), name) != preformattedSet.end();
}

/// Whether every name of the tables is a known element, each once in its table.
constexpr bool areConsistent() {
    const auto isUnique = [](const auto& names) {
        for (auto name = names.begin(); name != names.end(); ++name) {
            knownElement(*name);
            if (std::find(name + 1, names.end(), *name) != names.end()) return false;
        }
        return true;
    };
    return isUnique(dropSet) && isUnique(keepSet) && isUnique(preformattedSet)
           && std::all_of(renamings.begin(), renamings.end(), [](const Renaming& row) {
                  return policyFor(knownElement(row.from)).isKept;
              });
}
static_assert(areConsistent());

}  // namespace tesserine::html
