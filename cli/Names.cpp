#include "cli/Names.h"

#include "cli/DisplayText.h"
#include "cli/Session.h"
#include "core/body/PlainText.h"
#include "core/import/ImportReports.h"
#include "core/model/BookkeepingEntities.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>

namespace tesserine::cli {

namespace {

constexpr std::size_t uuidLength = 36;
constexpr std::size_t fewestDigits = 4;
constexpr std::size_t candidatesShown = 20;

bool isHyphenPlace(std::size_t index) {
    return index == 8 || index == 13 || index == 18 || index == 23;
}

/// The objects whose identifier is `name` or begins with it.
template <class Entity>
std::vector<Entity*> withID(StoreContext& context, const std::string& name) {
    if (const auto id = Uuid::parse(name)) {
        auto* found = context.find<Entity>(*id);
        return found == nullptr ? std::vector<Entity*>{} : std::vector<Entity*>{found};
    }
    const auto range = idsBeginningWith(name);
    if (!range) return {};
    return context.fetch<Entity>(
        {.predicate = {"id >= %@ AND id <= %@", range->first, range->second},
         .limit = candidatesShown + 1});
}

template <class Entity>
void addNew(std::vector<Entity*>& objects, const std::vector<Entity*>& more) {
    for (Entity* object : more) {
        if (std::ranges::find(objects, object) == objects.end()) objects.push_back(object);
    }
}

/// The objects that `name` may mean: by identifier, and by the predicate unless it is a whole UUID.
template <class Entity>
std::vector<Entity*> meant(Session& session, const std::string& name, const Predicate& named) {
    StoreContext& context = session.context();
    auto found = withID<Entity>(context, name);
    if (Uuid::parse(name)) return found;
    addNew(found, context.fetch<Entity>({.predicate = named, .limit = candidatesShown + 1}));
    return found;
}

/// The single object of `found`. `kind` completes "The … “X” could not be found.".
template <class Entity, class Describe>
Entity& single(
    const std::vector<Entity*>& found,
    const std::string& kind,
    const std::string& name,
    Describe describe) {
    if (found.empty()) throw StoreError::notFound("The " + kind + " “" + name + "”");
    if (found.size() == 1) return *found.front();
    std::vector<std::string> lines;
    for (const Entity* candidate : found) {
        const auto id = candidate->id.get();
        lines.push_back(
            (id ? id->text() : std::string("-")) + "  " + oneLine(describe(*candidate)));
    }
    throw AmbiguousName::of(name, lines);
}

bool isIn(NoteScope scope, const CDNote& note) {
    switch (scope) {
    case NoteScope::live: return !note.trashedAt;
    case NoteScope::trash: return note.trashedAt.get().has_value();
    case NoteScope::templates: return note.isTemplate && !note.trashedAt;
    }
    return false;
}

std::string describeNote(const CDNote& note) {
    std::string text = displayTitle(note);
    if (note.isTemplate) text += " (template)";
    if (note.trashedAt) text += " (in the trash)";
    return text;
}

template <class Entity>
std::string nameOf(const Entity& object) {
    return object.name.valueOr("");
}

/// Notebooks of one path, which sync or a move can bring about; the oldest stands first.
bool areTwins(const std::vector<CDNotebook*>& found) {
    return !found.empty() && std::ranges::all_of(found, [&](const CDNotebook* notebook) {
        return text::caseFolded(NotebookService::pathText(*notebook))
               == text::caseFolded(NotebookService::pathText(*found.front()));
    });
}

}  // namespace

AmbiguousName AmbiguousName::of(
    const std::string& name, const std::vector<std::string>& candidates) {
    std::string text = "“" + name + "” fits several things; name one of them by its id:";
    for (std::size_t i = 0; i < std::min(candidates.size(), candidatesShown); ++i) {
        text += "\n  " + candidates[i];
    }
    if (candidates.size() > candidatesShown) text += "\n  …";
    return AmbiguousName(text);
}

std::optional<std::pair<Uuid, Uuid>> idsBeginningWith(std::string_view text) {
    if (text.size() > uuidLength) return std::nullopt;
    std::array<std::uint8_t, Uuid::byteCount> least{};
    std::array<std::uint8_t, Uuid::byteCount> greatest{};
    greatest.fill(0xFF);

    std::size_t digits = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isHyphenPlace(i)) {
            if (text[i] != '-') return std::nullopt;
            continue;
        }
        std::uint8_t digit = 0;
        const auto read = std::from_chars(&text[i], &text[i] + 1, digit, 16);
        if (read.ec != std::errc{} || read.ptr == &text[i]) return std::nullopt;
        const std::size_t place = digits / 2;
        const int shift = digits % 2 == 0 ? 4 : 0;
        const int mask = 0xF << shift;
        least[place] = static_cast<std::uint8_t>((least[place] & ~mask) | digit << shift);
        greatest[place] = static_cast<std::uint8_t>((greatest[place] & ~mask) | digit << shift);
        ++digits;
    }
    if (digits < fewestDigits) return std::nullopt;
    return std::pair(Uuid(least), Uuid(greatest));
}

CDNote& resolveNote(Session& session, const std::string& name, NoteScope scope) {
    auto found = meant<CDNote>(session, name, {"title == %@", name});
    if (scope == NoteScope::templates) {
        std::erase_if(found, [](const CDNote* note) { return !note->isTemplate; });
        return single(found, "template", name, describeNote);
    }
    std::vector<CDNote*> preferred;
    std::ranges::copy_if(found, std::back_inserter(preferred), [&](const CDNote* note) {
        return isIn(scope, *note);
    });
    return single(preferred.size() == 1 ? preferred : found, "note", name, describeNote);
}

