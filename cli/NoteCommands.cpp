#include "cli/BodyInput.h"
#include "cli/CommandError.h"
#include "cli/DisplayText.h"
#include "cli/Names.h"
#include "cli/NoteEditor.h"
#include "cli/NoteMarkdown.h"
#include "cli/Presentation.h"
#include "cli/Session.h"
#include "core/body/AttributedTextReader.h"
#include "core/body/NoteOutline.h"

#include <algorithm>

namespace tesserine::cli {

namespace {

std::vector<CDTag*> tagsToUse(Session& session, const std::vector<std::string>& names) {
    std::vector<CDTag*> tags;
    tags.reserve(names.size());
    for (const std::string& name : names) {
        tags.push_back(&tagToUse(session, name));
    }
    return tags;
}

std::optional<Uuid> idOption(const Arguments& arguments) {
    const auto text = arguments.text("id");
    if (!text) return std::nullopt;
    const auto id = Uuid::parse(*text);
    if (!id) throw UsageError::badValue("--id", "a UUID");
    return id;
}

ExitStatus addNote(Session& session, const Arguments& arguments) {
    const auto id = idOption(arguments);
    const auto body = bodyFrom(session, arguments);
    StoreContext& context = session.context();
    if (id && context.find<CDNote>(*id) != nullptr) {
        throw CommandError::noteExists(id->text());
    }

    NoteDraft draft{
        .title = arguments.text("title").value_or(""),
        .html = body.value_or(""),
        .tags = tagsToUse(session, arguments.texts("tag")),
        .sourceURL = arguments.text("source-url"),
        .id = id};
    if (const auto name = arguments.text("notebook")) {
        draft.notebook = &notebookToFill(session, *name);
    }
    const CDNote* noteTemplate = nullptr;
    if (draft.notebook != nullptr && !body) {
        noteTemplate = session.notebooks().noteTemplate(context, *draft.notebook);
    }
    if (noteTemplate != nullptr) draft.html = noteTemplate->html.valueOr("");
    CDNote& note = session.notes().createNote(context, std::move(draft));
    if (noteTemplate != nullptr) session.attachments().cloneReferenced(context, note);
    context.save();
    return answerWithID(session, note);
}

Predicate listCondition(const std::string& format, CDNotebook* notebook, CDTag* tag) {
    const std::string inNotebook = " AND notebook == %@";
    const std::string tagged = " AND ANY tags == %@";
    if (notebook != nullptr && tag != nullptr) return {format + inNotebook + tagged, notebook, tag};
    if (notebook != nullptr) return {format + inNotebook, notebook};
    if (tag != nullptr) return {format + tagged, tag};
    return {format};
}

/// The attribute that orders the list, newest first.
std::string dateOrder(const Arguments& arguments) {
    const std::string sort = arguments.text("sort").value_or("");
    if (sort == "created") return "createdAt";
    if (sort == "updated") return "updatedAt";
    if (arguments.has("trash")) return "trashedAt";
    return arguments.has("pinned") ? "favoritedAt" : "updatedAt";
}

void sortByTitle(Session& session, std::vector<CDNote*>& notes) {
    std::ranges::stable_sort(notes, [&](const CDNote* a, const CDNote* b) {
        return session.collator().compare(displayTitle(*a), displayTitle(*b)) < 0;
    });
}

ExitStatus listNotes(Session& session, const Arguments& arguments) {
    const std::string_view place = arguments.oneOf({"trash", "templates"});
    std::string format = "trashedAt == nil AND isTemplate == NO";
    if (place == "trash") format = "trashedAt != nil";
    if (place == "templates") format = "isTemplate == YES AND trashedAt == nil";
    if (arguments.has("pinned")) format += " AND isPinned == YES";

    const auto notebookName = arguments.text("notebook");
    const auto tagName = arguments.text("tag");
    CDNotebook* notebook = notebookName ? &resolveNotebook(session, *notebookName) : nullptr;
    CDTag* tag = tagName ? &resolveTag(session, *tagName) : nullptr;

    const bool isByTitle = arguments.text("sort") == "title";
    const auto limit =
        static_cast<std::size_t>(arguments.integer("limit", 1, 1'000'000'000).value_or(0));
    auto notes = session.context().fetch<CDNote>(
        {.predicate = listCondition(format, notebook, tag),
         .sort = {{dateOrder(arguments), SortDescriptor::Order::descending}},
         .limit = isByTitle ? 0 : limit});
    if (isByTitle) {
        sortByTitle(session, notes);
        if (limit > 0 && notes.size() > limit) notes.resize(limit);
    }
    showNotes(session, notes, "There are no such notes.");
    return ExitStatus::done;
}

/// The headings of a body, each as far in as its level says.
std::string outlineOf(const std::string& html) {
    std::string lines;
    for (const OutlineEntry& entry : NoteOutline::entries(attributedText(html))) {
        const auto indent = 2 * static_cast<std::size_t>(entry.level - 1);
        lines += std::string(indent, ' ') + oneLine(entry.text) + "\n";
    }
    return lines;
}

std::string bodyAs(std::string_view form, const CDNote& note) {
    if (form == "html") return note.html.valueOr("");
    if (form == "markdown") return markdownOfNote(note.html.valueOr("")).text;
    if (form == "outline") return outlineOf(note.html.valueOr(""));
    return note.plainText.valueOr("");
}

ExitStatus showOneNote(Session& session, const Arguments& arguments) {
    const std::string_view form = arguments.oneOf({"html", "text", "markdown", "outline"});
    CDNote& note = resolveNote(session, arguments.word(0));
    if (session.output().isJSON() || form.empty()) {
        showNote(session, note);
    } else {
        session.output().text(bodyAs(form, note));
    }
    return ExitStatus::done;
}

ExitStatus editNote(Session& session, const Arguments& arguments) {
    if (!arguments.hasOwnOptions()) return editNoteInEditor(session, arguments.word(0));
    const auto notebookOption = arguments.oneOf({"notebook", "no-notebook"});
    const auto body = bodyFrom(session, arguments);
    CDNote& note = resolveNote(session, arguments.word(0));

    StoreContext& context = session.context();
    const auto title = arguments.text("title");
    if (title || body) session.notes().updateNote(context, note, {.title = title, .html = body});
    if (notebookOption == "notebook") {
        session.notes().moveToNotebook(note, &notebookToFill(session, *arguments.text("notebook")));
    }
    if (notebookOption == "no-notebook") session.notes().moveToNotebook(note, nullptr);
    for (const std::string& name : arguments.texts("add-tag")) {
        session.notes().addTag(note, tagToUse(session, name));
    }
    for (const std::string& name : arguments.texts("remove-tag")) {
        session.notes().removeTag(note, resolveTag(session, name));
    }
    context.save();
    return answer(session, note, "Changed " + quotedTitle(note) + ".");
}

Command addNoteCommand() {
    Command command{
        .path = "note add",
        .summary = "Creates a note and prints its id",
        .access = Access::writes,
        .options =
            {{.name = "title", .value = "TITLE", .summary = "Its title"},
             {.name = "notebook",
              .value = "NAME",
              .summary = "The notebook it goes to; made when there is none"},
             {.name = "tag",
              .value = "NAME",
              .summary = "A tag for it; made when there is none",
              .isRepeatable = true},
             {.name = "source-url", .value = "URL", .summary = "Where it came from"},
             {.name = "id", .value = "UUID", .summary = "The id it gets, in place of a new one"}},
        .details = "Without a body, a note in a notebook that has a template starts from it.",
        .example = "tesserine note add --title Plan --notebook Work --text 'Call Ada'",
        .run = addNote};
    for (Option& option : bodyOptions()) {
        command.options.push_back(std::move(option));
    }
    return command;
}

Command editNoteCommand() {
    Command command{
        .path = "note edit",
        .summary = "Changes a note",
        .access = Access::writes,
        .arguments = {{.name = "NOTE"}},
        .options =
            {{.name = "title", .value = "TITLE", .summary = "A new title"},
             {.name = "notebook",
              .value = "NAME",
              .summary = "The notebook it moves to; made when there is none"},
             {.name = "no-notebook", .summary = "Takes it out of its notebook"},
             {.name = "add-tag",
              .value = "NAME",
              .summary = "A tag to add; made when there is none",
              .isRepeatable = true},
             {.name = "remove-tag",
              .value = "NAME",
              .summary = "A tag to take away",
              .isRepeatable = true}},
        .details = "On a terminal and without options it opens the note in $VISUAL or $EDITOR: as "
                   "Markdown, or as HTML where Markdown would lose something.",
        .example = "tesserine note edit Plan --add-tag urgent --html plan.html",
        .run = editNote};
    for (Option& option : bodyOptions()) {
        command.options.push_back(std::move(option));
    }
    return command;
}

}  // namespace

std::vector<Command> noteCommands() {
    return {
        addNoteCommand(),
        {.path = "note list",
         .summary = "Lists notes, newest change first",
         .options =
             {{.name = "notebook", .value = "NAME", .summary = "Only those in this notebook"},
              {.name = "tag", .value = "NAME", .summary = "Only those with this tag"},
              {.name = "pinned", .summary = "Only pinned ones, latest pin first"},
              {.name = "trash", .summary = "Those in the trash, latest first"},
              {.name = "templates", .summary = "The note templates"},
              {.name = "sort",
               .value = "ORDER",
               .summary = "updated, created or title",
               .choices = {"updated", "created", "title"}},
              {.name = "limit", .value = "N", .summary = "At most so many"}},
         .example = "tesserine note list --notebook Work --sort title",
         .run = listNotes},
        {.path = "note show",
         .summary = "Shows a note",
         .arguments = {{.name = "NOTE"}},
         .options =
             {{.name = "html", .summary = "Only its body, as HTML"},
              {.name = "text", .summary = "Only its body, as plain text"},
              {.name = "markdown", .summary = "Only its body, as Markdown"},
              {.name = "outline", .summary = "Only its headings"}},
         .example = "tesserine note show Plan --text",
         .run = showOneNote},
        editNoteCommand()};
}

}  // namespace tesserine::cli
