#include "app/editor/UndoMemory.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace tesserine::app {
namespace {

/// Whether nothing is gone, and nothing but words of a paragraph has come, in one place.
bool isTypedOn(std::string_view before, std::string_view after) {
    if (after.size() < before.size()) return false;
    if (std::ranges::count(before, '<') != std::ranges::count(after, '<')) return false;
    const auto end = std::ranges::mismatch(before, after).in1;
    return after.ends_with(std::string_view(end, before.end()));
}

}  // namespace

UndoHistory& UndoMemory::open(const Uuid& id, const std::string& html) {
    if (open_.id != id) {
        if (open_.history.states.size() > 1) others_.push_back(std::move(open_));
        open_ = {.id = id};
        const auto found = std::ranges::find(others_, id, &Kept::id);
        if (found != others_.end()) {
            open_ = std::move(*found);
            others_.erase(found);
        }
        if (others_.size() > mostNotes) others_.erase(others_.begin());
    }
    UndoHistory& history = open_.history;
    const bool isSame = !history.states.empty() && history.states[history.now].html == html;
    if (!isSame) history = {.states = {{.html = html}}};
    history.states[history.now].wasLeft = true;
    return history;
}

void UndoMemory::add(UndoHistory::State state, bool canRedo) {
    auto& [states, now] = open_.history;
    while (now > 0 && states[now].steps > state.steps) {
        --now;
    }
    const auto same = [&](const UndoHistory::State& known) {
        return known.html == state.html && known.steps == state.steps;
    };
    const auto next = states.begin() + static_cast<std::ptrdiff_t>(states.empty() ? 0 : now + 1);
    if (const auto redone = std::find_if(next, states.end(), same); redone != states.end()) {
        now = static_cast<std::size_t>(redone - states.begin());
        return;
    }
    if (!canRedo || states.empty()) {
        open_.history.cutAfterNow();
        append(std::move(state));
    } else if (states[now].html != state.html) {
        while (now + 1 < states.size() && states[now + 1].steps <= state.steps) {
            ++now;
        }
        states.insert(states.begin() + static_cast<std::ptrdiff_t>(++now), std::move(state));
    }
    trim();
}

/// What is typed on, letter by letter and without leaving the note, is one step.
void UndoMemory::append(UndoHistory::State state) {
    auto& [states, now] = open_.history;
    if (!states.empty() && states[now].html == state.html) {
        states[now].steps = state.steps;
        return;
    }
    if (states.size() > 1 && !states[now].wasLeft) {
        const std::string& before = states[now - 1].html;
        const bool isOneStep = isTypedOn(before, states[now].html)
                               && isTypedOn(states[now].html, state.html)
                               && state.html.size() - before.size() <= longestStep;
        if (isOneStep) states.pop_back();
    }
    states.push_back(std::move(state));
    now = states.size() - 1;
}

/// What would take too much room goes: the oldest, and what was undone before that.
void UndoMemory::trim() {
    auto& [states, now] = open_.history;
    std::size_t bytes = 0;
    for (const UndoHistory::State& state : states) {
        bytes += state.html.size();
    }
    while (bytes > mostBytes && states.size() > 1) {
        const bool hasUndone = now + 1 < states.size();
        const auto gone = hasUndone ? std::prev(states.end()) : states.begin();
        bytes -= gone->html.size();
        if (!hasUndone) --now;
        states.erase(gone);
    }
}

}  // namespace tesserine::app
