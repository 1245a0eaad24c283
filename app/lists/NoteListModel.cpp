#include "app/lists/NoteListModel.h"

#include "app/state/AppEnvironment.h"
#include "app/state/DateWords.h"

#include <QMimeData>

#include <algorithm>
#include <iterator>
#include <memory>
#include <set>
#include <utility>

namespace tesserine::app {

NoteListModel::NoteListModel(AppEnvironment& environment, QObject* parent)
    : QAbstractListModel(parent), environment_(environment), summaries_(environment.store()) {
    connect(&environment, &AppEnvironment::libraryChanged, this, &NoteListModel::follow);
    connect(&environment, &AppEnvironment::calendarChanged, this, [this] {
        if (!entries_.empty()) emit dataChanged(index(0), index(rowCount() - 1));
    });
}

void NoteListModel::show(const NoteScope& scope) {
    beginResetModel();
    scope_ = scope;
    summaries_.forget();
    const bool hasBeginning = scope.hasBeginning();
    entries_ = hasBeginning ? read(scope, summaries_.context(), beginning) : Entries{};
    isComplete_ = hasBeginning && entries_.size() < beginning;
    endResetModel();
    ++reading_;
    if (isComplete_) {
        emit completed();
    } else {
        readRest();
    }
}

NoteListModel::Entry NoteListModel::entryOf(const ListedRow& row, const NoteScope& scope) {
    Entry entry{
        .id = row.get(&CDNote::id).value_or(Uuid{}),
        .date = row.get(scope.date()).value_or(Instant{})};
    if (scope.isByTitle()) entry.title = row.get(&CDNote::title).value_or("");
    return entry;
}

bool NoteListModel::Order::operator()(const Entry& one, const Entry& other) const {
    if (scope.isByTitle()) {
        const int order = collator.compare(one.title, other.title);
        if (order != 0) return order < 0;
    }
    return ByDate{scope}(one, other);
}

bool NoteListModel::ByDate::operator()(const Entry& one, const Entry& other) const {
    if (one.date != other.date) return (one.date < other.date) == scope.isAscending();
    return one.id < other.id;
}

NoteListModel::Order NoteListModel::order() const { return {scope_, environment_.collator()}; }

NoteListModel::Entries NoteListModel::read(
    const NoteScope& scope, StoreContext& context, std::size_t limit) {
    Entries entries;
    auto request = scope.request(context);
    if (!request) return entries;
    const bool isOrdered = !request->sort.empty();
    if (isOrdered) request->limit = limit;
    context.visitRows<CDNote>(
        *request, [&](const ListedRow& row) { entries.push_back(entryOf(row, scope)); });
    if (!isOrdered) std::ranges::sort(entries, ByDate{scope});
    return entries;
}

void NoteListModel::readRest() {
    auto entries = std::make_shared<Entries>();  // of the worker, then of the main thread
    environment_.inBackground(
        [scope = scope_, entries, &collator = environment_.collator()](
            StoreContext& context, const std::stop_token&) {
            *entries = read(scope, context);
            entries->shrink_to_fit();  // it lives as long as the list
            if (scope.isByTitle()) std::ranges::sort(*entries, Order{scope, collator});
        },
        this,
        [this, entries, reading = reading_] {
            inTurn_.run([this, entries, reading] {
                if (reading == reading_) take(std::move(*entries));
            });
        });
}

void NoteListModel::take(Entries entries) {
    isComplete_ = true;
    const bool goesOn = entries.size() >= entries_.size()
                        && std::equal(entries_.begin(), entries_.end(), entries.begin());
    if (!goesOn) {
        beginResetModel();
        entries_ = std::move(entries);
        endResetModel();
    } else if (entries.size() > entries_.size()) {
        beginInsertRows({}, rowCount(), static_cast<int>(entries.size()) - 1);
        entries_ = std::move(entries);
        endInsertRows();
    }
    emit completed();
}

void NoteListModel::follow(const std::vector<ObjectChange>& changes) {
    inTurn_.run([this, changes] { takeChanges(changes); });
}

void NoteListModel::takeChanges(const std::vector<ObjectChange>& changes) {
    summaries_.forget();
    std::set<Uuid> notes;
    bool isPlaceGone = false;
    for (const ObjectChange& change : changes) {
        if (!change.uuid) continue;
        if (change.entity == EntityKind::note) notes.insert(*change.uuid);
        isPlaceGone |= change.kind == ChangeKind::deleted && *change.uuid == scope_.place().id;
    }
    if (isPlaceGone || notes.size() > mostSingleChanges || (!isComplete_ && !notes.empty())) {
        ++reading_;
        isComplete_ = false;
        readRest();
        return;
    }
    for (const Uuid& note : notes) {
        update(note);
    }
    // Names of tags, attachments: what any line shows may have changed.
    if (!entries_.empty()) emit dataChanged(index(0), index(rowCount() - 1));
}

void NoteListModel::update(const Uuid& note) {
    const std::ptrdiff_t from = rowOf(note);
    const auto entry = present(note);
    if (from < 0 && entry) {
        const auto to = placeOf(*entry, std::ssize(entries_));
        beginInsertRows({}, static_cast<int>(to), static_cast<int>(to));
        entries_.insert(entries_.begin() + to, *entry);
        endInsertRows();
    } else if (from >= 0 && !entry) {
        beginRemoveRows({}, static_cast<int>(from), static_cast<int>(from));
        entries_.erase(entries_.begin() + from);
        endRemoveRows();
    } else if (from >= 0) {
        move(from, placeOf(*entry, from));
        entries_[static_cast<std::size_t>(rowOf(note))] = *entry;
    }
}

/// Takes the line out and puts it where it is the line `to` of all.
void NoteListModel::move(std::ptrdiff_t from, std::ptrdiff_t to) {
    if (from == to) return;
    const auto before = to > from ? to + 1 : to;  // as models count: with the line in its old place
    beginMoveRows({}, static_cast<int>(from), static_cast<int>(from), {}, static_cast<int>(before));
    const auto first = entries_.begin();
    if (to > from) {
        std::rotate(first + from, first + from + 1, first + to + 1);
    } else {
        std::rotate(first + to, first + from, first + from + 1);
    }
    endMoveRows();
}

/// Where the entry goes among the entries other than that at `from`.
std::ptrdiff_t NoteListModel::placeOf(const Entry& entry, std::ptrdiff_t from) const {
    const auto first = entries_.begin();
    const auto left = std::lower_bound(first, first + from, entry, order());
    if (left != first + from || from == std::ssize(entries_)) return left - first;
    return std::lower_bound(first + from + 1, entries_.end(), entry, order()) - first - 1;
}

/// The note's entry as the library has it now; none when it does not belong here.
std::optional<NoteListModel::Entry> NoteListModel::present(const Uuid& note) const {
    std::optional<Entry> entry;
    StoreContext& context = summaries_.context();
    const auto request = scope_.requestFor(note, context);
    if (!request) return entry;
    context.visitRows<CDNote>(
        *request, [&](const ListedRow& row) { entry = entryOf(row, scope_); });
    return entry;
}

int NoteListModel::rowOf(const Uuid& note) const {
    const auto found = std::ranges::find(entries_, note, &Entry::id);
    if (found == entries_.end()) return -1;
    return static_cast<int>(std::distance(entries_.begin(), found));
}

std::optional<Instant> NoteListModel::date(int row) const {
    const Instant date = entries_[static_cast<std::size_t>(row)].date;
    return date == Instant{} ? std::nullopt : std::optional(date);
}

int NoteListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(entries_.size());
}

