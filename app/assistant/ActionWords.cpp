#include "app/assistant/ActionWords.h"

#include <array>
#include <cassert>

namespace tesserine::app {
namespace {

constexpr std::array<ActionWords, noteActions.size()> all{{
    {NoteAction::summarize, "assistant.summarize", "Summary"},
    {NoteAction::explain, "assistant.explain", "Explanation"},
    {NoteAction::rewrite, "assistant.rewrite", "Reworded"},
    {NoteAction::shorten, "assistant.shorten", "Shortened"},
    {NoteAction::expand, "assistant.expand", "Expanded"},
    {NoteAction::extractActionItems, "assistant.actionItems", "Action items"},
    {NoteAction::ask, "assistant.askNote", "Question about the note"},
}};

}  // namespace

std::span<const ActionWords> actionWords() { return all; }

const ActionWords& wordsOf(NoteAction action) {
    const auto& words = all[static_cast<std::size_t>(action)];
    assert(words.action == action && "the table is in the order of the actions");
    return words;
}

}  // namespace tesserine::app
