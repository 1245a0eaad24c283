#include "core/tasks/QuickAddTime.h"

#include "base/Text.h"

#include <array>

namespace tesserine::quickadd {
namespace {

using MaybeTime = std::optional<TimeHit>;

MaybeTime twelveHourClock(const Sentence& sentence) {
    // The dotted forms end in no word, so that they need an end of their own.
    static const Pattern pattern(
        R"x((?:^|\s)(?:at\s+)?(\d{1,2})(?::(\d{2}))?\s*(?:(am|pm)\b|(a\.m\.|p\.m\.)(?![\p{L}\p{N}])))x",
        "0");
    return sentence.first(pattern, [](const Found& found) -> MaybeTime {
        const int hour = found.number(1);
        const int minute = found.number(2);
        if (hour < 1 || hour > 12 || minute > 59) return std::nullopt;
        const std::string half = text::caseFolded(found.text(found.has(3) ? 3 : 4));
        return TimeHit{{hour % 12 + (half.starts_with('p') ? 12 : 0), minute}, found.range()};
    });
}

MaybeTime twentyFourHourClock(const Sentence& sentence) {
    static const Pattern pattern(R"x((?:^|\s)at\s+(\d{1,2}):(\d{2})\b)x", "at");
    return sentence.first(pattern, [](const Found& found) -> MaybeTime {
        const TimeOfDay time{found.number(1), found.number(2)};
        if (time.hour > 23 || time.minute > 59) return std::nullopt;
        return TimeHit{time, found.range()};
    });
}

MaybeTime namedTime(const Sentence& sentence) {
    struct NamedTime {
        Pattern pattern;
        TimeOfDay time;
    };
    static const std::array<NamedTime, 3> names = {
        NamedTime{Pattern::word("noon"), {.hour = 12}},
        NamedTime{Pattern::word("midnight"), {.hour = 0}},
        NamedTime{Pattern::word("tonight"), {.hour = 19}},
    };
    for (const NamedTime& name : names) {
        const auto time = sentence.first(name.pattern, [&](const Found& found) -> MaybeTime {
            return TimeHit{name.time, found.range()};
        });
        if (time) return time;
    }
    return std::nullopt;
}

}  // namespace

std::optional<TimeHit> findTime(const Sentence& sentence) {
    if (const auto time = twelveHourClock(sentence)) return time;
    if (const auto time = twentyFourHourClock(sentence)) return time;
    return namedTime(sentence);
}

}  // namespace tesserine::quickadd
