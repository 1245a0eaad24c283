#include "core/tasks/QuickAddParser.h"
#include "tools/inspect/DateInputs.h"

#include <utility>

namespace tesserine::inspect {
namespace {

using boost::json::array;
using boost::json::object;
using boost::json::value;

array textsOf(const std::vector<std::string>& texts) {
    array answer;
    for (const std::string& each : texts) {
        answer.emplace_back(each);
    }
    return answer;
}

array pairsOf(const std::vector<RecognisedToken>& tokens) {
    array pairs;
    for (const RecognisedToken& token : tokens) {
        pairs.push_back(array{token.text, boost::json::string_view(rawValue(token.kind))});
    }
    return pairs;
}

/// `quickadd.parse`: what a sentence says.
value parsed(const object& input) {
    const Calendar calendar = calendarOf(input);
    const QuickAddParser parser(instant(input, "nowUTC"), calendar);
    const QuickAddResult result = parser.parse(text(input, "text"));

    value dueDay = nullptr;
    value dueLocal = nullptr;
    if (result.dueDate) {
        const std::string local = calendar.local(*result.dueDate).iso();
        dueDay = local.substr(0, std::string_view("2026-03-12").size());
        dueLocal = local;
    }
    return object{
        {"title", result.title},
        {"project", result.projectName ? value(*result.projectName) : value(nullptr)},
        {"labels", textsOf(result.labels)},
        {"priority", result.priority ? value(static_cast<int>(*result.priority)) : value(nullptr)},
        {"recurrence", result.recurrence ? value(result.recurrence->json()) : value(nullptr)},
        {"dueDay", std::move(dueDay)},
        {"dueHasTime", result.dueHasTime},
        {"dueLocal", std::move(dueLocal)},
        {"tokens", pairsOf(result.recognisedTokens)},
    };
}

}  // namespace

void addQuickAddOperations(Operations& operations) { operations.add("quickadd.parse", parsed); }

}  // namespace tesserine::inspect
