#include "app/editor/UndoMemory.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace tesserine::app {
namespace {

/// Whether nothing is gone, and something may have come in one place.
bool isAddition(std::string_view before, std::string_view after) {
    if (after.size() < before.size()) return false;
    const auto end = std::ranges::mismatch(before, after).in1;
    return after.ends_with(std::string_view(end, before.end()));
}

}  // namespace

const std::vector<std::string>& UndoMemory::open(const Uuid& id, const std::string& html) {
    if (open_.id != id) {
        if (!open_.before.empty()) others_.push_back(std::move(open_));
        open_ = {.id = id, .now = html};
        const auto found = std::ranges::find(others_, id, &Kept::id);
        if (found != others_.end()) {
            open_ = std::move(*found);
            others_.erase(found);
        }
        if (others_.size() > mostNotes) others_.erase(others_.begin());
    }
    if (open_.now != html) open_ = {.id = id, .now = html};
    return open_.before;
}

void UndoMemory::add(const std::string& html) {
    std::vector<std::string>& before = open_.before;
    if (open_.now == html) return;
    if (open_.now) {
        const bool isStep = before.empty() || !isAddition(before.back(), *open_.now)
                            || !isAddition(*open_.now, html)
                            || html.size() - before.back().size() > longestStep;
        if (isStep) before.push_back(std::move(*open_.now));
    }
    open_.now = html;
    trim();
}

void UndoMemory::forget() {
    open_.before.clear();
    open_.now.reset();
}

/// What would take too much room goes, the oldest first.
void UndoMemory::trim() {
    std::size_t bytes = open_.now.value_or("").size();
    auto first = open_.before.end();
    while (first != open_.before.begin()) {
        bytes += std::prev(first)->size();
        if (bytes > mostBytes) break;
        --first;
    }
    open_.before.erase(open_.before.begin(), first);
}

}  // namespace tesserine::app
