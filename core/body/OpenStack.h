#pragma once

#include "core/body/OpenElements.h"
#include "core/body/SanitizerTables.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace tesserine {

/// The open elements with a `Detail` for each, and the formatting that waits to be reopened.
///
/// When an element closes while formatting inside it is still open (`<b><i>x</b>y</i>`), that
/// formatting goes on where the next text stands. At most `maximumWaiting` elements wait, the
/// innermost; none goes into or out of a cell or an element that is left out.
template <class Detail>
class OpenStack {
public:
    static constexpr std::size_t maximumWaiting = 8;

    const OpenElements& elements() const noexcept { return elements_; }
    std::size_t size() const noexcept { return elements_.size(); }
    const Detail& operator[](std::size_t index) const { return entries_[index].detail; }

    void push(HTMLElement element, Detail detail) {
        entries_.push_back({std::move(detail), firstWaiting_});
        elements_.push(element);
        if (isIsolating(element)) firstWaiting_ = waiting_.size();
    }

    /// Closes the elements from `first` inwards: `close()` is called for each while it is still the
    /// innermost. Formatting inside `first` waits afterwards.
    template <class Close>
    void closeFrom(std::size_t first, Close close) {
        std::vector<Waiting> closed = formattingInside(first);
        while (size() > first) {
            close();
            pop();
        }
        if (closed.empty()) return;
        // What waits already stood further inside.
        const auto inner = waiting_.begin() + static_cast<std::ptrdiff_t>(firstWaiting_);
        closed.insert(closed.end(), inner, waiting_.end());
        const std::size_t surplus = closed.size() - std::min(closed.size(), maximumWaiting);
        waiting_.resize(firstWaiting_);
        waiting_.insert(
            waiting_.end(), closed.begin() + static_cast<std::ptrdiff_t>(surplus), closed.end());
    }

    /// Calls `reopen(element, detail)` for the formatting that waits here, outermost first; it is
    /// for the caller to push it again.
    template <class Reopen>
    void reopenWaiting(Reopen reopen) {
        if (waiting_.size() == firstWaiting_) return;
        const auto first = waiting_.begin() + static_cast<std::ptrdiff_t>(firstWaiting_);
        const std::vector<Waiting> ready(first, waiting_.end());
        waiting_.resize(firstWaiting_);
        for (const Waiting& formatting : ready) {
            reopen(formatting.element, formatting.detail);
        }
    }

    /// Takes the innermost formatting that waits here and matches off the list, if there is one.
    template <class IsMatch>
    bool forgetWaiting(IsMatch isMatch) {
        for (std::size_t i = waiting_.size(); i-- > firstWaiting_;) {
            if (!isMatch(waiting_[i].element, waiting_[i].detail)) continue;
            waiting_.erase(waiting_.begin() + static_cast<std::ptrdiff_t>(i));
            return true;
        }
        return false;
    }

    /// A link that begins ends those that wait: there is no link in a link.
    void forgetWaitingLinks() {
        const auto isLink = [](const Waiting& waiting) {
            return waiting.element == HTMLElement::a;
        };
        const auto first = waiting_.begin() + static_cast<std::ptrdiff_t>(firstWaiting_);
        waiting_.erase(std::remove_if(first, waiting_.end(), isLink), waiting_.end());
    }

private:
    struct Entry {
        Detail detail;
        std::size_t firstWaiting;  // outside of the element
    };
    struct Waiting {
        HTMLElement element;
        Detail detail;
    };

    static bool isIsolating(HTMLElement element) {
        return html::has(element, html::isCell) || html::policyFor(element).isDropped;
    }

    std::vector<Waiting> formattingInside(std::size_t first) const {
        std::vector<Waiting> found;
        for (std::size_t i = first; i < size() && !isIsolating(elements_[i]); ++i) {
            if (i == first || !html::has(elements_[i], html::isFormatting)) continue;
            found.push_back({elements_[i], entries_[i].detail});
        }
        return found;
    }

    void pop() {
        if (isIsolating(elements_.innermost())) {
            waiting_.resize(firstWaiting_);
            firstWaiting_ = entries_.back().firstWaiting;
        }
        elements_.pop();
        entries_.pop_back();
    }

    OpenElements elements_;
    std::vector<Entry> entries_;
    std::vector<Waiting> waiting_;
    std::size_t firstWaiting_ = 0;  // of those that wait in the innermost cell
};

namespace html {

/// Whether a start tag is part of a line of text, so that formatting goes on before it.
constexpr bool continuesLine(HTMLElement element) {
    return has(element, isFormatting) || element == HTMLElement::img || element == HTMLElement::br;
}

}  // namespace html
}  // namespace tesserine
