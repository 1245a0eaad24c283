#include "app/shell/OpenTabs.h"

#include <optional>
#include <sstream>
#include <string_view>

namespace tesserine::app {
namespace {

constexpr std::string_view chosenMark = "> ";

/// Addresses hold no space: that of a search writes it as "%20".
std::optional<Stop> stopIn(const std::string& line) {
    const auto space = line.find(' ');
    const auto place = Place::fromAddress(line.substr(0, space));
    if (!place) return std::nullopt;
    Stop stop{.place = *place};
    if (space != std::string::npos) {
        const auto note = Place::fromAddress(line.substr(space + 1));
        if (note && note->kind == Place::Kind::note) stop.note = note->id;
    }
    return stop;
}

}  // namespace

OpenTabs OpenTabs::read(const std::string& text) {
    OpenTabs tabs;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const bool isChosen = line.starts_with(chosenMark);
        const auto stop = stopIn(isChosen ? line.substr(chosenMark.size()) : line);
        if (!stop) continue;
        if (isChosen) tabs.chosen = tabs.stops.size();
        tabs.stops.push_back(*stop);
    }
    return tabs;
}

std::string OpenTabs::text() const {
    std::string text;
    for (std::size_t i = 0; i < stops.size(); ++i) {
        const Stop& stop = stops[i];
        if (i == chosen) text += chosenMark;
        text += stop.place.address();
        if (stop.note) text += " " + Place{Place::Kind::note, *stop.note}.address();
        text += "\n";
    }
    return text;
}

}  // namespace tesserine::app
