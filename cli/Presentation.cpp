#include "cli/Presentation.h"

#include "cli/DisplayText.h"
#include "cli/Names.h"
#include "cli/ObjectJSON.h"
#include "cli/Session.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

namespace tesserine::cli {

namespace {

/// Small signs behind a title: pinned, reminder, conflict, template.
std::string marks(const CDNote& note) {
    std::string text;
    if (note.isPinned) text += "pinned ";
    if (note.reminderAt) text += "reminder ";
    if (note.hasConflict) text += "conflict ";
    if (note.isTemplate) text += "template ";
    if (note.trashedAt) text += "trash ";
    if (!text.empty()) text.pop_back();
    return text;
}

std::string tagNames(const CDNote& note) {
    std::string text;
    for (const CDTag* tag : note.tags.all()) {
        text += (text.empty() ? "" : ", ") + tag->name.valueOr("");
    }
    return text;
}

}  // namespace

std::string inQuotes(std::string_view name) { return "“" + oneLine(name) + "”"; }

std::string quotedTitle(const CDNote& note) { return inQuotes(displayTitle(note)); }

void showField(Session& session, std::string_view name, const std::string& value) {
    if (value.empty()) return;
    std::string label(name);
    label.resize(12, ' ');
    session.output().line(session.output().styled(label, Style::faint) + oneLine(value));
}

std::string localText(Session& session, const std::optional<Instant>& instant) {
    return instant ? session.localTime(*instant) : std::string();
}

void showNotes(Session& session, const std::vector<CDNote*>& notes, std::string_view nothing) {
    if (session.output().isJSON()) {
        boost::json::array array;
        for (CDNote* note : notes) {
            array.push_back(asJSON(*note, Detail::header));
        }
        session.output().json(array);
        return;
    }
    if (notes.empty()) session.remark(nothing);
    Table table{
        .columns = {
            {.title = "ID", .style = Style::accent},
            {.title = "CHANGED", .style = Style::faint},
            {.title = "TITLE", .style = Style::strong, .mayShrink = true},
            {.title = "NOTEBOOK", .mayShrink = true},
            {.title = "", .style = Style::warning}}};
    for (const CDNote* note : notes) {
        const CDNotebook* notebook = note->notebook;
        table.rows.push_back(
            {shortID(note->id),
             localText(session, note->updatedAt),
             displayTitle(*note),
             notebook == nullptr ? std::string() : NotebookService::pathText(*notebook),
             marks(*note)});
    }
    session.output().table(table);
}

void showNote(Session& session, CDNote& note) {
    Output& output = session.output();
    if (output.isJSON()) {
        output.json(asJSON(note, Detail::whole));
        return;
    }
    output.line(output.styled(oneLine(displayTitle(note)), Style::strong));
    const auto id = note.id.get();
    showField(session, "Id", id ? id->text() : std::string());
    if (const CDNotebook* notebook = note.notebook) {
        showField(session, "Notebook", NotebookService::pathText(*notebook));
    }
    showField(session, "Tags", tagNames(note));
    showField(session, "Created", localText(session, note.createdAt));
    showField(session, "Changed", localText(session, note.updatedAt));
    showField(session, "Reminder", localText(session, note.reminderAt));
    showField(session, "In trash", localText(session, note.trashedAt));
    showField(session, "Source", note.sourceURL.valueOr(""));
    if (note.attachments.count() > 0) {
        showField(session, "Files", counted(note.attachments.count(), "attachment"));
    }
    if (note.isPinned) showField(session, "Pinned", localText(session, note.favoritedAt));
    if (note.hasConflict) {
        showField(session, "Conflict", "another version is among the revisions");
    }
    const std::string text = note.plainText.valueOr("");
    if (text.empty()) return;
    output.line("");
    output.text(text);
}

ExitStatus answer(Session& session, StoreObject& object, const std::string& sentence) {
    if (session.output().isJSON()) {
        session.output().json(asJSON(object, Detail::header));
    } else {
        session.output().line(sentence);
    }
    return ExitStatus::done;
}

ExitStatus answerWithID(Session& session, StoreObject& object) {
    const auto id = object.uuid();
    return answer(session, object, id ? id->text() : std::string("-"));
}

ExitStatus answerCount(
    Session& session, std::string_view key, std::size_t count, const std::string& sentence) {
    if (session.output().isJSON()) {
        session.output().json(boost::json::object{{key, count}});
    } else {
        session.output().line(sentence);
    }
    return ExitStatus::done;
}

}  // namespace tesserine::cli
