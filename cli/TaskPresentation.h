#pragma once

#include "core/tasks/QuickAddParser.h"
#include "core/tasks/TaskService.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <string>
#include <string_view>
#include <vector>

/// How commands show tasks.
namespace tesserine::cli {

class Session;
enum class ExitStatus;

/// The task's header with, besides, `projectName`, the names of its `labels`, and its `subtasks` in
/// the same form.
boost::json::object taskJSON(Session& session, CDTask& task);
boost::json::array tasksJSON(Session& session, const std::vector<CDTask*>& tasks);
/// What a sentence was understood as, in the names of the parser's result.
boost::json::object sentenceJSON(const QuickAddResult& result);

/// The title a task is shown by: its own, else "Untitled".
std::string titleOf(const CDTask& task);
/// “Call Ada”
std::string quotedTitle(const CDTask& task);
/// "2026-03-14", or with its time of day "2026-03-14 09:15"; empty for a task that is not due.
std::string dueText(Session& session, const CDTask& task);
/// "Every weekday", or empty.
std::string repeatText(const CDTask& task);

/// Tasks with their subtasks as a table (or a JSON array). Says `nothing` to people when there are
/// none.
void showTasks(Session& session, const std::vector<CDTask*>& tasks, std::string_view nothing);
/// One task: what is known of it, its subtasks, its details.
void showTask(Session& session, CDTask& task);
/// What became of a sentence, a line for each thing that is set.
void showUnderstood(Session& session, const CDTask& task);
/// What the parser made of a sentence, with its tokens.
void showSentence(Session& session, const QuickAddResult& result);

/// Answers a command that changed the task: with its JSON, or with `sentence`.
ExitStatus answerTask(Session& session, CDTask& task, const std::string& sentence);

}  // namespace tesserine::cli
