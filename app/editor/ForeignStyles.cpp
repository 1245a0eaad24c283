#include "app/editor/ForeignStyles.h"

#include "app/editor/InlineStyle.h"
#include "core/body/CSSColor.h"

#include <algorithm>
#include <charconv>
#include <string>

namespace tesserine::app::paste {
namespace {

constexpr int boldWeight = 600;

bool isBold(const std::string& weight) {
    return weight == "bold" || weight == "bolder"
           || leadingNumber(weight).value_or(0) >= boldWeight;
}

bool isUsualWeight(const std::string& weight) {
    return weight == "normal" || weight == "lighter"
           || leadingNumber(weight).value_or(boldWeight) < boldWeight;
}

/// Whether a ground was chosen to mark words: a colour, and not the white or grey of a page.
bool marksWords(const std::string& background) {
    const auto hex = css::opaqueColor(background);
    if (!hex || hex->size() != 7) return false;
    constexpr int leastChroma = 60;
    int least = 255;
    int most = 0;
    for (std::size_t place = 1; place < hex->size(); place += 2) {
        int value = 0;
        std::from_chars(hex->data() + place, hex->data() + place + 2, value, 16);
        least = std::min(least, value);
        most = std::max(most, value);
    }
    return most - least >= leastChroma;
}

}  // namespace

std::vector<HTMLElement> elementsOf(std::string_view style) {
    std::vector<HTMLElement> elements;
    const auto add = [&](bool isMeant, HTMLElement element) {
        if (isMeant) elements.push_back(element);
    };
    const std::string slant = declared(style, "font-style");
    std::string line = declared(style, "text-decoration");
    line += declared(style, "text-decoration-line");
    const std::string height = declared(style, "vertical-align");
    std::string ground = declared(style, "background-color");
    if (ground.empty()) ground = declared(style, "background");
    add(isBold(declared(style, "font-weight")), HTMLElement::strong);
    add(slant == "italic" || slant == "oblique", HTMLElement::em);
    add(line.find("underline") != std::string::npos, HTMLElement::u);
    add(line.find("line-through") != std::string::npos, HTMLElement::s);
    add(height == "sub", HTMLElement::sub);
    add(height == "super", HTMLElement::sup);
    add(marksWords(ground), HTMLElement::mark);
    return elements;
}

bool isTakenBack(HTMLElement element, std::string_view style) {
    switch (element) {
    case HTMLElement::b:
    case HTMLElement::strong: return isUsualWeight(declared(style, "font-weight"));
    case HTMLElement::i:
    case HTMLElement::em: return declared(style, "font-style") == "normal";
    case HTMLElement::u: return declared(style, "text-decoration") == "none";
    default: return false;
    }
}

}  // namespace tesserine::app::paste
