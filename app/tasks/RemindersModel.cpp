#include "app/tasks/RemindersModel.h"

#include "app/state/AppEnvironment.h"
#include "app/tasks/TaskRow.h"
#include "app/tasks/TaskWords.h"
#include "core/body/PlainText.h"

#include <algorithm>
#include <utility>

namespace tesserine::app {
namespace {

using RowKind = ReminderRow::Kind;

constexpr const char* openTask = "completedAt == nil AND reminderAt != nil AND reminderAt ";
constexpr const char* liveNote =
    "trashedAt == nil AND isTemplate == NO AND reminderAt != nil AND reminderAt ";

QString textOf(const std::optional<std::string>& text) {
    return QString::fromStdString(text.value_or(""));
}

ReminderRow rowOf(const CDTask& task) {
    const CDProject* const project = task.project;
    return {
        .kind = RowKind::task,
        .title = shownTitle(textOf(task.title)),
        .at = *task.reminderAt,
        .owner = task.id.valueOr({}),
        .place = project == nullptr ? QString() : textOf(project->name)};
}

ReminderRow rowOf(const CDNote& note) {
    const std::string title = note.title.valueOr("");
    // The text is read for a note without a title only.
    const std::string shown = displayTitle(title, title.empty() ? note.plainText.valueOr("") : "");
    const CDNotebook* const notebook = note.notebook;
    return {
        .kind = RowKind::note,
        .title = QString::fromStdString(shown),
        .at = *note.reminderAt,
        .owner = note.id.valueOr({}),
        .place = notebook == nullptr ? QString() : textOf(notebook->name)};
}

}  // namespace

RemindersModel::RemindersModel(AppEnvironment& environment, QObject* parent)
    : QAbstractListModel(parent), environment_(environment) {}

std::vector<ReminderRow> RemindersModel::read(When when) const {
    const bool isPast = when == When::past;
    const char* const side = isPast ? "< %@" : ">= %@";
    const auto order =
        isPast ? SortDescriptor::Order::descending : SortDescriptor::Order::ascending;
    std::vector<ReminderRow> rows;
    const auto add = [&]<class Entity>(const char* condition, Entity* /*of*/) {
        const FetchRequest request{
            .predicate = {std::string(condition) + side, environment_.now()},
            .sort = {{"reminderAt", order}},
            .limit = isPast ? mostPast : mostComing};
        for (const Entity* owner : environment_.context().fetch<Entity>(request)) {
            rows.push_back(rowOf(*owner));
            rows.back().isPast = isPast;
        }
    };
    add(openTask, static_cast<CDTask*>(nullptr));
    add(liveNote, static_cast<CDNote*>(nullptr));
    std::ranges::stable_sort(rows, [&](const ReminderRow& a, const ReminderRow& b) {
        return isPast ? b.at < a.at : a.at < b.at;
    });
    return rows;
}

void RemindersModel::reload() {
    const TaskWords words(environment_.now(), environment_.calendar());
    std::vector<ReminderRow> rows = read(When::past);
    if (!rows.empty()) rows.insert(rows.begin(), {.title = "Past", .isPast = true});
    QString day;
    for (ReminderRow& row : read(When::coming)) {
        const QString own = words.day(row.at);
        if (own != day) rows.push_back({.title = own});
        day = own;
        rows.push_back(std::move(row));
    }
    if (rows == rows_) return;
    beginResetModel();
    rows_ = std::move(rows);
    endResetModel();
}

int RemindersModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant RemindersModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const ReminderRow& shown = row(index.row());
    if (role == Qt::DisplayRole) return shown.title;
    if (role != Qt::AccessibleTextRole || shown.kind == RowKind::heading) return {};
    const TaskWords words(environment_.now(), environment_.calendar());
    return QString("%1, %2, %3")
        .arg(
            shown.kind == RowKind::task ? "Task" : "Note",
            shown.title,
            words.longDue({.date = shown.at, .hasTime = true}));
}

Qt::ItemFlags RemindersModel::flags(const QModelIndex& index) const {
    if (!index.isValid() || row(index.row()).kind == RowKind::heading) return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
}

}  // namespace tesserine::app
