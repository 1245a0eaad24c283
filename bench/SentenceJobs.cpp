#include "bench/SentenceJobs.h"

#include "core/tasks/QuickAddParser.h"

#include <unicode/regex.h>
#include <unicode/unistr.h>

#include <array>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tesserine::bench {
namespace {

constexpr double largestRatio = 1.2;
/// A turn of the measurement reads the sentences so often.
constexpr std::size_t repetitions = 200;

constexpr auto sentences = std::to_array<std::string_view>({
    "Send invoice tomorrow 9am #Work p1",
    "Buy milk",
    "Call the plumber about the leaking tap in the kitchen",
    "Water plants every 3 days @home",
    "Team meeting every mon, wed and fri at 10:30",
    "Pay 1,234.50 rent friday",
    "Dentist 5 March 2:30pm #Health",
    "Renew passport in 3 weeks !2",
    "Submit report next friday noon #\"Big Plan\" @urgent @writing",
    "Backup daily",
    "Read chapter 4",
    "Prepare slides for 2026-05-17 at 14:00 #Work",
    "tonight laundry",
    "Review the budget every month on the 15th p2",
    "Reply to Zoë about the résumé tomorrow",
    "Book flights to Lisbon, look for a hotel near the river and ask Ada whether she comes too",
});

constexpr std::string_view months =
    "(september|february|november|december|january|october|august|march|april|sept|june|july|jan|"
    "feb|mar|apr|may|jun|jul|aug|sep|oct|nov|dec)";
constexpr std::string_view weekdays =
    "(wednesday|thursday|saturday|tuesday|sunday|monday|friday|thurs|tues|weds|thur|sun|mon|tue|"
    "wed|thu|fri|sat)";

/// The expressions without anything around them; of each step the first that matches counts.
class BarePatterns {
public:
    BarePatterns() {
        const std::string monthNames(months);
        const std::string weekdayNames(weekdays);
        step({R"x(#(?:"([^"]{1,64})"|([\p{L}\p{N}_&/-]{1,64})))x"});
        step({R"x(@(?:"([^"]{1,64})"|([\p{L}\p{N}_&/-]{1,64})))x"});
        step({R"((?:!{1,3}|p|P)?\s?[pP]?([1-4])\b)"});
        step({
            R"(every\s+(?:(\d+)\s+)?(?:weekdays|weekday|days|day|weeks|week|months|month|years|year|)"
                + weekdayNames + R"()(?:s)?(?:(?:\s*,\s*|\s+and\s+|\s+))" + weekdayNames
                + R"()*(?:\s+on\s+the\s+(\d{1,2})(?:st|nd|rd|th)?)?)",
            R"((daily|weekly|monthly|yearly|annually)\b)",
        });
        step({
            R"((\d{4})-(\d{1,2})-(\d{1,2})\b)",
            R"(today\b)",
            R"(tonight\b)",
            R"(tomorrow\b)",
            R"(tmrw\b)",
            R"(tmw\b)",
            R"((\d{1,2})/(\d{1,2})(?:/(\d{2,4}))?\b)",
            monthNames + R"(\.?\s+(\d{1,2})(?:st|nd|rd|th)?(?:,?\s*(\d{4}))?\b)",
            R"((\d{1,2})(?:st|nd|rd|th)?\s+)" + monthNames + R"(\.?(?:,?\s*(\d{4}))?\b)",
            R"(in\s+(\d{1,3})\s+(day|days|week|weeks|month|months|year|years)\b)",
            R"(next\s+week\b)",
            R"(next\s+month\b)",
            R"((?:(this|next)\s+)?)" + weekdayNames + R"(\b)",
        });
        step({
            R"((?:at\s+)?(\d{1,2})(?::(\d{2}))?\s*(am|pm|a\.m\.|p\.m\.)\b)",
            R"(at\s+(\d{1,2}):(\d{2})\b)",
            R"(noon\b)",
            R"(midnight\b)",
            R"(tonight\b)",
        });
    }

    /// How many steps find something in `sentence`.
    std::size_t run(const icu::UnicodeString& sentence) const {
        std::size_t found = 0;
        for (const auto& step : steps_) {
            for (const auto& pattern : step) {
                pattern->reset(sentence);
                if (pattern->find() == 0) continue;
                ++found;
                break;
            }
        }
        return found;
    }

private:
    void step(const std::vector<std::string>& expressions) {
        auto& patterns = steps_.emplace_back();
        for (const std::string& expression : expressions) {
            UErrorCode status = U_ZERO_ERROR;
            patterns.push_back(std::make_unique<icu::RegexMatcher>(
                icu::UnicodeString::fromUTF8(R"((?:^|\s))" + expression),
                UREGEX_CASE_INSENSITIVE,
                status));
            if (U_FAILURE(status)) throw std::runtime_error(expression + ": no pattern");
        }
    }

    std::vector<std::vector<std::unique_ptr<icu::RegexMatcher>>> steps_;
};

}  // namespace

std::vector<Row> sentenceJobs(std::size_t rounds) {
    const Calendar calendar("Europe/Berlin");
    const Instant now = calendar.instant({.year = 2026, .month = 3, .day = 11, .hour = 10});
    const QuickAddParser parser(now, calendar);
    const BarePatterns patterns;
    std::vector<icu::UnicodeString> prepared;
    prepared.reserve(sentences.size());
    for (const std::string_view sentence : sentences) {
        prepared.push_back(icu::UnicodeString::fromUTF8(std::string(sentence)));
    }

    std::size_t steps = 0;
    std::size_t tokens = 0;
    const auto raw = [&] {
        for (std::size_t i = 0; i < repetitions * sentences.size(); ++i) {
            steps += patterns.run(prepared[i % sentences.size()]);
        }
    };
    const auto ours = [&] {
        for (std::size_t i = 0; i < repetitions * sentences.size(); ++i) {
            tokens += parser.parse(sentences[i % sentences.size()]).recognisedTokens.size();
        }
    };
    ours();  // compiles its patterns
    const Comparison times = alternate(
        rounds * 2 + 1, [&] { return secondsOf(raw); }, [&] { return secondsOf(ours); });
    if (steps == 0 || tokens == 0) throw std::runtime_error("sentences: work was left out");
    const auto text = [](double seconds) {
        return perSecond(repetitions * sentences.size(), seconds);
    };
    return {rowOf("read typed sentences", times, text, largestRatio)};
}

}  // namespace tesserine::bench
