#include "app/pages/WelcomeLibrary.h"

#include "app/pages/WelcomeTexts.h"
#include "app/state/AppEnvironment.h"
#include "app/state/Place.h"
#include "core/model/NoteEntities.h"

#include <array>
#include <chrono>
#include <iterator>
#include <string>

namespace tesserine::app::welcome {
namespace {

constexpr const char* notebookName = "Welcome";
using Ids = std::array<Uuid, std::size(texts)>;

std::string withAddresses(std::string html, const Ids& ids) {
    for (std::size_t i = 0; i < ids.size(); ++i) {
        const std::string mark = "[[" + std::to_string(i) + "]]";
        const std::string address = Place{.kind = Place::Kind::note, .id = ids[i]}.address();
        for (std::size_t at = html.find(mark); at != std::string::npos; at = html.find(mark)) {
            html.replace(at, mark.size(), address);
        }
    }
    return html;
}

/// A second apart, so that the first one stands at the top of the list.
void makeNotes(AppEnvironment& environment, CDNotebook& notebook, const Ids& ids) {
    for (std::size_t i = 0; i < ids.size(); ++i) {
        CDNote& note = environment.notes().createNote(
            environment.context(),
            {.title = std::string(texts[i].title),
             .html = withAddresses(std::string(texts[i].html), ids),
             .notebook = &notebook,
             .id = ids[i]});
        note.createdAt = note.updatedAt = environment.now() - std::chrono::seconds(i);
    }
}

}  // namespace

Uuid seed(AppEnvironment& environment) {
    StoreContext& context = environment.context();
    Ids ids;
    for (Uuid& id : ids) {
        id = Uuid::random(environment.random());
    }
    makeNotes(environment, environment.notebooks().findOrCreate(context, notebookName), ids);
    for (const std::string_view sentence : tasks) {
        environment.tasks().createFromSentence(context, sentence, environment.calendar());
    }
    environment.notes().seedDefaultTemplates(context);
    context.save();
    return ids.front();
}

void seedTemplates(AppEnvironment& environment) {
    environment.notes().seedDefaultTemplates(environment.context());
    environment.context().save();
}

Uuid note(AppEnvironment& environment) {
    const CDNote* const first = environment.context().fetchFirst<CDNote>(
        {.predicate = {
             "trashedAt == nil AND title == %@ AND notebook.name == %@",
             texts[0].title,
             notebookName}});
    return first ? *first->id : seed(environment);
}

}  // namespace tesserine::app::welcome
