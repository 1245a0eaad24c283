#include "core/body/InlineStyle.h"

#include <algorithm>

namespace tesserine {
namespace {

std::string_view valueOf(const InlineMark& mark, std::string_view name) {
    const auto found = std::ranges::find(mark.attributes, name, &OwnedAttribute::name);
    return found == mark.attributes.end() ? std::string_view() : found->value;
}

/// What the stored form declares: "name: #rrggbb", one or two of them with "; " between.
std::string_view declared(const InlineMark& mark, std::string_view name) {
    constexpr std::string_view between = "; ";
    std::string_view rest = valueOf(mark, "style");
    while (!rest.empty()) {
        const std::string_view declaration = rest.substr(0, rest.find(between));
        const std::size_t colon = declaration.find(": ");
        if (declaration.substr(0, colon) == name) return declaration.substr(colon + 2);
        rest.remove_prefix(std::min(declaration.size() + between.size(), rest.size()));
    }
    return {};
}

std::string_view innermostDeclared(const InlineStyle& style, std::string_view name) {
    for (std::size_t i = style.marks.size(); i-- > 0;) {
        const std::string_view value = declared(style.marks[i], name);
        if (!value.empty()) return value;
    }
    return {};
}

}  // namespace

OwnedAttribute owned(const HTMLAttribute& attribute) {
    return {std::string(attribute.name), std::string(attribute.value)};
}

OwnedAttributes owned(std::span<const HTMLAttribute> attributes) {
    OwnedAttributes all;
    all.reserve(attributes.size());
    for (const HTMLAttribute& attribute : attributes) {
        all.push_back(owned(attribute));
    }
    return all;
}

bool InlineStyle::has(HTMLElement element) const {
    return std::ranges::find(marks, element, &InlineMark::element) != marks.end();
}

std::string_view InlineStyle::link() const {
    const auto found = std::ranges::find(marks, HTMLElement::a, &InlineMark::element);
    return found == marks.end() ? std::string_view() : valueOf(*found, "href");
}

std::string_view InlineStyle::color() const { return innermostDeclared(*this, "color"); }

std::string_view InlineStyle::background() const {
    return innermostDeclared(*this, "background-color");
}

}  // namespace tesserine
