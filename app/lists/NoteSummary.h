#pragma once

#include "base/Instant.h"
#include "base/Uuid.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <unordered_map>

namespace tesserine {
class StoreContext;
class TesserineStore;
}  // namespace tesserine

namespace tesserine::app {

/// A note as its line in a list shows it.
struct NoteSummary {
    QString title{};    ///< empty when it has none
    QString snippet{};  ///< the beginning of its text, on one line
    QStringList tags{};
    QString notebook{};
    std::optional<Instant> updatedAt{};
    std::optional<Instant> createdAt{};
    std::optional<Instant> reminderAt{};
    std::optional<Instant> trashedAt{};
    bool isPinned = false;
    bool hasAttachments = false;
    bool hasConflict = false;
    bool isTemplate = false;
};

/// "Untitled" for a note without a title.
QString shownTitle(const NoteSummary& note);

/// Reads summaries one by one as lines come into view, and keeps the last ones.
///
/// Reads what is saved, with a context of its own that it empties again: scrolling through a large
/// library does not fill the memory. Belongs to the main thread.
class NoteSummaries {
public:
    /// `store` outlives it.
    explicit NoteSummaries(TesserineStore& store);
    NoteSummaries(const NoteSummaries&) = delete;
    NoteSummaries& operator=(const NoteSummaries&) = delete;
    ~NoteSummaries();

    /// That of a note which is gone is empty. Good until the next call.
    const NoteSummary& of(const Uuid& note);
    /// Reads everything anew from now on; after a change of the library.
    void forget();
    /// The context, for other short reading; objects of it do not last.
    StoreContext& context() { return *context_; }

private:
    static constexpr std::size_t mostKept = 500;

    NoteSummary read(const Uuid& id);

    std::unique_ptr<StoreContext> context_;
    std::unordered_map<Uuid, NoteSummary> kept_;
};

}  // namespace tesserine::app
