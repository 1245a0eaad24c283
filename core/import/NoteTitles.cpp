#include "core/import/NoteTitles.h"

#include "base/Text.h"

namespace tesserine {
namespace {

std::string keyOf(std::string_view title) {
    return text::caseFolded(text::composed(text::collapsed(title)));
}

}  // namespace

void NoteTitles::add(std::size_t note, std::string_view title) {
    const auto [entry, isNew] = notes_.emplace(keyOf(title), note);
    if (!isNew) entry->second.reset();
}

std::optional<std::size_t> NoteTitles::find(std::string_view title) const {
    const auto found = notes_.find(keyOf(title));
    return found == notes_.end() ? std::nullopt : found->second;
}

}  // namespace tesserine
