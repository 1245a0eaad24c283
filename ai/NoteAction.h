#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tesserine {

/// What the assistant can do with the note the user is looking at. It never changes the note.
enum class NoteAction { summarize, explain, rewrite, shorten, expand, extractActionItems, ask };

inline constexpr std::array<NoteAction, 7> noteActions{
    NoteAction::summarize,
    NoteAction::explain,
    NoteAction::rewrite,
    NoteAction::shorten,
    NoteAction::expand,
    NoteAction::extractActionItems,
    NoteAction::ask};

/// "summarize" and so on.
std::string_view nameOf(NoteAction action);
/// How long the answer may become, in tokens.
std::int64_t maxOutputTokens(NoteAction action);

namespace prompt {

/// The system instructions, as they are sent.
extern const std::string_view library;
extern const std::string_view web;
extern const std::string_view note;

/// Characters of a note that are sent with an action.
inline constexpr std::size_t longestNote = 60'000;

/// The user's message for an action on a note whose plain text is `noteText`; `question` counts for
/// `ask` only.
std::string actionMessage(
    NoteAction action, std::string_view noteText, std::string_view question = {});
/// The user's message for a question about the library. `sources` are numbered passages, empty when
/// none matched.
std::string questionMessage(std::string_view question, std::string_view sources);

}  // namespace prompt

}  // namespace tesserine
