#include "cli/NoteEditor.h"

#include "base/Files.h"
#include "cli/BodyInput.h"
#include "cli/CommandError.h"
#include "cli/Names.h"
#include "cli/NoteMarkdown.h"
#include "cli/Presentation.h"
#include "cli/Session.h"

#include <system_error>

namespace tesserine::cli {

namespace {

namespace fs = std::filesystem;

/// The state of a note that an editor was given.
struct Loaded {
    Uuid id;
    std::string html;
};

/// A body in the form in which it is edited.
struct Draft {
    std::string text;
    bool isMarkdown = false;
};

Draft draftOf(Session& session, const std::string& html) {
    NoteMarkdown markdown = markdownOfNote(html);
    if (markdown.isLossless) return {.text = std::move(markdown.text), .isMarkdown = true};
    session.remark("Markdown cannot hold all of this note, so it opens as HTML.");
    return {.text = html};
}

/// A file of the note's text that only its owner can read; the name tells nothing of the note.
fs::path newEditorFile(Session& session, const Draft& draft) {
    const auto runtime = session.environment().variable("XDG_RUNTIME_DIR");
    const auto temporary = session.environment().variable("TMPDIR");
    const fs::path folder = runtime ? *runtime : temporary.value_or("/tmp");
    const Uuid name = Uuid::random(session.environment().random);
    const std::string extension = draft.isMarkdown ? ".md" : ".html";
    fs::path file = folder / ("tesserine-" + name.wireText() + extension);
    files::writeNew(file, bytesOf(draft.text));
    return file;
}

/// The person's own setting may hold options ("code --wait"), so a shell takes it apart; the file
/// is an argument of its own and is never looked at by the shell.
void runEditor(Session& session, const fs::path& file) {
    const Environment& environment = session.environment();
    const std::string editor =
        environment.variable("VISUAL").value_or(environment.variable("EDITOR").value_or("vi"));
    const auto status = environment.runProgram(
        {"/bin/sh", "-c", editor + " \"$1\"", "tesserine-editor", file.string()});
    if (!status || *status != 0) {
        throw CommandError::editorFailed(editor);
    }
}

ExitStatus saveEdited(Session& session, const Loaded& loaded, std::string html) {
    StoreContext& context = session.context();
    CDNote& note = session.notes().getNote(context, loaded.id);
    const auto outcome = session.notes().saveEdit(
        context, note, {.html = std::move(html), .loadedHTML = loaded.html});
    context.save();
    if (outcome == NoteService::EditOutcome::savedWithConflict) {
        session.remark("The note was changed elsewhere meanwhile; that version is now a revision.");
    }
    return answer(session, note, "Changed " + quotedTitle(note) + ".");
}

Loaded load(Session& session, const std::string& name) {
    CDNote& note = resolveNote(session, name);
    if (!note.id) throw StoreError::notFound("The note “" + name + "”");
    return {.id = *note.id, .html = note.html.valueOr("")};
}

}  // namespace

ExitStatus editNoteInEditor(Session& session, const std::string& name) {
    const Environment& environment = session.environment();
    if (!environment.inputIsTerminal || !environment.outputIsTerminal) {
        throw UsageError::because(
            "Without a terminal, “note edit” needs an option that says what to change.");
    }
    const Loaded loaded = load(session, name);
    session.closeLibrary();

    const Draft draft = draftOf(session, loaded.html);
    const fs::path file = newEditorFile(session, draft);
    try {
        runEditor(session, file);
        const std::string edited = readText(session, file);
        if (edited == draft.text) {
            files::removeIfPresent(file);
            session.remark("Nothing was changed.");
            return ExitStatus::done;
        }
        const ExitStatus status =
            saveEdited(session, loaded, draft.isMarkdown ? htmlFromMarkdown(edited) : edited);
        files::removeIfPresent(file);
        return status;
    } catch (const UserError&) {
        session.remark("What you wrote is in “" + file.string() + "”.");
        throw;
    }
}

}  // namespace tesserine::cli
