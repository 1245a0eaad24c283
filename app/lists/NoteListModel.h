#pragma once

#include "app/lists/NoteScope.h"
#include "app/lists/NoteSummary.h"
#include "app/state/InTurn.h"

#include <QAbstractListModel>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tesserine {
class ListedRow;
struct ObjectChange;
namespace text {
class Collator;
}
}  // namespace tesserine

namespace tesserine::app {

class AppEnvironment;

/// The notes of one place, any number of them.
///
/// The beginning of the list is there at once; the rest, identities only, is read in the
/// background. What a line shows is read when it comes into view. Changes of the library move,
/// insert and remove single lines, so that selection and scroll position stay; a change of very
/// many notes at once resets the model.
class NoteListModel final : public QAbstractListModel {
    Q_OBJECT

public:
    /// Notes that are there at once.
    static constexpr std::size_t beginning = 200;
    /// Beyond so many changed notes the list is read anew.
    static constexpr std::size_t mostSingleChanges = 200;

    explicit NoteListModel(AppEnvironment& environment, QObject* parent = nullptr);

    void show(const NoteScope& scope);
    const NoteScope& scope() const { return scope_; }
    /// Whether all notes of the place are listed by now.
    bool isComplete() const { return isComplete_; }

    Uuid noteAt(int row) const { return entries_[static_cast<std::size_t>(row)].id; }
    /// -1 when it is not listed (yet).
    int rowOf(const Uuid& note) const;
    /// Whether the note still has a line here but no longer belongs to the place.
    bool isLeaving(const Uuid& note) const { return rowOf(note) >= 0 && !present(note); }
    /// Good until the next call.
    const NoteSummary& summary(int row) const { return summaries_.of(noteAt(row)); }
    /// The date that the list is ordered by; none where the note has none.
    std::optional<Instant> date(int row) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;

signals:
    void completed();

private:
    struct Entry {
        Uuid id;
        Instant date;
        std::string title{};  ///< in lists by title only
        friend bool operator==(const Entry&, const Entry&) = default;
    };
    using Entries = std::vector<Entry>;

    /// How entries follow each other in a scope that is not by title. Used on any thread.
    struct ByDate {
        const NoteScope& scope;
        bool operator()(const Entry& one, const Entry& other) const;
    };
    /// How entries follow each other in a scope. Used on any thread.
    struct Order {
        const NoteScope& scope;
        const text::Collator& collator;
        bool operator()(const Entry& one, const Entry& other) const;
    };
    static Entry entryOf(const ListedRow& row, const NoteScope& scope);
    static Entries read(const NoteScope& scope, StoreContext& context, std::size_t limit = 0);
    Order order() const;
    void readRest();
    void take(Entries entries);
    void follow(const std::vector<ObjectChange>& changes);
    void takeChanges(const std::vector<ObjectChange>& changes);
    void update(const Uuid& note);
    void move(std::ptrdiff_t from, std::ptrdiff_t to);
    std::optional<Entry> present(const Uuid& note) const;
    std::ptrdiff_t placeOf(const Entry& entry, std::ptrdiff_t from) const;

    AppEnvironment& environment_;
    mutable NoteSummaries summaries_;
    NoteScope scope_;
    Entries entries_;
    bool isComplete_ = true;
    InTurn inTurn_;
    std::uint64_t reading_ = 0;  // counts readings; an answer to an earlier one is dropped
};

/// What a drag of notes carries: their ids, one to a line.
inline constexpr const char* notesMimeType = "application/x-tesserine-notes";
std::vector<Uuid> draggedNotes(const QMimeData& data);

}  // namespace tesserine::app
