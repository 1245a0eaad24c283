#include "cli/CommandError.h"
#include "cli/Session.h"
#include "cli/Settings.h"
#include "search/SearchSynonyms.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <algorithm>
#include <charconv>

namespace tesserine::cli {

namespace {

const Setting& settingNamed(const std::string& key) {
    if (const Setting* setting = findSetting(key)) return *setting;
    throw CommandError::unknownSetting(key);
}

/// "invoice, bill; car, auto"
std::string synonymsOnOneLine(const Preferences& preferences) {
    std::string line;
    for (const char c : SearchSynonyms::load(preferences).lines()) {
        line += c == '\n' ? std::string("; ") : std::string(1, c);
    }
    return line.substr(0, line.rfind(';'));
}

void setSynonyms(Preferences& preferences, const Setting& setting, std::string typed) {
    std::ranges::replace(typed, ';', '\n');
    const SearchSynonyms synonyms = SearchSynonyms::fromLines(typed);
    if (synonyms.groups.empty()) {
        throw CommandError::badSettingValue(
            std::string(setting.key), "groups of words such as “invoice, bill; car, auto”");
    }
    synonyms.save(preferences);
}

/// The value as JSON; null while it is not set, or holds something of another type.
boost::json::value valueOf(const Preferences& preferences, const Setting& setting) {
    switch (setting.type) {
    case Setting::Type::integer:
        if (const auto number = preferences.integer(setting.key)) return *number;
        return nullptr;
    case Setting::Type::boolean:
        if (const auto flag = preferences.boolean(setting.key)) return *flag;
        return nullptr;
    case Setting::Type::synonyms: {
        const std::string groups = synonymsOnOneLine(preferences);
        return groups.empty() ? boost::json::value(nullptr) : boost::json::value(groups);
    }
    }
    return nullptr;
}

std::string textOf(const boost::json::value& value, const Setting& setting) {
    if (value.is_null()) return "(" + std::string(setting.fallback) + ")";
    if (value.is_string()) return std::string(value.as_string());
    if (value.is_bool()) return value.as_bool() ? "yes" : "no";
    return std::to_string(value.as_int64());
}

boost::json::object described(const Preferences& preferences, const Setting& setting) {
    return {
        {"key", setting.key},
        {"value", valueOf(preferences, setting)},
        {"default", setting.fallback},
        {"summary", setting.summary}};
}

ExitStatus listSettings(Session& session, const Arguments&) {
    boost::json::array array;
    Table table{
        .columns = {
            {.title = "SETTING", .style = Style::strong},
            {.title = "VALUE", .style = Style::accent},
            {.title = "MEANING", .style = Style::faint}}};
    for (const Setting& setting : settings()) {
        array.push_back(described(session.preferences(), setting));
        table.rows.push_back(
            {std::string(setting.key),
             textOf(valueOf(session.preferences(), setting), setting),
             std::string(setting.summary)});
    }
    if (session.output().isJSON()) {
        session.output().json(array);
    } else {
        session.output().table(table);
    }
    return ExitStatus::done;
}

ExitStatus answerSetting(Session& session, const Setting& setting) {
    if (session.output().isJSON()) {
        session.output().json(described(session.preferences(), setting));
    } else {
        session.output().line(textOf(valueOf(session.preferences(), setting), setting));
    }
    return ExitStatus::done;
}

ExitStatus getSetting(Session& session, const Arguments& arguments) {
    return answerSetting(session, settingNamed(arguments.word(0)));
}

void setInteger(Preferences& preferences, const Setting& setting, const std::string& typed) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(typed.data(), typed.data() + typed.size(), number);
    const bool isWhole = error == std::errc{} && end == typed.data() + typed.size();
    if (!isWhole || number < setting.least || number > setting.most) {
        throw CommandError::badSettingValue(
            std::string(setting.key),
            "a whole number from " + std::to_string(setting.least) + " to "
                + std::to_string(setting.most));
    }
    preferences.set(setting.key, number);
}

void setBoolean(Preferences& preferences, const Setting& setting, const std::string& typed) {
    const bool isYes = typed == "yes" || typed == "true" || typed == "on";
    const bool isNo = typed == "no" || typed == "false" || typed == "off";
    if (!isYes && !isNo) {
        throw CommandError::badSettingValue(std::string(setting.key), "yes or no");
    }
    preferences.set(setting.key, isYes);
}

ExitStatus setSetting(Session& session, const Arguments& arguments) {
    const Setting& setting = settingNamed(arguments.word(0));
    switch (setting.type) {
    case Setting::Type::integer:
        setInteger(session.preferences(), setting, arguments.word(1));
        break;
    case Setting::Type::boolean:
        setBoolean(session.preferences(), setting, arguments.word(1));
        break;
    case Setting::Type::synonyms:
        setSynonyms(session.preferences(), setting, arguments.word(1));
        break;
    }
    return answerSetting(session, setting);
}

ExitStatus resetSetting(Session& session, const Arguments& arguments) {
    const Setting& setting = settingNamed(arguments.word(0));
    session.preferences().remove(setting.key);
    return answerSetting(session, setting);
}

}  // namespace

std::vector<Command> settingsCommands() {
    const Argument key{.name = "KEY"};
    return {
        {.path = "settings list",
         .summary = "Lists the settings, their values and what they mean",
         .access = Access::none,
         .example = "tesserine settings list",
         .run = listSettings},
        {.path = "settings get",
         .summary = "Shows a setting",
         .access = Access::none,
         .arguments = {key},
         .details = "A key may be given without “tesserine.” at its beginning.",
         .example = "tesserine settings get trashRetentionDays",
         .run = getSetting},
        {.path = "settings set",
         .summary = "Changes a setting",
         .access = Access::none,
         .arguments = {key, {.name = "VALUE"}},
         .example = "tesserine settings set tesserine.trashRetentionDays 30",
         .run = setSetting},
        {.path = "settings reset",
         .summary = "Gives a setting back its default",
         .access = Access::none,
         .arguments = {key},
         .example = "tesserine settings reset tesserine.trashRetentionDays",
         .run = resetSetting}};
}

}  // namespace tesserine::cli
