#include "core/body/HTMLElements.h"

namespace tesserine::html {
namespace {

constexpr std::size_t slotCount = 512;

constexpr std::size_t slotOf(std::string_view name) {
    const auto byte = [&](std::size_t i) -> std::size_t {
        return static_cast<unsigned char>(name[i]);
    };
    const std::size_t middle = byte(name.size() / 2);
    return (name.size() * 57 + byte(0) * 7 + byte(name.size() - 1) * 31 + middle * 113) % slotCount;
}

/// Open addressing: a name lies in its slot or in one of those that follow, up to an empty one.
constexpr auto slots = [] {
    std::array<HTMLElement, slotCount> filled{};
    for (std::size_t i = 1; i < elementCount; ++i) {
        std::size_t slot = slotOf(elementNames[i]);
        while (filled[slot] != HTMLElement::other) {
            slot = (slot + 1) % slotCount;
        }
        filled[slot] = static_cast<HTMLElement>(i);
    }
    return filled;
}();

constexpr std::size_t longestElementName = [] {
    std::size_t longest = 0;
    for (const std::string_view name : elementNames) {
        longest = std::max(longest, name.size());
    }
    return longest;
}();

}  // namespace

HTMLElement elementNamed(std::string_view name) {
    if (name.empty() || name.size() > longestElementName) return HTMLElement::other;
    for (std::size_t slot = slotOf(name);; slot = (slot + 1) % slotCount) {
        const HTMLElement element = slots[slot];
        if (element == HTMLElement::other || nameOf(element) == name) return element;
    }
}

}  // namespace tesserine::html
