#pragma once

#include "core/body/HTMLElements.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace tesserine {

/// The elements that are open at a place of a body, outermost first, and the rules by which tags
/// close them. The tree builder asks it while reading and the writer of stored bodies while
/// writing: since both follow the same rules, what was written is read back as the same tree.
///
/// A rule looks at the open elements only, in time linear in their number.
class OpenElements {
public:
    void push(HTMLElement element);
    void pop();
    std::size_t size() const noexcept { return elements_.size(); }
    bool isEmpty() const noexcept { return elements_.empty(); }
    HTMLElement operator[](std::size_t index) const { return elements_[index]; }
    /// `other` when nothing is open.
    HTMLElement innermost() const { return isEmpty() ? HTMLElement::other : elements_.back(); }
    bool contains(HTMLElement element) const { return counts_[html::indexOf(element)] != 0; }

    /// The outermost element that the start tag of `element` closes, with all inside it.
    std::optional<std::size_t> closedByStart(HTMLElement element) const;
    /// The open element that the end tag of a known element closes; none when it is to be ignored.
    std::optional<std::size_t> closedByEnd(HTMLElement element) const;
    /// As `closedByEnd` for elements that are `other`, among which `isMatch` tells by index.
    template <class IsMatch>
    std::optional<std::size_t> closedByOtherEnd(IsMatch isMatch) const {
        if (!contains(HTMLElement::other)) return std::nullopt;
        for (std::size_t i = size(); i-- > 0;) {
            if (elements_[i] == HTMLElement::other && isMatch(i)) return i;
            if (html::has(elements_[i], html::isCell)) return std::nullopt;
        }
        return std::nullopt;
    }

private:
    template <class IsMatch, class IsStop>
    std::optional<std::size_t> innermostWhere(IsMatch isMatch, IsStop isStop) const;
    std::optional<std::size_t> openParagraph() const;
    std::optional<std::size_t> openHeading() const;
    std::optional<std::size_t> openLink() const;
    std::optional<std::size_t> openItem(HTMLElement element) const;
    std::optional<std::size_t> openPeer(HTMLElement element) const;

    std::vector<HTMLElement> elements_;
    std::array<std::uint32_t, html::elementCount> counts_{};
};

}  // namespace tesserine
