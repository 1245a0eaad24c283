#include "core/import/ImportReportJSON.h"

#include "base/JSON.h"

namespace tesserine {
namespace {

/// Reports are our own, but a library is input like any other.
constexpr json::Limits limits{.byteCount = std::size_t{1} << 30, .depth = 8};

constexpr std::string_view batchKey = "batchOf";

boost::json::value optionalText(const std::optional<Instant>& instant) {
    if (!instant) return nullptr;
    return boost::json::value(instant->iso());
}

boost::json::object encoded(const ImportedNote& note) {
    boost::json::object object{{"title", note.title}, {"outcome", rawValue(note.outcome)}};
    if (note.noteID) object["noteID"] = note.noteID->text();
    boost::json::array warnings;
    for (const std::string& warning : note.warnings) {
        warnings.emplace_back(warning);
    }
    object["warnings"] = std::move(warnings);
    if (note.taskIDs.empty()) return object;
    boost::json::array tasks;
    for (const Uuid& id : note.taskIDs) {
        tasks.emplace_back(id.text());
    }
    object["taskIDs"] = std::move(tasks);
    return object;
}

boost::json::array encodedNotes(const ImportReport& report, std::size_t first) {
    boost::json::array notes;
    notes.reserve(report.notes.size() - first);
    for (std::size_t i = first; i < report.notes.size(); ++i) {
        notes.push_back(encoded(report.notes[i]));
    }
    return notes;
}

std::string textIn(const boost::json::object& object, std::string_view key) {
    const auto* const value = object.if_contains(key);
    return value != nullptr && value->is_string() ? std::string(value->get_string())
                                                  : std::string{};
}

std::optional<Instant> instantIn(const boost::json::object& object, std::string_view key) {
    return Instant::parseISO(textIn(object, key));
}

std::uint64_t numberIn(const boost::json::object& object, std::string_view key) {
    const auto* const value = object.if_contains(key);
    if (value == nullptr || !value->is_int64() || value->get_int64() < 0) return 0;
    return static_cast<std::uint64_t>(value->get_int64());
}

std::vector<std::string> textsIn(const boost::json::object& object, std::string_view key) {
    std::vector<std::string> texts;
    const auto* const values = object.if_contains(key);
    if (values == nullptr || !values->is_array()) return texts;
    for (const auto& value : values->get_array()) {
        if (value.is_string()) texts.emplace_back(value.get_string());
    }
    return texts;
}

boost::json::value encoded(const std::optional<ImportCheck>& check) {
    if (!check) return nullptr;
    return boost::json::object{
        {"notes", check->notes},
        {"expectedNotes", check->expectedNotes},
        {"files", check->files},
        {"expectedFiles", check->expectedFiles}};
}

std::optional<ImportCheck> checkIn(const boost::json::object& report) {
    const auto* const value = report.if_contains("check");
    if (value == nullptr || !value->is_object()) return std::nullopt;
    const auto& object = value->get_object();
    return ImportCheck{
        .notes = numberIn(object, "notes"),
        .expectedNotes = numberIn(object, "expectedNotes"),
        .files = numberIn(object, "files"),
        .expectedFiles = numberIn(object, "expectedFiles")};
}

/// Adds the notes of `object` to `report` and counts them.
void takeNotes(const boost::json::object& object, ImportReport& report) {
    const auto* const notes = object.if_contains("notes");
    if (notes == nullptr || !notes->is_array()) return;
    for (const auto& value : notes->get_array()) {
        if (!value.is_object()) continue;
        const auto& entry = value.get_object();
        const auto outcome = importOutcomeNamed(textIn(entry, "outcome"));
        if (!outcome) continue;
        ImportedNote note{.title = textIn(entry, "title"), .outcome = *outcome};
        note.noteID = Uuid::parse(textIn(entry, "noteID"));
        note.warnings = textsIn(entry, "warnings");
        for (const std::string& text : textsIn(entry, "taskIDs")) {
            if (const auto id = Uuid::parse(text)) note.taskIDs.push_back(*id);
        }
        report.add(std::move(note));
    }
    report.attachments = numberIn(object, "attachments");
    report.attachmentBytes = numberIn(object, "attachmentBytes");
}

std::optional<boost::json::object> parsedObject(std::string_view text) {
    try {
        boost::json::value value = json::parse(text, limits);
        if (!value.is_object()) return std::nullopt;
        return std::move(value.get_object());
    } catch (const json::JSONError&) {
        return std::nullopt;
    }
}

}  // namespace

std::string encodedImportReport(const ImportReport& report) {
    return json::write(boost::json::object{
        {"format", report.format},
        {"file", report.file},
        {"started", report.started.iso()},
        {"finished", optionalText(report.finished)},
        {"undone", optionalText(report.undone)},
        {"seed", report.seed.text()},
        {"found", report.found},
        {"imported", report.imported},
        {"replaced", report.replaced},
        {"skipped", report.skipped},
        {"failed", report.failed},
        {"attachments", report.attachments},
        {"attachmentBytes", report.attachmentBytes},
        {"check", encoded(report.check)},
        {"notes", encodedNotes(report, 0)},
    });
}

std::optional<ImportReport> decodedImportReport(std::string_view json) {
    const auto object = parsedObject(json);
    if (!object) return std::nullopt;
    ImportReport report;
    report.format = textIn(*object, "format");
    report.file = textIn(*object, "file");
    report.started = instantIn(*object, "started").value_or(Instant{});
    report.finished = instantIn(*object, "finished");
    report.undone = instantIn(*object, "undone");
    report.seed = Uuid::parse(textIn(*object, "seed")).value_or(Uuid{});
    report.found = numberIn(*object, "found");
    report.check = checkIn(*object);
    takeNotes(*object, report);
    return report;
}

std::string encodedImportBatch(const ImportReport& report, std::size_t first) {
    return json::write(boost::json::object{
        {batchKey, report.id->text()},
        {"attachments", report.attachments},
        {"attachmentBytes", report.attachmentBytes},
        {"notes", encodedNotes(report, first)},
    });
}

bool isImportBatch(std::string_view json, const Uuid& report) {
    // The key stands first, so that the notes need not be read to find it.
    return json.starts_with("{\"" + std::string(batchKey) + "\":\"" + report.text() + "\"");
}

void addImportBatch(ImportReport& report, std::string_view json) {
    if (const auto object = parsedObject(json)) takeNotes(*object, report);
}

}  // namespace tesserine
