#include "app/editor/ForeignLists.h"

#include "app/editor/InlineStyle.h"
#include "core/body/HTMLSerializer.h"

#include <algorithm>

namespace tesserine::app::paste {
namespace {

constexpr std::string_view digits = "0123456789";
constexpr int mostLevels = 9;

/// The number that counts in "2", "1.2." and "(3)": the last one.
std::optional<int> lastNumber(std::string_view label) {
    const std::size_t last = label.find_last_of(digits);
    if (last == std::string_view::npos) return std::nullopt;
    const std::size_t before = label.substr(0, last).find_last_not_of(digits);
    return leadingNumber(label.substr(before == std::string_view::npos ? 0 : before + 1));
}

}  // namespace

std::optional<ItemMark> itemMark(std::string_view style) {
    const std::string value = declared(style, "mso-list");
    const std::size_t place = value.find("level");
    if (place == std::string::npos) return std::nullopt;
    const auto level = leadingNumber(std::string_view(value).substr(place + 5));
    if (!level) return std::nullopt;
    // "l0 level2 lfo1": the levels of one list differ in nothing else.
    const std::size_t behind = value.find(' ', place);
    std::string list = value.substr(0, place);
    if (behind != std::string::npos) list += value.substr(behind);
    return ItemMark{.list = list, .level = std::clamp(*level, 1, mostLevels)};
}

bool isItemLabel(std::string_view style) { return declared(style, "mso-list") == "ignore"; }

Numbering numberingOf(std::string_view label) {
    if (const auto number = lastNumber(label)) return {.isNumbered = true, .number = number};
    const bool isPointed = label.find_first_of(".)") != std::string_view::npos;
    return {.isNumbered = isPointed};
}

void ForeignLists::beginItem(const ItemMark& mark, std::string_view label) {
    const Numbering numbering = numberingOf(label);
    while (!lists_.empty() && lists_.back().mark.level > mark.level) {
        closeLast();
    }
    const bool isSibling = !lists_.empty() && lists_.back().mark.level == mark.level;
    const bool goesOn = isSibling && lists_.back().mark.list == mark.list
                        && lists_.back().isNumbered == numbering.isNumbered;
    if (goesOn) {
        output_.close();  // the item before
    } else {
        if (isSibling) closeLast();
        open(mark, numbering);
    }
    output_.open(HTMLElement::li, "li", {});
}

void ForeignLists::open(const ItemMark& mark, const Numbering& numbering) {
    lists_.push_back({mark, numbering.isNumbered});
    if (!numbering.isNumbered) return output_.open(HTMLElement::ul, "ul", {});
    const std::string start = std::to_string(numbering.number.value_or(1));
    const std::vector<HTMLAttribute> attributes{{"start", start}};
    const bool isUsual = numbering.number.value_or(1) == 1;
    output_.open(
        HTMLElement::ol, "ol", isUsual ? std::span<const HTMLAttribute>() : std::span(attributes));
}

void ForeignLists::closeLast() {
    output_.close();  // the item
    output_.close();
    lists_.pop_back();
}

void ForeignLists::end() {
    while (isOpen()) {
        closeLast();
    }
}

}  // namespace tesserine::app::paste
