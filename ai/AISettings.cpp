#include "ai/AISettings.h"

#include "base/JSON.h"
#include "base/Preferences.h"

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include <array>
#include <optional>
#include <utility>

namespace tesserine {
namespace {

using boost::json::object;
using boost::json::value;

struct BackendRow {
    AISettings::Backend backend;
    std::string_view word;
    std::string_view displayName;
    std::string_view explanation;
};
constexpr std::array<BackendRow, 2> backends{{
    {AISettings::Backend::relay,
     "relay",
     "Tesserine AI",
     "Questions go to Tesserine's server, which forwards them to xAI. Tesserine does not store "
     "your note text."},
    {AISettings::Backend::ownKey,
     "ownKey",
     "My own xAI API key",
     "Questions go straight from this device to xAI using your key. Your key is kept in the "
     "Keychain and never leaves the device."},
}};
static_assert(backends[0].backend == AISettings::Backend{0});
static_assert(backends[1].backend == AISettings::Backend{1});

const BackendRow& row(AISettings::Backend backend) {
    return backends.at(static_cast<std::size_t>(backend));
}

void take(const object& from, std::string_view key, bool& into) {
    const value* const found = from.if_contains({key.data(), key.size()});
    if (found != nullptr && found->is_bool()) into = found->get_bool();
}

void take(const object& from, std::string_view key, std::string& into) {
    const value* const found = from.if_contains({key.data(), key.size()});
    if (found != nullptr && found->is_string()) into = std::string(found->get_string());
}

std::optional<object> readable(std::string_view text) {
    try {
        value parsed = json::parse(text);
        if (parsed.is_object()) return std::move(parsed.get_object());
    } catch (const json::JSONError&) {
        // Settings that cannot be read are none.
    }
    return std::nullopt;
}

}  // namespace

AISettings AISettings::parse(std::string_view json) {
    AISettings settings;
    const auto stored = readable(json);
    if (!stored) return settings;
    const object& found = *stored;
    take(found, "isEnabled", settings.isEnabled);
    take(found, "model", settings.model);
    take(found, "allowWebSearch", settings.allowWebSearch);
    take(found, "hasSeenDataNotice", settings.hasSeenDataNotice);
    take(found, "relayBaseURL", settings.relayBaseURL);
    std::string word;
    take(found, "backend", word);
    for (const BackendRow& known : backends) {
        if (known.word == word) settings.backend = known.backend;
    }
    return settings;
}

std::string AISettings::json() const {
    return json::write(object{
        {"isEnabled", isEnabled},
        {"backend", row(backend).word},
        {"model", model},
        {"allowWebSearch", allowWebSearch},
        {"hasSeenDataNotice", hasSeenDataNotice},
        {"relayBaseURL", relayBaseURL}});
}

AISettings AISettings::load(const Preferences& preferences) {
    return parse(preferences.string(preferencesKey).value_or(""));
}

void AISettings::save(Preferences& preferences) const {
    const auto before = preferences.string(preferencesKey);
    if (before && !readable(*before)) preferences.set(unreadableKey, *before);
    preferences.set(preferencesKey, json());
}

std::string_view displayName(AISettings::Backend backend) { return row(backend).displayName; }

std::string_view explanation(AISettings::Backend backend) { return row(backend).explanation; }

}  // namespace tesserine
