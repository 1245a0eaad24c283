#include "app/lists/SidebarModel.h"

#include "app/lists/PlaceWords.h"
#include "app/look/Icon.h"
#include "app/state/AppEnvironment.h"

#include <QTimer>

#include <algorithm>
#include <chrono>
#include <memory>
#include <vector>

namespace tesserine::app {
namespace {

using Kind = Place::Kind;
using namespace std::chrono_literals;

/// Changes that follow each other are counted together.
constexpr auto countingDelay = 150ms;

/// Whether a change may add, rename, move or remove a line.
bool concernsPlaces(const ObjectChange& change) {
    switch (change.entity) {
    case EntityKind::notebook:
    case EntityKind::tag:
    case EntityKind::savedSearch:
    case EntityKind::project: return true;
    default: return false;
    }
}

bool canBeRenamed(Kind kind) {
    switch (kind) {
    case Kind::notebook:
    case Kind::tag:
    case Kind::label:
    case Kind::savedSearch:
    case Kind::project: return true;
    default: return false;
    }
}

std::vector<std::string> labelsIn(const PlaceCounts& counts) {
    std::vector<std::string> labels;
    for (const auto& [address, count] : counts) {
        if (Place::fromAddress(address)->kind == Kind::label) labels.push_back(address);
    }
    return labels;
}

}  // namespace

SidebarModel::SidebarModel(AppEnvironment& environment, QObject* parent)
    : QStandardItemModel(parent), environment_(environment) {
    auto* delay = new QTimer(this);
    delay->setSingleShot(true);
    delay->setInterval(countingDelay);
    connect(delay, &QTimer::timeout, this, &SidebarModel::count);
    connect(&environment, &AppEnvironment::calendarChanged, delay, qOverload<>(&QTimer::start));
    connect(
        &environment,
        &AppEnvironment::libraryChanged,
        this,
        [this, delay](const std::vector<ObjectChange>& changes) {
            if (std::ranges::any_of(changes, concernsPlaces)) rebuild();
            if (!delay->isActive()) delay->start();
        });
    rebuild();
    delay->start();
}

std::optional<Place> SidebarModel::placeAt(const QModelIndex& index) {
    return Place::fromAddress(index.data(addressRole).toString().toStdString());
}

QModelIndex SidebarModel::indexOf(const Place& place) const {
    const auto found = match(
        index(0, 0),
        addressRole,
        QString::fromStdString(place.address()),
        1,
        Qt::MatchExactly | Qt::MatchRecursive);
    return found.isEmpty() ? QModelIndex() : found.front();
}

bool SidebarModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::EditRole) return QStandardItemModel::setData(index, value, role);
    const auto place = placeAt(index);
    const QString name = value.toString().trimmed();
    if (!place || name.isEmpty() || name == index.data().toString()) return false;
    emit renamed(*place, name);
    return true;  // the library tells the new name, if it was taken
}

void SidebarModel::rebuild() {
    emit aboutToRebuild();
    clear();
    addNotes();
    addTasks();
    add(*invisibleRootItem(), {Kind::trash}, "Trash");
    takeCounts(counts_);
    emit rebuilt();
}

void SidebarModel::addNotes() {
    StoreContext& context = environment_.context();
    QStandardItem& notes = addGroup("Notes");
    for (const Kind kind : {Kind::allNotes, Kind::pinned, Kind::reminders, Kind::templates}) {
        add(notes, {kind}, titleOf({kind}, context));
    }
    addTree(
        addGroup("Notebooks"),
        Kind::notebook,
        environment_.notebooks().tree(context, environment_.collator()));
    const auto tags = environment_.tags().tree(context, environment_.collator());
    if (!tags.empty()) addTree(addGroup("Tags"), Kind::tag, tags);
    const auto searches = environment_.savedSearches().list(context);
    if (searches.empty()) return;
    QStandardItem& group = addGroup("Saved Searches");
    for (const CDSavedSearch* search : searches) {
        add(group, {Kind::savedSearch, *search->id}, QString::fromStdString(*search->name));
    }
}

