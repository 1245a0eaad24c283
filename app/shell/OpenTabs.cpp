#include "app/shell/OpenTabs.h"

#include <optional>
#include <sstream>
#include <string_view>

namespace tesserine::app {
namespace {

constexpr std::string_view chosenMark = "> ";

std::optional<BodyPlace> bodyPlaceIn(const std::string& word) {
    std::istringstream numbers(word);
    int cursor = 0;
    if (!(numbers >> cursor) || cursor < 0) return std::nullopt;
    BodyPlace place{.anchor = cursor, .position = cursor};
    char comma = 0;
    const bool isScrolled =
        static_cast<bool>(numbers >> comma >> place.top >> comma >> place.topEdge);
    if (isScrolled && place.top >= 0) {
        place.isAtTop = false;
        return place;
    }
    return BodyPlace{.anchor = cursor, .position = cursor};
}

std::string wordFor(const BodyPlace& place) {
    std::string cursor = std::to_string(place.position);
    if (place.isAtTop) return cursor;
    return cursor + "," + std::to_string(place.top) + "," + std::to_string(place.topEdge);
}

/// Addresses hold no space: that of a search writes it as "%20".
void readLine(OpenTabs& tabs, const std::string& line) {
    std::istringstream words(line);
    std::string placeWord;
    std::string noteWord;
    std::string keysWord;
    words >> placeWord >> noteWord >> keysWord;
    const auto place = Place::fromAddress(placeWord);
    if (!place) return;
    Stop stop{.place = *place};
    const auto note = Place::fromAddress(noteWord);
    if (note && note->kind == Place::Kind::note) {
        stop.note = note->id;
        if (const auto keys = bodyPlaceIn(keysWord)) {
            stop.keys = KeyHolder::note;
            tabs.places[note->id] = *keys;
        }
    }
    tabs.stops.push_back(stop);
}

}  // namespace

OpenTabs OpenTabs::read(const std::string& text) {
    OpenTabs tabs;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const bool isChosen = line.starts_with(chosenMark);
        const std::size_t before = tabs.stops.size();
        readLine(tabs, isChosen ? line.substr(chosenMark.size()) : line);
        if (isChosen && tabs.stops.size() > before) tabs.chosen = before;
    }
    return tabs;
}

std::string OpenTabs::text() const {
    std::string text;
    for (std::size_t i = 0; i < stops.size(); ++i) {
        const Stop& stop = stops[i];
        if (i == chosen) text += chosenMark;
        text += stop.place.address();
        if (stop.note) {
            text += " " + Place{Place::Kind::note, *stop.note}.address();
            const auto place = places.find(*stop.note);
            const bool hadKeys = stop.keys == KeyHolder::note;
            if (hadKeys) text += " " + wordFor(place == places.end() ? BodyPlace{} : place->second);
        }
        text += "\n";
    }
    return text;
}

}  // namespace tesserine::app
