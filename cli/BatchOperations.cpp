#include "cli/BatchOperations.h"

#include "cli/BodyInput.h"
#include "cli/CommandError.h"
#include "cli/JSONFields.h"
#include "cli/LibrarySearch.h"
#include "cli/Names.h"
#include "cli/ObjectJSON.h"
#include "cli/SearchPresentation.h"
#include "cli/Session.h"

#include <boost/json/array.hpp>

#include <algorithm>
#include <array>

namespace tesserine::cli {

namespace {

boost::json::object answerFor(const CDNote& note) {
    return {{"id", asJSON(note.id.get())}, {"contentVersion", note.contentVersion.valueOr(1)}};
}

}  // namespace

boost::json::object BatchOperations::apply(const boost::json::object& operation) {
    return apply(operation, Nesting::allowed);
}

boost::json::object BatchOperations::apply(const boost::json::object& operation, Nesting nesting) {
    struct Entry {
        std::string_view name;
        boost::json::object (BatchOperations::*apply)(JSONFields& fields);
    };
    static constexpr std::array<Entry, 12> entries{{
        {"note.add", &BatchOperations::addNote},
        {"note.set", &BatchOperations::setNote},
        {"note.trash", &BatchOperations::trashNote},
        {"note.restore", &BatchOperations::restoreNote},
        {"note.delete", &BatchOperations::deleteNote},
        {"note.pin", &BatchOperations::pinNote},
        {"note.unpin", &BatchOperations::unpinNote},
        {"attachment.add", &BatchOperations::addAttachment},
        {"task.add", &BatchOperations::addTask},
        {"task.done", &BatchOperations::completeTask},
        {"search", &BatchOperations::search},
        {"group", &BatchOperations::applyGroup},
    }};
    JSONFields fields(operation);
    const std::string name = fields.requiredText("op");
    const auto* const found = std::ranges::find(entries, name, &Entry::name);
    if (found == entries.end()) {
        throw CommandError::badInput("There is no operation “" + name + "”.");
    }
    if (nesting == Nesting::refused && name == "group") {
        throw CommandError::badInput("A group cannot hold another group.");
    }
    if (nesting == Nesting::refused && name == "search") {
        throw CommandError::badInput("A group cannot hold a search: it is not saved yet.");
    }
    return (this->*found->apply)(fields);
}

std::optional<std::string> BatchOperations::body(JSONFields& fields) {
    auto html = fields.text("html");
    const auto markdown = fields.text("markdown");
    const auto text = fields.text("text");
    const int given = (html ? 1 : 0) + (markdown ? 1 : 0) + (text ? 1 : 0);
    if (given > 1) {
        throw CommandError::badInput("Only one of “html”, “markdown” and “text” can be given.");
    }
    if (markdown) return htmlFromMarkdown(*markdown);
    if (text) return htmlFromText(*text);
    return html;
}

std::optional<Uuid> BatchOperations::newID(JSONFields& fields) {
    const auto text = fields.text("id");
    if (!text) return std::nullopt;
    const auto id = Uuid::parse(*text);
    if (!id) throw CommandError::badInput("The field “id” must be a UUID.");
    return id;
}

CDNote& BatchOperations::namedNote(JSONFields& fields) {
    const std::string name = fields.requiredText("id");
    fields.refuseOthers();
    return resolveNote(session_, name);
}

boost::json::object BatchOperations::addNote(JSONFields& fields) {
    NoteDraft draft{
        .title = fields.text("title").value_or(""),
        .html = body(fields).value_or(""),
        .sourceURL = fields.text("sourceURL")};
    const auto notebook = fields.text("notebook");
    const auto tags = fields.texts("tags");
    draft.id = newID(fields);
    fields.refuseOthers();

    StoreContext& context = session_.context();
    if (draft.id) {
        // Repeated after a lost answer: the note is there already.
        if (const CDNote* known = context.find<CDNote>(*draft.id)) return answerFor(*known);
    }
    if (notebook) draft.notebook = &notebookToFill(session_, *notebook);
    for (const std::string& name : tags) {
        draft.tags.push_back(&tagToUse(session_, name));
    }
    return answerFor(session_.notes().createNote(context, std::move(draft)));
}

boost::json::object BatchOperations::setNote(JSONFields& fields) {
    NoteEdit edit{.title = fields.text("title"), .html = body(fields)};
    edit.loadedVersion = fields.integer("ifVersion");
    if (!edit.title && !edit.html) throw CommandError::badInput("There is nothing to set.");
    CDNote& note = namedNote(fields);
    const auto outcome = session_.notes().saveEdit(session_.context(), note, std::move(edit));
    boost::json::object answer = answerFor(note);
    if (outcome == NoteService::EditOutcome::savedWithConflict) answer["conflict"] = true;
    return answer;
}

boost::json::object BatchOperations::trashNote(JSONFields& fields) {
    CDNote& note = namedNote(fields);
    if (!note.trashedAt) session_.notes().moveToTrash(note);
    return answerFor(note);
}

boost::json::object BatchOperations::restoreNote(JSONFields& fields) {
    CDNote& note = namedNote(fields);
    if (note.trashedAt) session_.notes().restoreFromTrash(note);
    return answerFor(note);
}

boost::json::object BatchOperations::deleteNote(JSONFields& fields) {
    const std::string name = fields.requiredText("id");
    fields.refuseOthers();
    // A whole UUID that names nothing is a note that was deleted before.
    const auto id = Uuid::parse(name);
    CDNote* note = id ? session_.context().find<CDNote>(*id) : &resolveNote(session_, name);
    if (note == nullptr) return {{"id", id->text()}};
    boost::json::object answer{{"id", asJSON(note->id.get())}};
    session_.notes().deleteNote(session_.context(), *note);
    return answer;
}

boost::json::object BatchOperations::pinNote(JSONFields& fields) {
    CDNote& note = namedNote(fields);
    session_.notes().pin(note);
    return answerFor(note);
}

boost::json::object BatchOperations::unpinNote(JSONFields& fields) {
    CDNote& note = namedNote(fields);
    session_.notes().unpin(note);
    return answerFor(note);
}

boost::json::object BatchOperations::addAttachment(JSONFields& fields) {
    const std::string name = fields.requiredText("note");
    const std::string encoded = fields.requiredText("base64");
    AttachmentDraft draft{
        .filename = fields.requiredText("filename"), .declaredType = fields.text("mimeType")};
    fields.refuseOthers();
    auto data = fromBase64(encoded);
    if (!data) throw CommandError::badInput("The field “base64” is not base64.");
    draft.data = std::move(*data);

    StoreContext& context = session_.context();
    CDNote& note = resolveNote(session_, name);
    CDAttachment& attachment = session_.attachments().insert(context, note, std::move(draft));
    const auto inText = attachmentReferences(note.html.valueOr(""));
    const bool isInText = std::ranges::find(inText, attachment.id.get()) != inText.end();
    if (!isInText) session_.attachments().appendToBody(context, note, {&attachment});
    return {{"id", asJSON(attachment.id.get())}};
}

boost::json::object BatchOperations::addTask(JSONFields& fields) {
    const std::string sentence = fields.requiredText("sentence");
    const auto id = newID(fields);
    fields.refuseOthers();
    if (text::isBlank(sentence)) throw CommandError::badInput("A task needs a title.");

    StoreContext& context = session_.context();
    // Repeated after a lost answer: the task is there already.
    if (id && context.find<CDTask>(*id) != nullptr) return {{"id", asJSON(id)}};
    session_.holdNames();
    TaskDraft draft = session_.tasks().draftOf(sentence, session_.calendar());
    draft.id = id;
    CDTask& task = session_.tasks().create(context, std::move(draft));
    return {{"id", asJSON(task.id.get())}};
}

boost::json::object BatchOperations::completeTask(JSONFields& fields) {
    const std::string name = fields.requiredText("id");
    fields.refuseOthers();
    CDTask& task = resolveTask(session_, name);
    session_.tasks().complete(session_.context(), task, session_.calendar());
    return {{"id", asJSON(task.id.get())}};
}

boost::json::object BatchOperations::search(JSONFields& fields) {
    const std::string query = fields.requiredText("query");
    const std::int64_t limit = fields.integer("limit").value_or(SearchEngine::defaultLimit);
    fields.refuseOthers();
    const SearchResponse response = session_.search().search({.text = query, .limit = limit});
    return responseJSON(response, session_.search().explanation(query));
}

boost::json::object BatchOperations::applyGroup(JSONFields& fields) {
    const boost::json::array& operations = fields.requiredArray("ops");
    fields.refuseOthers();
    boost::json::array results;
    for (const boost::json::value& operation : operations) {
        if (!operation.is_object()) {
            throw CommandError::badInput("The field “ops” must be an array of operations.");
        }
        results.push_back(apply(operation.as_object(), Nesting::refused));
    }
    return {{"results", std::move(results)}};
}

}  // namespace tesserine::cli
