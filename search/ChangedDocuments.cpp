#include "search/ChangedDocuments.h"

#include <algorithm>

namespace tesserine {
namespace {

class Collector {
public:
    Collector(DocumentReader& reader, SearchIndex& index) : reader_(reader), index_(index) {}

    void take(const ObjectChange& change);
    ChangedDocuments finish();

private:
    void takeAttachment(const ObjectChange& change);
    void add(const std::vector<DocumentKey>& keys);

    DocumentReader& reader_;
    SearchIndex& index_;
    ChangedDocuments result_;
    std::set<std::int64_t> renamedNotebooks_;
    std::set<std::int64_t> renamedTags_;
};

bool changes(const ObjectChange& change, const char* name) {
    return change.kind == ChangeKind::updated && std::ranges::count(change.changed, name) > 0;
}

void Collector::take(const ObjectChange& change) {
    switch (change.entity) {
    case EntityKind::note: result_.documents[{SearchKind::note, change.key}] = change.uuid; break;
    case EntityKind::task: result_.documents[{SearchKind::task, change.key}] = change.uuid; break;
    case EntityKind::attachment: takeAttachment(change); break;
    case EntityKind::notebook:
        // A notebook that comes or goes changes its notes, too, and the history has them.
        if (changes(change, "name")) renamedNotebooks_.insert(change.key);
        break;
    case EntityKind::tag:
        if (changes(change, "name")) renamedTags_.insert(change.key);
        result_.isTagTreeChanged = true;
        break;
    case EntityKind::savedSearch:
    case EntityKind::taskTemplate:
    case EntityKind::noteRevision:
    case EntityKind::project:
    case EntityKind::importReport:
    case EntityKind::syncState:
    case EntityKind::syncMeta: break;
    }
}

/// The note that has it now and the one that the index shows with it.
void Collector::takeAttachment(const ObjectChange& change) {
    if (const auto note = reader_.withAttachment(change.key)) add({*note});
    const auto shown = change.uuid ? index_.ownerOfAttachment(*change.uuid) : std::nullopt;
    const auto key = shown ? reader_.keyOf(*shown) : std::nullopt;
    if (key) add({*key});
}

/// Not told by the history itself: their identity is not needed, for they are there.
void Collector::add(const std::vector<DocumentKey>& keys) {
    for (const DocumentKey& key : keys) {
        result_.documents.try_emplace(key);
    }
}

ChangedDocuments Collector::finish() {
    for (const std::int64_t notebook : renamedNotebooks_) {
        add(reader_.inNotebook(notebook));
    }
    for (const std::int64_t tag : renamedTags_) {
        add(reader_.withTag(tag));
    }
    return std::move(result_);
}

}  // namespace

ChangedDocuments changedDocuments(
    const std::vector<StoreTransaction>& transactions, DocumentReader& reader, SearchIndex& index) {
    Collector collector(reader, index);
    for (const StoreTransaction& transaction : transactions) {
        for (const ObjectChange& change : transaction.changes) {
            collector.take(change);
        }
    }
    return collector.finish();
}

}  // namespace tesserine
