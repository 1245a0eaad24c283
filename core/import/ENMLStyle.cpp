#include "core/import/ENMLStyle.h"

#include "base/Text.h"
#include "core/body/CSSColor.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace tesserine {
namespace {

bool isTrue(std::string_view value) { return value == "true"; }

bool isBoldWeight(std::string_view value) {
    int weight = 0;
    std::from_chars(value.data(), value.data() + value.size(), weight);
    return value == "bold" || value == "bolder" || weight >= 600;
}

bool contains(std::string_view value, std::string_view word) {
    return value.find(word) != std::string_view::npos;
}

std::string colorOf(std::string_view value, std::string_view usual) {
    std::string color = css::opaqueColor(value).value_or("");
    return color == usual ? std::string{} : color;
}

struct Property {
    std::string_view name;
    void (*take)(ENMLStyle& style, std::string_view value);
};

void takeDecoration(ENMLStyle& style, std::string_view value) {
    style.isUnderlined = style.isUnderlined || contains(value, "underline");
    style.isStruck = style.isStruck || contains(value, "line-through");
}

void takeBackground(ENMLStyle& style, std::string_view value) {
    style.background = colorOf(value, "#ffffff");
}

/// Those of Evernote are written with one or two hyphens before them, or none.
constexpr auto properties = std::to_array<Property>({
    {"font-weight",
     [](ENMLStyle& style, std::string_view value) { style.isBold = isBoldWeight(value); }},
    {"font-style",
     [](ENMLStyle& style, std::string_view value) {
         style.isItalic = value == "italic" || value == "oblique";
     }},
    {"text-decoration", takeDecoration},
    {"text-decoration-line", takeDecoration},
    {"color",
     [](ENMLStyle& style, std::string_view value) { style.color = colorOf(value, "#000000"); }},
    {"background-color", takeBackground},
    {"background", takeBackground},
    {"evernote-highlight",
     [](ENMLStyle& style, std::string_view value) { style.isHighlighted = isTrue(value); }},
    {"en-highlight", [](ENMLStyle& style, std::string_view) { style.isHighlighted = true; }},
    {"en-todo", [](ENMLStyle& style, std::string_view value) { style.isTodoList = isTrue(value); }},
    {"en-checked",
     [](ENMLStyle& style, std::string_view value) { style.isChecked = isTrue(value); }},
    {"en-codeblock",
     [](ENMLStyle& style, std::string_view value) { style.isCodeBlock = isTrue(value); }},
    {"en-task-group",
     [](ENMLStyle& style, std::string_view value) { style.isTaskGroup = isTrue(value); }},
    {"en-id", [](ENMLStyle& style, std::string_view value) { style.groupID = value; }},
});

void takeDeclaration(ENMLStyle& style, std::string_view declaration) {
    const std::size_t colon = declaration.find(':');
    if (colon == std::string_view::npos) return;
    const std::string name = text::asciiLowercased(text::trimmed(declaration.substr(0, colon)));
    const std::string value = text::asciiLowercased(text::trimmed(declaration.substr(colon + 1)));
    const std::size_t hyphens = std::min(name.find_first_not_of('-'), name.size());
    const auto* const property =
        std::ranges::find(properties, std::string_view(name).substr(hyphens), &Property::name);
    if (property != properties.end()) property->take(style, value);
}

}  // namespace

ENMLStyle enmlStyle(std::string_view style) {
    ENMLStyle result;
    while (!style.empty()) {
        const std::size_t end = std::min(style.find(';'), style.size());
        takeDeclaration(result, style.substr(0, end));
        style.remove_prefix(std::min(end + 1, style.size()));
    }
    return result;
}

}  // namespace tesserine
