#include "ai/AIExclusions.h"
#include "ai/AskTesserine.h"
#include "ai/Dispatch.h"
#include "ai/NoteRetriever.h"
#include "base/JSON.h"
#include "base/Text.h"
#include "cli/Assistant.h"
#include "cli/DisplayText.h"
#include "cli/LibrarySearch.h"
#include "cli/Names.h"
#include "cli/Session.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <algorithm>

namespace tesserine::cli {

namespace {

using boost::json::array;
using boost::json::object;
using boost::json::value;

QuestionFilters filtersOf(const Arguments& arguments) {
    return {
        .notebook = arguments.text("notebook").value_or(""),
        .after = arguments.text("after").value_or(""),
        .before = arguments.text("before").value_or("")};
}

value sourceJSON(const NoteCitation& citation) {
    value updatedAt = nullptr;
    if (citation.updatedAt) updatedAt = citation.updatedAt->iso();
    return object{
        {"index", citation.index},
        {"noteID", citation.noteID.text()},
        {"title", citation.title},
        {"excerpt", citation.excerpt},
        {"updatedAt", std::move(updatedAt)},
        {"notebook", citation.notebook},
        {"fromAttachment", citation.fromAttachment}};
}

value webJSON(const WebCitation& citation) {
    value title = nullptr;
    if (citation.title) title = *citation.title;
    return object{{"url", citation.url}, {"title", std::move(title)}};
}

value resultJSON(const AskResult& result) {
    array notes;
    for (const NoteCitation& citation : result.noteCitations) {
        notes.push_back(sourceJSON(citation));
    }
    array web;
    for (const WebCitation& citation : result.webCitations) {
        web.push_back(webJSON(citation));
    }
    return object{
        {"answer", result.answer},
        {"noteCitations", std::move(notes)},
        {"webCitations", std::move(web)},
        {"usedWebSearch", result.usedWebSearch},
        {"foundNothingLocally", result.foundNothingLocally},
        {"model", result.model},
        {"contextCharactersSent", result.contextCharactersSent}};
}

/// The sources that the answer cites, each once.
std::vector<const NoteCitation*> cited(const AskResult& result) {
    std::vector<const NoteCitation*> sources;
    for (const CitationMark& mark : citationMarks(result.answer, result.noteCitations.size())) {
        const auto* citation = &result.noteCitations[static_cast<std::size_t>(mark.index) - 1];
        if (std::ranges::find(sources, citation) == sources.end()) sources.push_back(citation);
    }
    return sources;
}

void showResult(Session& session, const AskResult& result) {
    Output& output = session.output();
    output.text(result.answer);
    for (const NoteCitation* citation : cited(result)) {
        std::string line = "[" + std::to_string(citation->index) + "] " + oneLine(citation->title);
        if (!citation->notebook.empty()) line += " · " + oneLine(citation->notebook);
        if (citation->fromAttachment) line += " · from an attachment";
        output.line(output.styled(line, Style::accent));
        output.line(output.styled("    " + oneLine(citation->excerpt), Style::faint));
    }
    for (const WebCitation& citation : result.webCitations) {
        output.line(
            output.styled(oneLine(citation.title.value_or("") + " " + citation.url), Style::faint));
    }
    if (result.foundNothingLocally) {
        session.remark("No passages in your notes matched this question.");
    }
}

/// Shows what would be sent, to the letter, and sends nothing.
ExitStatus showRequest(Session& session, const Assistant& assistant, const AIRequest& request) {
    const std::string body = exactRequest(assistant.settings(), request);
    if (session.output().isJSON()) {
        session.output().json(json::parse(body));
        return ExitStatus::done;
    }
    session.output().line(json::write(json::parse(body), json::Layout::pretty));
    return ExitStatus::done;
}

ExitStatus ask(Session& session, const Arguments& arguments) {
    const std::string question = text::joined(arguments.wordsFrom(0), " ");
    const Assistant assistant(session);
    const bool onlyShows = arguments.has("show-request");
    if (!onlyShows) assistant.provider();  // says what is missing before anything is looked for

    const AskTesserine asker(assistant.settings(), session.calendar());
    NoteRetriever retriever(
        session.search().readyEngine(),
        session.context(),
        AIExclusions::load(session.preferences()));
    const auto passages = retriever.retrieve(lookedFor(question, filtersOf(arguments)));
    const PreparedQuestion prepared =
        asker.prepare(question, {.searchWeb = arguments.has("web")}, passages);
    if (onlyShows) return showRequest(session, assistant, prepared.request);
    if (prepared.request.enableWebSearch && !prepared.citations.empty()) {
        session.remark("The passages of your notes and the web search go in one request.");
    }

    const AskResult result = AskTesserine::result(
        prepared, assistant.send(prepared.request, "ask", titlesOf(prepared.citations)));
    if (session.output().isJSON()) {
        session.output().json(resultJSON(result));
    } else {
        showResult(session, result);
    }
    return ExitStatus::done;
}

/// The text is shown for the user to take over; the note stays as it is.
ExitStatus act(Session& session, const Arguments& arguments, NoteAction action) {
    const Assistant assistant(session);
    CDNote& note = resolveNote(session, arguments.word(0));
    AIExclusions::load(session.preferences()).require(note);
    const std::string text = note.plainText.valueOr("");
    const AskTesserine asker(assistant.settings(), session.calendar());
    const AIRequest request =
        asker.prepareAction(action, text, text::joined(arguments.wordsFrom(1), " "));
    if (arguments.has("show-request")) return showRequest(session, assistant, request);

    const std::string title = displayTitle(note);
    const AIResponse response = assistant.send(request, std::string(nameOf(action)), {title});
    if (session.output().isJSON()) {
        session.output().json({{"text", response.text}, {"model", response.model}});
    } else {
        session.output().text(response.text);
    }
    return ExitStatus::done;
}

template <NoteAction action>
ExitStatus runAction(Session& session, const Arguments& arguments) {
    return act(session, arguments, action);
}

constexpr std::string_view actionDetails =
    "The text is shown; the note is not changed. The note's plain text is sent, a locked passage as "
    "its placeholder only.";

Option showRequestOption() {
    return {.name = "show-request", .summary = "Show exactly what would be sent, and send nothing"};
}

Command actionCommand(
    std::string_view path,
    std::string_view summary,
    std::string_view example,
    ExitStatus (*run)(Session&, const Arguments&)) {
    return {
        .path = path,
        .summary = summary,
        .arguments = {{.name = "NOTE"}},
        .options = {showRequestOption()},
        .details = actionDetails,
        .example = example,
        .run = run};
}

Command noteAskCommand() {
    Command command = actionCommand(
        "note ask",
        "Answers a question about one note",
        "tesserine note ask Plan 'Who pays?'",
        runAction<NoteAction::ask>);
    command.arguments.push_back({.name = "QUESTION", .isRepeatable = true});
    return command;
}

}  // namespace

std::vector<Command> askCommands() {
    return {
        {.path = "ask",
         .summary = "Answers a question from the notes, with its sources",
         .arguments = {{.name = "QUESTION", .isRepeatable = true}},
         .options =
             {{.name = "notebook", .value = "N", .summary = "Look into this notebook only"},
              {.name = "after", .value = "D", .summary = "Look at notes made after this day only"},
              {.name = "before",
               .value = "D",
               .summary = "Look at notes made before this day only"},
              {.name = "web", .summary = "Let the assistant search the web, if settings allow it"},
              showRequestOption()},
         .details =
             "Passages of the notes that match are sent with the question. The trash, templates, "
             "locked passages and what “assistant exclude” names are never sent.",
         .example = "tesserine ask 'Which hotel did Anna like?'",
         .run = ask},
        noteAskCommand(),
        actionCommand(
            "note summarize",
            "Sums a note up",
            "tesserine note summarize Plan",
            runAction<NoteAction::summarize>),
        actionCommand(
            "note explain",
            "Explains a note in plain language",
            "tesserine note explain Plan",
            runAction<NoteAction::explain>),
        actionCommand(
            "note rewrite",
            "Words a note more clearly",
            "tesserine note rewrite Plan",
            runAction<NoteAction::rewrite>),
        actionCommand(
            "note shorten",
            "Shortens a note to its essentials",
            "tesserine note shorten Plan",
            runAction<NoteAction::shorten>),
        actionCommand(
            "note expand",
            "Says a note in more detail",
            "tesserine note expand Plan",
            runAction<NoteAction::expand>),
        actionCommand(
            "note action-items",
            "Lists what a note says is to be done",
            "tesserine note action-items Plan",
            runAction<NoteAction::extractActionItems>)};
}

}  // namespace tesserine::cli