void SidebarModel::addTasks() {
    StoreContext& context = environment_.context();
    QStandardItem& tasks = addGroup("Tasks");
    for (const Kind kind :
         {Kind::inbox,
          Kind::today,
          Kind::upcoming,
          Kind::allTasks,
          Kind::completed,
          Kind::calendar,
          Kind::taskTemplates}) {
        add(tasks, {kind}, titleOf({kind}, context));
    }
    QStandardItem& projects = addGroup("Projects");
    for (const CDProject* project : environment_.projects().all(context)) {
        if (project->isInbox) continue;
        add(projects, {Kind::project, *project->id}, QString::fromStdString(*project->name));
    }
    if (!labelsIn(counts_).empty()) addLabels(addGroup("Labels"));
}

/// Labels are tags that open tasks carry.
void SidebarModel::addLabels(QStandardItem& group) {
    for (const CDTag* tag :
         environment_.tags().all(environment_.context(), environment_.collator())) {
        const Place place{Kind::label, *tag->id};
        if (!counts_.contains(place.address())) continue;
        add(group, place, QString::fromStdString(tag->name.valueOr("")));
    }
}

template <class Row>
void SidebarModel::addTree(QStandardItem& group, Kind kind, const std::vector<Row>& rows) {
    std::vector<QStandardItem*> parents{&group};  // by depth
    for (const Row& row : rows) {
        parents.resize(row.depth + 1);
        QStandardItem& item =
            add(*parents.back(),
                {kind, *row.object->id},
                QString::fromStdString(row.object->name.valueOr("")));
        parents.push_back(&item);
    }
}

QStandardItem& SidebarModel::addGroup(const QString& title) {
    auto* item = new QStandardItem(title);
    item->setFlags(Qt::ItemIsEnabled);
    appendRow(item);
    return *item;
}

QStandardItem& SidebarModel::add(QStandardItem& parent, const Place& place, const QString& name) {
    auto* item = new QStandardItem(icon(iconOf(place.kind), Ink::secondary), name);
    item->setData(QString::fromStdString(place.address()), addressRole);
    item->setData(iconOf(place.kind), iconNameRole);
    item->setToolTip(name);
    item->setEditable(canBeRenamed(place.kind));
    item->setDragEnabled(place.kind == Kind::notebook || place.kind == Kind::tag);
    parent.appendRow(item);
    return *item;
}

void SidebarModel::count() {
    isStale_ = isCounting_;
    if (isCounting_) return;
    isCounting_ = true;
    auto counts = std::make_shared<PlaceCounts>();  // of the worker, then of the main thread
    const auto finish = [this] {
        isCounting_ = false;
        if (isStale_) count();
    };
    environment_.inBackground(
        [counts, &clock = environment_.clock(), calendar = environment_.calendar()](
            StoreContext& context, const std::stop_token&) {
            *counts = countPlaces(context, clock, calendar);
        },
        this,
        [this, counts, finish] {
            const auto before = std::exchange(counts_, std::move(*counts));
            labelsIn(before) != labelsIn(counts_) ? rebuild() : takeCounts(counts_);
            finish();
        },
        [finish](const std::string&) { finish(); });
}

void SidebarModel::takeCounts(const PlaceCounts& counts) {
    std::vector<QStandardItem*> open{invisibleRootItem()};
    while (!open.empty()) {
        QStandardItem* item = open.back();
        open.pop_back();
        for (int row = 0; row < item->rowCount(); ++row) {
            open.push_back(item->child(row));
        }
        const auto found = counts.find(item->data(addressRole).toString().toStdString());
        const qulonglong count = found == counts.end() ? 0 : found->second;
        if (item->data(countRole).toULongLong() != count) item->setData(count, countRole);
    }
}

}  // namespace tesserine::app