QVariant NoteListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    if (role == Qt::DisplayRole) return shownTitle(summary(index.row()));
    if (role == Qt::AccessibleTextRole) {
        const NoteSummary& note = summary(index.row());
        QString name = shownTitle(note);
        if (const auto day = date(index.row())) {
            name += ", " + shownDate(*day, environment_.now(), environment_.calendar());
        }
        return QString("%1. %2").arg(name, note.snippet);
    }
    return {};
}

Qt::ItemFlags NoteListModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return {};
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled
           | Qt::ItemNeverHasChildren;
}

QStringList NoteListModel::mimeTypes() const { return {notesMimeType}; }

QMimeData* NoteListModel::mimeData(const QModelIndexList& indexes) const {
    QByteArray ids;
    QString titles;
    for (const QModelIndex& index : indexes) {
        const std::string id = noteAt(index.row()).text();
        ids += QByteArray::fromStdString(id + "\n");
        titles += shownTitle(summary(index.row())) + "\n";
    }
    auto* data = new QMimeData;
    data->setData(notesMimeType, ids);
    data->setText(titles);
    return data;
}

std::vector<Uuid> draggedNotes(const QMimeData& data) {
    std::vector<Uuid> notes;
    for (const QByteArray& line : data.data(notesMimeType).split('\n')) {
        if (const auto id = Uuid::parse(line.toStdString())) notes.push_back(*id);
    }
    return notes;
}

}  // namespace tesserine::app
