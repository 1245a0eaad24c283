#include "cli/CommandError.h"
#include "cli/DisplayText.h"
#include "cli/Names.h"
#include "cli/ObjectJSON.h"
#include "cli/Presentation.h"
#include "cli/Session.h"
#include "sync/MissingFiles.h"

#include <boost/json/array.hpp>

#include <algorithm>
#include <system_error>

namespace tesserine::cli {

namespace {

namespace fs = std::filesystem;

ExitStatus showAttachments(Session& session, const std::vector<CDAttachment*>& attachments) {
    if (session.output().isJSON()) {
        boost::json::array array;
        for (CDAttachment* attachment : attachments) {
            array.push_back(asJSON(*attachment, Detail::header));
        }
        session.output().json(array);
        return ExitStatus::done;
    }
    for (const CDAttachment* attachment : attachments) {
        const auto id = attachment->id.get();
        session.output().line(
            (id ? id->text() : std::string("-")) + "  "
            + oneLine(attachment->filename.valueOr("")));
    }
    return ExitStatus::done;
}

ExitStatus attachFiles(Session& session, const Arguments& arguments) {
    StoreContext& context = session.context();
    CDNote& note = resolveNote(session, arguments.word(0));
    std::vector<CDAttachment*> attached;
    for (const fs::path& file : arguments.pathsFrom(1)) {
        session.throwIfStopped();
        CDAttachment& attachment = session.attachments().insertFile(context, note, file);
        if (std::ranges::find(attached, &attachment) == attached.end()) {
            attached.push_back(&attachment);
        }
    }
    session.attachments().appendToBody(
        context, note, std::vector<const CDAttachment*>(attached.begin(), attached.end()));
    context.save();
    return showAttachments(session, attached);
}

ExitStatus listAttachments(Session& session, const Arguments& arguments) {
    CDNote& note = resolveNote(session, arguments.word(0));
    const auto attachments = session.attachments().attachments(note);
    if (session.output().isJSON()) return showAttachments(session, attachments);
    if (attachments.empty()) session.remark("The note has no attachments.");

    const auto inText = attachmentReferences(note.html.valueOr(""));
    const auto missing = missingFiles(session.context(), note);
    Table table{
        .columns = {
            {.title = "ID", .style = Style::accent},
            {.title = "SIZE", .isNumber = true},
            {.title = "TYPE"},
            {.title = "NAME", .style = Style::strong, .mayShrink = true},
            {.title = "", .style = Style::faint}}};
    for (const CDAttachment* attachment : attachments) {
        const auto id = attachment->id.get();
        const bool isInText = id && std::ranges::find(inText, *id) != inText.end();
        const auto lack = missing.find(id.value_or(Uuid()));
        const auto size = std::max<std::int64_t>(attachment->byteCount.valueOr(0), 0);
        table.rows.push_back(
            {shortID(id),
             byteText(static_cast<std::uint64_t>(size)),
             attachment->mimeType.valueOr(""),
             attachment->filename.valueOr(""),
             lack != missing.end() ? lack->second
             : isInText            ? ""
                                   : "not in the text"});
    }
    session.output().table(table);
    return ExitStatus::done;
}

ExitStatus saveAttachment(Session& session, const Arguments& arguments) {
    CDAttachment& attachment = resolveAttachment(session, arguments.word(0));
    fs::path target = arguments.pathWord(1);
    std::error_code error;
    if (fs::is_directory(target, error)) {
        target /= session.attachments().storedFilename(
            attachment.filename.valueOr(""), attachment.mimeType.valueOr(""));
    }
    const auto ifExists = arguments.has("replace") ? AttachmentService::IfExists::replace
                                                   : AttachmentService::IfExists::refuse;
    const auto integrity = session.attachments().saveToFile(attachment, target, ifExists);
    if (integrity == AttachmentService::Integrity::damaged) {
        throw CommandError::damagedAttachment(AttachmentService::damageWarning(attachment));
    }
    return answer(session, attachment, "Saved " + inQuotes(target.string()) + ".");
}

ExitStatus deleteAttachment(Session& session, const Arguments& arguments) {
    StoreContext& context = session.context();
    CDAttachment& attachment = resolveAttachment(session, arguments.word(0));
    const std::string name = inQuotes(attachment.filename.valueOr(""));
    const auto referring = session.attachments().referringRevisions(attachment);
    session.attachments().deleteAttachment(context, attachment);
    context.save();
    if (!referring.empty()) {
        session.remark(
            "It stands in " + counted(referring.size(), "earlier version")
            + " of its note as well, which now lack it.");
    }
    return answerCount(session, "deleted", 1, "Deleted " + name + ".");
}

}  // namespace

std::vector<Command> attachmentCommands() {
    return {
        {.path = "note attach",
         .summary = "Attaches files to a note, at its end, and prints their ids",
         .access = Access::writes,
         .arguments =
             {{.name = "NOTE"},
              {.name = "FILE", .isRepeatable = true, .completion = Completion::file}},
         .example = "tesserine note attach Plan sketch.png minutes.pdf",
         .run = attachFiles},
        {.path = "note attachments",
         .summary = "Lists the attachments of a note",
         .arguments = {{.name = "NOTE"}},
         .example = "tesserine note attachments Plan",
         .run = listAttachments},
        {.path = "attachment save",
         .summary = "Writes an attachment to a file, or into a folder under its own name",
         .arguments = {{.name = "ID"}, {.name = "FILE", .completion = Completion::file}},
         .options = {{.name = "replace", .summary = "Replace a file that is there"}},
         .example = "tesserine attachment save 7C21A0B3 sketch.png",
         .run = saveAttachment},
        {.path = "attachment delete",
         .summary = "Deletes an attachment and takes it out of its note's text",
         .access = Access::writes,
         .arguments = {{.name = "ID"}},
         .example = "tesserine attachment delete 7C21A0B3",
         .run = deleteAttachment}};
}

}  // namespace tesserine::cli
