#include "app/state/Place.h"

#include "base/Product.h"

#include <QByteArray>

#include <algorithm>
#include <array>
#include <string_view>

namespace tesserine::app {
namespace {

enum class Rest { nothing, id, text, textIfAny };

struct Word {
    Place::Kind kind;
    std::string_view word;
    Rest rest = Rest::nothing;
};

using Kind = Place::Kind;
constexpr std::array words = {
    Word{Kind::allNotes, "notes"},
    Word{Kind::pinned, "pinned"},
    Word{Kind::reminders, "reminders"},
    Word{Kind::templates, "templates"},
    Word{Kind::notebook, "notebook", Rest::id},
    Word{Kind::tag, "tag", Rest::id},
    Word{Kind::savedSearch, "saved-search", Rest::id},
    Word{Kind::note, "note", Rest::id},
    Word{Kind::inbox, "inbox"},
    Word{Kind::today, "today"},
    Word{Kind::upcoming, "upcoming"},
    Word{Kind::allTasks, "tasks"},
    Word{Kind::completed, "completed"},
    Word{Kind::calendar, "calendar"},
    Word{Kind::project, "project", Rest::id},
    Word{Kind::label, "label", Rest::id},
    Word{Kind::task, "task", Rest::id},
    Word{Kind::taskTemplates, "task-templates"},
    Word{Kind::trash, "trash"},
    Word{Kind::search, "search", Rest::text},
    Word{Kind::settings, "settings", Rest::textIfAny},
    Word{Kind::welcome, "welcome"},
};

std::string beginning() { return std::string(product::urlScheme) + "://"; }

}  // namespace

std::optional<Place> Place::fromAddress(const std::string& address) {
    std::string_view rest = address;
    const std::string scheme = beginning();
    if (rest.starts_with(scheme)) rest.remove_prefix(scheme.size());

    const std::size_t slash = std::min(rest.find('/'), rest.size());
    const auto* const word = std::ranges::find(words, rest.substr(0, slash), &Word::word);
    if (word == words.end()) return std::nullopt;

    Place place{.kind = word->kind};
    const std::string_view behind = rest.substr(std::min(slash + 1, rest.size()));
    if (word->rest == Rest::id) {
        const auto id = Uuid::parse(behind);
        if (!id) return std::nullopt;
        place.id = *id;
    } else if (word->rest != Rest::nothing) {
        const QByteArray encoded(behind.data(), static_cast<qsizetype>(behind.size()));
        place.text = QByteArray::fromPercentEncoding(encoded).toStdString();
    } else if (!behind.empty()) {
        return std::nullopt;
    }
    return place;
}

std::string Place::address() const {
    const auto* const word = std::ranges::find(words, kind, &Word::kind);
    std::string address = beginning() + std::string(word->word);
    if (word->rest == Rest::id) address += "/" + id.text();
    if (word->rest == Rest::text || (word->rest == Rest::textIfAny && !text.empty())) {
        address += "/" + QByteArray::fromStdString(text).toPercentEncoding().toStdString();
    }
    return address;
}

}  // namespace tesserine::app
