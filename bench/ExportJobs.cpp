#include "bench/ExportJobs.h"

#include "base/Calendar.h"
#include "base/Clock.h"
#include "base/Files.h"
#include "bench/SampleLibrary.h"
#include "core/export/LibraryExporter.h"
#include "core/services/AttachmentService.h"

#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

namespace tesserine::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t notesPerBatch = 200;  // with their files in memory

/// Adds the files that the notes have, shown in their bodies.
void addAttachments(StoreContext& context, std::span<const GeneratedNote> notes) {
    const SystemClock clock;
    const mime::TypeRegistry types;
    const AttachmentService service(clock, types);
    std::size_t pending = 0;
    for (const GeneratedNote& from : notes) {
        if (from.attachments.empty()) continue;
        CDNote& note = context.get<CDNote>(from.id, "The note");
        std::vector<const CDAttachment*> made;
        for (const GeneratedAttachment& attachment : from.attachments) {
            made.push_back(&service.insert(
                context,
                note,
                {.filename = attachment.filename,
                 .declaredType = attachment.type,
                 .data = attachment.data(),
                 .id = attachment.id}));
        }
        service.appendToBody(context, note, made);
        if (++pending % notesPerBatch != 0) continue;
        context.save();
        context.reset();
    }
    context.save();
    context.reset();
}

/// Copies a folder as a user would, and waits until it is on the disk.
void copyFolder(const fs::path& from, const fs::path& to) {
    const pid_t process = ::fork();
    if (process == 0) {
        ::execlp("cp", "cp", "-r", from.c_str(), to.c_str(), nullptr);
        ::_exit(127);
    }
    int status = 0;
    if (process < 0 || ::waitpid(process, &status, 0) < 0 || status != 0) {
        throw std::runtime_error("cp -r failed");
    }
    files::syncFileSystem(to);
}

ExportSummary exportTo(StoreContext& context, const fs::path& parent) {
    const SystemClock clock;
    const Calendar calendar("UTC");
    const text::Collator collator("");
    const LibraryExporter exporter({.clock = clock, .calendar = calendar, .collator = collator});
    const ExportOptions everything{
        .includeTrash = true,
        .includeAttachments = true,
        .includeTasks = true,
        .appVersion = "bench"};
    return exporter.run(context, parent, everything);
}

std::string sizeText(double seconds, std::size_t bytes) {
    return milliseconds(seconds) + ", " + megabytesPerSecond(bytes, seconds);
}

}  // namespace

std::vector<Row> exportJobs(const fs::path& folder, std::size_t noteCount, std::size_t rounds) {
    const ScratchFolder scratch(folder);
    OurLibrary library(scratch.path() / "library");
    const NoteGenerator generator(noteCount);
    const std::vector<GeneratedNote> notes = generator.allNotes();
    library.addPlaces(generator);
    library.addNotes(notes);
    addAttachments(library.context(), notes);

    const ExportSummary pattern = exportTo(library.context(), scratch.path() / "pattern");
    // Copies stay until the end: file systems are slow to make files where many were just removed.
    std::size_t copies = 0;
    const auto newFolder = [&] { return scratch.path() / std::to_string(++copies); };
    const Comparison times = alternate(
        rounds,
        [&] { return secondsOf([&] { copyFolder(pattern.directory, newFolder()); }); },
        [&] { return secondsOf([&] { exportTo(library.context(), newFolder()); }); });
    constexpr double largestRatio = 1.10;
    return {rowOf(
        "export " + grouped(noteCount) + " notes, " + grouped(pattern.attachmentsWritten)
            + " attachments",
        times,
        [bytes = pattern.attachmentBytes](double seconds) { return sizeText(seconds, bytes); },
        largestRatio)};
}

}  // namespace tesserine::bench