CDNotebook& resolveNotebook(Session& session, const std::string& name) {
    auto found = withID<CDNotebook>(session.context(), name);
    if (!Uuid::parse(name)) addNew(found, session.notebooks().named(session.context(), name));
    return single(found, "notebook", name, NotebookService::pathText);
}

CDTag& resolveTag(Session& session, const std::string& name) {
    const std::string trimmed(text::trimmed(name));
    return single(
        meant<CDTag>(session, trimmed, {"name ==[c] %@", trimmed}), "tag", name, nameOf<CDTag>);
}

CDSavedSearch& resolveSavedSearch(Session& session, const std::string& name) {
    return single(
        meant<CDSavedSearch>(session, name, {"name ==[c] %@", name}),
        "saved search",
        name,
        nameOf<CDSavedSearch>);
}

CDTask& resolveTask(Session& session, const std::string& name, TaskScope scope) {
    const auto found = meant<CDTask>(session, name, {"title == %@", name});
    std::vector<CDTask*> preferred;
    std::ranges::copy_if(found, std::back_inserter(preferred), [&](const CDTask* task) {
        return task->completedAt.get().has_value() == (scope == TaskScope::completed);
    });
    return single(preferred.empty() ? found : preferred, "task", name, [&](const CDTask& task) {
        std::string text = task.title.valueOr("");
        if (task.parent != nullptr) text += " (part of “" + task.parent->title.valueOr("") + "”)";
        if (task.completedAt) text += " (completed " + session.localTime(*task.completedAt) + ")";
        return text;
    });
}

CDProject& resolveProject(Session& session, const std::string& name) {
    const std::string trimmed(text::trimmed(name));
    return single(
        meant<CDProject>(session, trimmed, {"name ==[c] %@", trimmed}),
        "project",
        name,
        nameOf<CDProject>);
}

CDProject& projectToChange(Session& session, const std::string& name) {
    CDProject* known = session.tasks().projects().find(session.context(), name);
    return known != nullptr ? *known : resolveProject(session, name);
}

CDTaskTemplate& resolveTaskTemplate(Session& session, const std::string& name) {
    return single(
        meant<CDTaskTemplate>(session, name, {"name ==[c] %@", name}),
        "task template",
        name,
        nameOf<CDTaskTemplate>);
}

CDAttachment& resolveAttachment(Session& session, const std::string& name) {
    return single(
        meant<CDAttachment>(session, name, {"filename == %@", name}),
        "attachment",
        name,
        [](const CDAttachment& attachment) {
            std::string text = attachment.filename.valueOr("");
            if (attachment.note != nullptr) {
                text += " (in “" + displayTitle(*attachment.note) + "”)";
            }
            return text;
        });
}

CDImportReport& resolveImport(Session& session, const std::string& name) {
    auto found = meant<CDImportReport>(session, name, {"title == %@", name});
    // A running import has further rows, which are none for people.
    const auto listed = ImportReports(session.clock()).list(session.context());
    std::erase_if(found, [&](CDImportReport* report) {
        return std::ranges::find(listed, report) == listed.end();
    });
    return single(found, "import", name, [](const CDImportReport& report) {
        return report.title.valueOr("");
    });
}

CDNoteRevision& resolveRevision(Session& session, CDNote& note, const std::string& name) {
    const auto revisions = session.notes().revisions(note);
    std::size_t place = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), place);
    const bool isPlace = error == std::errc{} && end == name.data() + name.size()
                         && name.size() < fewestDigits && place > 0;
    if (isPlace && place <= revisions.size()) return *revisions[place - 1];

    auto found = withID<CDNoteRevision>(session.context(), name);
    std::erase_if(found, [&](const CDNoteRevision* revision) { return revision->note != &note; });
    return single(found, "revision", name, [&](const CDNoteRevision& revision) {
        const auto when = revision.createdAt.get();
        return when ? session.localTime(*when) : std::string();
    });
}

CDNotebook& notebookToFill(Session& session, const std::string& name) {
    session.holdNames();
    StoreContext& context = session.context();
    auto found = withID<CDNotebook>(context, name);
    if (Uuid::parse(name)) return single(found, "notebook", name, NotebookService::pathText);
    addNew(found, session.notebooks().named(context, name));
    if (areTwins(found)) return *found.front();
    if (!found.empty()) return single(found, "notebook", name, NotebookService::pathText);

    const auto names = pathNames(name);
    if (names.empty()) throw UsageError::because("A notebook needs a name.");
    return *session.notebooks().findOrCreatePath(context, names);
}

std::vector<std::string> pathNames(std::string_view path) {
    std::vector<std::string> names;
    while (true) {
        const std::size_t slash = path.find('/');
        const std::string_view name = text::trimmed(path.substr(0, slash));
        if (!name.empty()) names.emplace_back(name);
        if (slash == std::string_view::npos) return names;
        path.remove_prefix(slash + 1);
    }
}

CDTag& tagToUse(Session& session, const std::string& name) {
    session.holdNames();
    StoreContext& context = session.context();
    if (CDTag* known = session.tags().find(context, name)) return *known;
    const auto found = withID<CDTag>(context, name);
    if (Uuid::parse(name) || !found.empty()) return single(found, "tag", name, nameOf<CDTag>);
    CDTag* made = session.tags().findOrCreate(context, name);
    if (made == nullptr) throw UsageError::because("A tag needs a name.");
    return *made;
}

std::string displayTitle(const CDNote& note) {
    const std::string title = note.title.valueOr("");
    // The text is large: it is only read where the title does not do.
    return tesserine::displayTitle(title, text::isBlank(title) ? note.plainText.valueOr("") : "");
}

std::string shortID(const std::optional<Uuid>& id) { return id ? id->text().substr(0, 8) : "-"; }

}  // namespace tesserine::cli
