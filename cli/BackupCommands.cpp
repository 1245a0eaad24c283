#include "cli/CommandError.h"
#include "cli/DisplayText.h"
#include "cli/Safeguard.h"
#include "cli/Session.h"
#include "core/services/LibraryChecker.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

namespace tesserine::cli {

namespace {

namespace fs = std::filesystem;

boost::json::object backupJSON(const LibraryBackup& backup) {
    return {
        {"folder", backup.folder.string()},
        {"createdAt", backup.createdAt.iso()},
        {"reason", backup.reason},
        {"byteCount", backup.byteCount}};
}

ExitStatus makeBackup(Session& session, const Arguments& arguments) {
    const LibraryBackups backups = backupsOf(session);
    const LibraryBackup made =
        backups.create(session.store(), "manual", arguments.path("to"), session.stop());
    backups.verify(made.folder);
    if (session.output().isJSON()) {
        session.output().json(backupJSON(made));
    } else {
        session.output().line(oneLine(made.folder.string()));
    }
    return ExitStatus::done;
}

ExitStatus listBackups(Session& session, const Arguments&) {
    const auto all = backupsOf(session).list();
    boost::json::array array;
    Table table{
        .columns = {
            {.title = "MADE", .style = Style::faint},
            {.title = "REASON"},
            {.title = "SIZE", .isNumber = true},
            {.title = "NAME", .style = Style::strong}}};
    for (const LibraryBackup& backup : all) {
        array.push_back(backupJSON(backup));
        table.rows.push_back(
            {session.localTime(backup.createdAt),
             backup.reason,
             byteText(backup.byteCount),
             backup.folder.filename().string()});
    }
    if (session.output().isJSON()) {
        session.output().json(array);
        return ExitStatus::done;
    }
    if (all.empty()) session.remark("There are no backups.");
    session.output().table(table);
    return ExitStatus::done;
}

/// A folder as it stands, else one of the library's own backups by its name.
fs::path backupNamed(const LibraryBackups& backups, const fs::path& typed) {
    std::error_code error;
    if (fs::is_directory(typed, error)) return typed;
    const fs::path own = backups.folder() / typed.filename();
    return typed.has_parent_path() || !fs::is_directory(own, error) ? typed : own;
}

ExitStatus restoreBackup(Session& session, const Arguments& arguments) {
    session.closeLibrary();
    const LibraryBackups backups = backupsOf(session);
    const RestoreOutcome outcome = backups.restore(backupNamed(backups, arguments.pathWord(0)));
    if (session.output().isJSON()) {
        boost::json::object answer = backupJSON(outcome.backup);
        answer["keptAside"] = outcome.keptAside ? boost::json::value(outcome.keptAside->string())
                                                : boost::json::value();
        session.output().json(answer);
        return ExitStatus::done;
    }
    session.output().line(
        "The library is as it was at " + session.localTime(outcome.backup.createdAt) + ".");
    if (outcome.keptAside) {
        session.output().line(
            "What stood there before is in “" + oneLine(outcome.keptAside->string()) + "”.");
    }
    return ExitStatus::done;
}

boost::json::object reportJSON(const LibraryReport& report) {
    boost::json::array problems;
    for (const LibraryProblem& problem : report.problems) {
        problems.push_back(
            {{"kind", rawValue(problem.kind)},
             {"sentence", problem.sentence},
             {"repaired", problem.repaired}});
    }
    return {
        {"objects", report.objects},
        {"bodies", report.bodies},
        {"attachments", report.attachments},
        {"files", report.files},
        {"problems", std::move(problems)}};
}

void showReport(Session& session, const LibraryReport& report) {
    Output& output = session.output();
    for (const LibraryProblem& problem : report.problems) {
        output.line(
            oneLine(problem.sentence)
            + (problem.repaired ? output.styled(" Repaired.", Style::accent)
                                : output.styled(" Not repaired.", Style::warning)));
    }
    output.line(
        "Examined " + counted(report.objects, "object") + ", "
        + counted(report.bodies, "body", "bodies") + ", "
        + counted(report.attachments, "attachment") + " and " + counted(report.files, "file")
        + ".");
    if (report.isClean()) output.line("Everything is in order.");
}

ExitStatus checkLibrary(Session& session, const Arguments& arguments) {
    LibraryReport report;
    {
        Progress progress(session.environment(), "Examining");
        const LibraryChecker checker(session.store(), session.clock());
        report = checker.check(
            {.repairs = arguments.has("no-repair") ? LibraryChecker::Repairs::none
                                                   : LibraryChecker::Repairs::safe,
             .stop = session.stop(),
             .progress = [&](std::string_view step, std::size_t done, std::size_t total) {
                 progress.show(done, total, step);
             }});
    }
    if (report.wasStopped) throw Interrupted();
    if (session.output().isJSON()) {
        session.output().json(reportJSON(report));
    } else {
        showReport(session, report);
    }
    const std::size_t left = report.problems.size() - report.repairedCount();
    if (left == 0) return ExitStatus::done;
    session.output().flush();
    throw CommandError::badInput(
        counted(left, "problem") + (left == 1 ? " is" : " are") + " not repaired.");
}

}  // namespace

std::vector<Command> backupCommands() {
    return {
        {.path = "backup",
         .summary = "Makes a verified copy of the library, also while others write to it",
         .options =
             {{.name = "to",
               .value = "DIR",
               .summary = "The folder to make, in place of one among the library's backups",
               .completion = Completion::folder}},
         .example = "tesserine backup --to /media/stick/notes-2026-03-14",
         .run = makeBackup},
        {.path = "backup list",
         .summary = "Lists the library's backups, newest first",
         .access = Access::none,
         .example = "tesserine backup list",
         .run = listBackups},
        {.path = "restore",
         .summary = "Puts a backup in the library's place; what stood there is kept beside it",
         .access = Access::none,
         .arguments = {{.name = "BACKUP", .completion = Completion::folder}},
         .details = "BACKUP is a folder, or a name that “backup list” shows. The library must not "
                    "be open elsewhere.",
         .example = "tesserine restore '2026-03-14 09.15.00 daily'",
         .run = restoreBackup},
        {.path = "check",
         .summary = "Examines the library and repairs what can be repaired without loss",
         .options = {{.name = "no-repair", .summary = "Only examine"}},
         .details = "A damaged file is reported and never replaced; “restore” does that.",
         .example = "tesserine check",
         .run = checkLibrary}};
}

}  // namespace tesserine::cli
