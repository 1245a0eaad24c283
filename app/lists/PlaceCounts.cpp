#include "app/lists/PlaceCounts.h"

#include "app/lists/NoteScope.h"
#include "base/Calendar.h"
#include "core/model/TaskEntities.h"
#include "core/store/StoreContext.h"
#include "core/tasks/TaskService.h"

#include <unordered_map>

namespace tesserine::app {
namespace {

using Kind = Place::Kind;

class Counting {
public:
    explicit Counting(StoreContext& context) : context_(context) {}

    void countNotes() {
        for (const Kind kind : {Kind::allNotes, Kind::pinned, Kind::templates, Kind::trash}) {
            countScope({kind});
        }
        // One pass over the notes instead of a question for each notebook.
        std::unordered_map<std::int64_t, std::size_t> byNotebook;
        context_.visitRows<CDNote>(
            *NoteScope({Kind::allNotes}).request(context_),
            [&](const ListedRow& row) { ++byNotebook[row.key(&CDNote::notebook)]; });
        for (const CDNotebook* notebook : context_.fetch<CDNotebook>()) {
            note({Kind::notebook, *notebook->id}, byNotebook[notebook->key()]);
        }
    }

    /// Those of notes and of tasks stand on one page.
    void countReminders() {
        const Predicate ofTasks{"completedAt == nil AND reminderAt != nil"};
        note(
            {Kind::reminders},
            context_.count<CDNote>(NoteScope({Kind::reminders}).request(context_)->predicate)
                + context_.count<CDTask>(ofTasks));
    }

    void countTags() {
        for (const CDTag* tag : context_.fetch<CDTag>()) {
            countScope({Kind::tag, *tag->id});
        }
    }

    void countTasks(const Clock& clock, const Calendar& calendar) {
        const TaskService tasks(clock);
        const auto count = [&](const Place& place, const TaskView& view) {
            note(place, tasks.count(context_, view, calendar));
        };
        count({Kind::inbox}, TaskView::inbox());
        count({Kind::today}, TaskView::today());
        count({Kind::upcoming}, TaskView::upcoming());
        count({Kind::allTasks}, TaskView::all());
        for (const CDProject* project : tasks.projects().all(context_)) {
            count({Kind::project, *project->id}, TaskView::project(*project->id));
        }
        for (const CDTag* label : context_.fetch<CDTag>()) {
            count({Kind::label, *label->id}, TaskView::label(label->name.valueOr("")));
        }
    }

    PlaceCounts counts{};

private:
    void countScope(const Place& place) {
        const auto request = NoteScope(place).request(context_);
        if (request) note(place, context_.count<CDNote>(request->predicate));
    }
    void note(const Place& place, std::size_t count) {
        if (count > 0) counts[place.address()] = count;
    }

    StoreContext& context_;
};

}  // namespace

PlaceCounts countPlaces(StoreContext& context, const Clock& clock, const Calendar& calendar) {
    Counting counting(context);
    counting.countNotes();
    counting.countReminders();
    counting.countTags();
    counting.countTasks(clock, calendar);
    return std::move(counting.counts);
}

}  // namespace tesserine::app
