#include "search/IndexCoverage.h"
#include "search/SearchAnalyzer.h"
#include "search/SearchIndex.h"
#include "tools/inspect/Operations.h"
#include "tools/inspect/ScratchFolder.h"

#include <vector>

namespace tesserine::inspect {
namespace {

using boost::json::object;
using boost::json::value;

constexpr const char* locale = "en_US";

std::string stringIn(const value& one, const char* what) {
    if (!one.is_string()) throw InputError(std::string("“") + what + "” holds what is no text");
    return std::string(one.get_string());
}

/// `analyzer.keyText`: the key text of a list of texts.
value keyText(const object& input) {
    const std::vector<std::string> owned = texts(input, "texts");
    const std::vector<std::string_view> views(owned.begin(), owned.end());
    return boost::json::string(SearchAnalyzer::keyText(views));
}

/// `index.coverageSummary`: the one-line summary of a report.
value coverageSummary(const object& input) {
    const value& given = member(input, "coverage");
    if (!given.is_object()) throw InputError("“coverage” is not an object");
    const object& counts = given.get_object();
    IndexCoverage coverage;
    coverage.notes = integer(counts, "notes");
    coverage.tasks = integer(counts, "tasks");
    coverage.attachments = integer(counts, "attachments");
    coverage.attachmentsWithText = integer(counts, "attachmentsWithText");
    coverage.indexedNotes = integer(counts, "indexedNotes");
    coverage.indexedTasks = integer(counts, "indexedTasks");
    coverage.indexedAttachments = integer(counts, "indexedAttachments");
    coverage.indexedAttachmentsWithText = integer(counts, "indexedAttachmentsWithText");
    coverage.missing = integer(counts, "missing");
    coverage.stale = integer(counts, "stale");
    coverage.orphaned = integer(counts, "orphaned");
    const value* version = counts.if_contains("schemaVersion");
    const bool hasVersion = version != nullptr && !version->is_null();
    if (hasVersion) coverage.schemaVersion = integer(counts, "schemaVersion");
    coverage.interruptedRebuild = truth(counts, "interruptedRebuild");
    const std::string line = coverage.summary(optionalText(input, "locale").value_or(locale));
    return boost::json::string(line);
}

/// `index.descendantTags`: the tags below one, in a tree given as pairs of name and parent.
value descendantTags(const object& input) {
    std::vector<SearchIndex::TagParent> tags;
    for (const value& pair : elements(input, "pairs")) {
        if (!pair.is_array() || pair.get_array().size() != 2) {
            throw InputError("“pairs” holds what is no pair");
        }
        const value& parent = pair.get_array()[1];
        tags.push_back({stringIn(pair.get_array()[0], "pairs"), std::nullopt});
        if (!parent.is_null()) tags.back().parent = stringIn(parent, "pairs");
    }
    const ScratchFolder folder;
    SearchIndex index(folder.path() / SearchIndex::fileName);
    index.replaceTagTree(tags);
    boost::json::array names;
    for (const std::string& name : index.descendantTags(text(input, "name"))) {
        names.emplace_back(name);
    }
    return names;
}

/// `index.open`: whether an index of one document, with a stored schema version or (null) none,
/// keeps the document when it is opened again, and the version stored then.
value openAgain(const object& input) {
    const ScratchFolder folder;
    const auto file = folder.path() / SearchIndex::fileName;
    {
        SearchIndex index(file);
        index.upsert({.title = "A document"});
        if (const auto version = optionalText(input, "meta")) {
            index.setMeta("schema", *version);
        } else {
            index.deleteMeta("schema");
        }
    }
    SearchIndex index(file);
    return object{
        {"kept", index.countDocuments() == 1}, {"schema", index.meta("schema").value_or("")}};
}

/// `index.signature`: the change signature of a document.
value signatureOf(const object& input) {
    IndexDocument document;
    const value* updated = input.if_contains("updatedEpoch");
    const bool hasUpdate = updated != nullptr && !updated->is_null();
    if (hasUpdate) {
        if (!updated->is_number()) throw InputError("“updatedEpoch” is not a number");
        document.updatedAt = Instant::fromSeconds(updated->to_number<double>());
    }
    for (const std::string& text : texts(input, "attachmentTexts")) {
        document.attachments.push_back({.text = text});
    }
    document.isTrashed = truth(input, "trashed");
    return boost::json::string(signature(stateOf(document)));
}

}  // namespace

void addIndexOperations(Operations& operations) {
    operations.add("analyzer.keyText", keyText);
    operations.add("index.coverageSummary", coverageSummary);
    operations.add("index.descendantTags", descendantTags);
    operations.add("index.open", openAgain);
    operations.add("index.signature", signatureOf);
}

}  // namespace tesserine::inspect
