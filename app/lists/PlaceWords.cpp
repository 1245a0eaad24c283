#include "app/lists/PlaceWords.h"

#include "core/model/TaskEntities.h"
#include "core/store/StoreContext.h"

namespace tesserine::app {
namespace {

using Kind = Place::Kind;

template <class Entity>
QString nameIn(StoreContext& context, const Uuid& id) {
    const auto* object = context.find<Entity>(id);
    return object == nullptr ? QString() : QString::fromStdString(object->name.valueOr(""));
}

template <class Entity>
QString noteOrTaskIn(StoreContext& context, const Uuid& id) {
    const auto* object = context.find<Entity>(id);
    if (object == nullptr) return {};
    const QString title = QString::fromStdString(object->title.valueOr("")).simplified();
    return title.isEmpty() ? QString("Untitled") : title;
}

}  // namespace

QString titleOf(const Place& place, StoreContext& context) {
    switch (place.kind) {
    case Kind::allNotes: return "All Notes";
    case Kind::pinned: return "Pinned";
    case Kind::reminders: return "Reminders";
    case Kind::templates: return "Templates";
    case Kind::notebook: return nameIn<CDNotebook>(context, place.id);
    case Kind::tag:
    case Kind::label: return nameIn<CDTag>(context, place.id);
    case Kind::savedSearch: return nameIn<CDSavedSearch>(context, place.id);
    case Kind::note: return noteOrTaskIn<CDNote>(context, place.id);
    case Kind::task: return noteOrTaskIn<CDTask>(context, place.id);
    case Kind::inbox: return "Inbox";
    case Kind::today: return "Today";
    case Kind::upcoming: return "Upcoming";
    case Kind::allTasks: return "All Tasks";
    case Kind::completed: return "Completed";
    case Kind::calendar: return "Calendar";
    case Kind::project: return nameIn<CDProject>(context, place.id);
    case Kind::taskTemplates: return "Task Templates";
    case Kind::trash: return "Trash";
    case Kind::search:
        return place.text.empty() ? QString("Search") : QString::fromStdString(place.text);
    case Kind::settings: return "Settings";
    case Kind::welcome: return "Welcome";
    }
    return {};
}

QString iconOf(Kind kind) {
    switch (kind) {
    case Kind::allNotes: return "notes";
    case Kind::pinned: return "pin";
    case Kind::reminders: return "bell";
    case Kind::templates: return "template";
    case Kind::notebook: return "notebook";
    case Kind::tag: return "tag";
    case Kind::savedSearch:
    case Kind::search: return "search";
    case Kind::note: return "note";
    case Kind::inbox: return "inbox";
    case Kind::today: return "today";
    case Kind::upcoming: return "upcoming";
    case Kind::allTasks: return "all-tasks";
    case Kind::completed: return "task-done";
    case Kind::calendar: return "calendar";
    case Kind::project: return "project";
    case Kind::label: return "label";
    case Kind::task: return "task";
    case Kind::taskTemplates: return "template";
    case Kind::trash: return "trash";
    case Kind::settings: return "settings";
    case Kind::welcome: return "help";
    }
    return "note";
}

EmptyState::Content emptyContentOf(Kind kind) {
    const QString icon = iconOf(kind);
    switch (kind) {
    case Kind::pinned:
        return {
            icon,
            "Nothing pinned",
            "Pin the notes you come back to every day, and they wait here for you."};
    case Kind::reminders:
        return {
            icon,
            "No reminders",
            "Open a note and choose a time with the bell. It comes back to you then."};
    case Kind::templates:
        return {
            icon,
            "No templates",
            "A template is a note to start others from: minutes, a packing list, a diary page.",
            "New Template"};
    case Kind::notebook:
        return {
            icon,
            "An empty notebook",
            "Notes you write here stay here. You can also drag notes onto the notebook.",
            "New Note"};
    case Kind::tag:
        return {
            icon,
            "No notes with this tag",
            "Drag notes onto the tag, or type its name in the tags field of a note."};
    case Kind::trash:
        return {
            icon,
            "The trash is empty",
            "Notes you delete wait here until you empty the trash or restore them."};
    default:
        return {
            icon,
            "No notes yet",
            "Write down what is on your mind. It is saved as you type.",
            "New Note"};
    }
}

}  // namespace tesserine::app
