#pragma once

#include "cli/Command.h"
#include "core/model/NoteEntities.h"

#include <boost/json/value.hpp>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// How commands show what they found and what they did.
namespace tesserine::cli {

class Session;

/// “Plan”: a name in quotes, harmless on a terminal.
std::string inQuotes(std::string_view name);
std::string quotedTitle(const CDNote& note);

/// Notes as a table (or a JSON array of their headers). Says `nothing` to people when there are
/// none.
void showNotes(Session& session, const std::vector<CDNote*>& notes, std::string_view nothing);
/// One note: what is known of it, then its text.
void showNote(Session& session, CDNote& note);

/// Answers a command that changed `object`: with its header as JSON, or with `sentence`.
ExitStatus answer(Session& session, StoreObject& object, const std::string& sentence);
/// The same with the identifier alone as text, so that scripts can take it.
ExitStatus answerWithID(Session& session, StoreObject& object);
/// Answers with a number: `{key: count}` as JSON, or `sentence`.
ExitStatus answerCount(
    Session& session, std::string_view key, std::size_t count, const std::string& sentence);

/// "Notebook   Work / Plans": a line about one thing, unless there is nothing to say.
void showField(Session& session, std::string_view name, const std::string& value);
/// A local time or nothing.
std::string localText(Session& session, const std::optional<Instant>& instant);

}  // namespace tesserine::cli
