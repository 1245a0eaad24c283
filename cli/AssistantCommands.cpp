#include "ai/AICredentialStore.h"
#include "ai/AIExclusions.h"
#include "cli/Assistant.h"
#include "cli/CommandError.h"
#include "cli/DisplayText.h"
#include "cli/Passphrase.h"
#include "cli/Presentation.h"
#include "cli/Session.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <algorithm>

namespace tesserine::cli {

namespace {

using Backend = AISettings::Backend;

std::string onOneLine(const std::vector<std::string>& names) {
    std::string line;
    for (const std::string& name : names) {
        line += (line.empty() ? "" : ", ") + oneLine(name);
    }
    return line;
}

/// Whether there is a key; none when the keyring cannot be asked.
std::optional<bool> hasKey(const Assistant& assistant) {
    try {
        return assistant.credentials().read().has_value();
    } catch (const KeychainError&) {
        return std::nullopt;
    }
}

std::string keyState(const Assistant& assistant) {
    const auto found = hasKey(assistant);
    if (!found) return "the keyring cannot be reached";
    return *found ? "set" : "not set";
}

ExitStatus assistantStatus(Session& session, const Arguments&) {
    const Assistant assistant(session);
    const AISettings& settings = assistant.settings();
    const AIExclusions exclusions = AIExclusions::load(session.preferences());
    if (session.output().isJSON()) {
        const auto list = [](const std::vector<std::string>& names) {
            return boost::json::array(names.begin(), names.end());
        };
        session.output().json(
            {{"isEnabled", settings.isEnabled},
             {"backend", settings.backend == Backend::relay ? "relay" : "ownKey"},
             {"model", settings.model},
             {"allowWebSearch", settings.allowWebSearch},
             {"hasKey", hasKey(assistant).value_or(false)},
             {"provider", assistant.address().baseURL},
             {"excludedNotebooks", list(exclusions.notebooks)},
             {"excludedTags", list(exclusions.tags)}});
        return ExitStatus::done;
    }
    showField(session, "Assistant", settings.isEnabled ? "on" : "off");
    showField(session, "Through", std::string(displayName(settings.backend)));
    showField(session, "Model", settings.model);
    showField(session, "Web search", settings.allowWebSearch ? "allowed" : "not allowed");
    if (settings.backend == Backend::ownKey) {
        showField(session, "Asks", assistant.address().baseURL);
        showField(session, "Key", keyState(assistant));
    }
    showField(session, "Never sent", onOneLine(exclusions.notebooks));
    showField(session, "Nor tagged", onOneLine(exclusions.tags));
    return ExitStatus::done;
}

ExitStatus enable(Session& session, const Arguments& arguments) {
    const Assistant assistant(session);
    AISettings settings = assistant.settings();
    session.remark(
        "A question is sent with passages of the notes that match it, at most 24,000 characters. "
        + explanation(settings.backend, assistant.address()));
    const bool isAgreed =
        arguments.has("yes")
        || askOnTerminal(session, "Switch the assistant on?", Answer::no) == Answer::yes;
    if (!isAgreed) {
        throw CommandError::notSetUp("The assistant stays off; --yes switches it on.");
    }
    settings.isEnabled = true;
    settings.hasSeenDataNotice = true;
    settings.save(session.preferences());
    session.remark("The assistant is on.");
    return ExitStatus::done;
}

ExitStatus disable(Session& session, const Arguments&) {
    AISettings settings = Assistant(session).settings();
    settings.isEnabled = false;
    settings.save(session.preferences());
    session.remark("The assistant is off.");
    return ExitStatus::done;
}

ExitStatus setBackend(Session& session, const Arguments& arguments) {
    const Assistant assistant(session);
    AISettings settings = assistant.settings();
    settings.backend = arguments.word(0) == "relay" ? Backend::relay : Backend::ownKey;
    settings.save(session.preferences());
    session.remark(explanation(settings.backend, assistant.address()));
    return ExitStatus::done;
}

ExitStatus setWeb(Session& session, const Arguments& arguments) {
    AISettings settings = Assistant(session).settings();
    settings.allowWebSearch = arguments.word(0) == "on";
    settings.save(session.preferences());
    return ExitStatus::done;
}

ExitStatus setKey(Session& session, const Arguments& arguments) {
    const AICredentialStore store = Assistant(session).credentials();
    try {
        if (arguments.has("delete")) {
            store.remove();
            session.remark("The key is gone.");
            return ExitStatus::done;
        }
        const SecretBytes key = secretLineFrom(session, arguments, "key-file", "API key: ");
        if (key.isEmpty()) throw CommandError::badInput("The key is empty.");
        store.save(std::string(key.text()));
    } catch (const KeychainError&) {
        throw CommandError::notSetUp(
            "The desktop's keyring cannot be reached, so the key was not kept.");
    }
    session.remark("The key is kept in the desktop's keyring.");
    return ExitStatus::done;
}

ExitStatus setProvider(Session& session, const Arguments& arguments) {
    const auto typed = arguments.wordIfAny(0);
    if (!typed) {
        ProviderAddress::builtIn().save(session.preferences());
        session.remark("Questions with your own key go to the built-in provider.");
        return ExitStatus::done;
    }
    const auto address = ProviderAddress::own(*typed);
    if (!address) {
        throw CommandError::badInput(
            "Only a server on this computer or in a private network, given by its number or as "
            "localhost, can take the place of the built-in provider.");
    }
    const bool isAgreed =
        arguments.has("yes")
        || askOnTerminal(
               session,
               "Your questions and passages of your notes will go to " + address->host + ". Go on?",
               Answer::no)
               == Answer::yes;
    if (!isAgreed) throw CommandError::notSetUp("Nothing was changed; --yes changes it.");
    address->save(session.preferences());
    session.remark("Questions with your own key go to " + address->host + ".");
    return ExitStatus::done;
}

/// Adds a name to a list of the preferences, or takes it out.
void change(
    Preferences& preferences, std::string_view key, const std::string& name, bool isAllowed) {
    auto names = preferences.strings(key).value_or(std::vector<std::string>());
    std::erase(names, name);
    if (!isAllowed) names.push_back(name);
    preferences.set(key, names);
}

ExitStatus exclude(Session& session, const Arguments& arguments) {
    const bool isAllowed = arguments.has("allow");
    for (const std::string& name : arguments.texts("notebook")) {
        change(session.preferences(), AIExclusions::notebooksKey, name, isAllowed);
    }
    for (const std::string& name : arguments.texts("tag")) {
        change(session.preferences(), AIExclusions::tagsKey, name, isAllowed);
    }
    return assistantStatus(session, arguments);
}

ExitStatus log(Session& session, const Arguments& arguments) {
    SentLog sent = Assistant(session).sentLog();
    if (arguments.has("delete")) {
        sent.clear();
        session.remark("The record of what was sent is gone.");
        return ExitStatus::done;
    }
    boost::json::array array;
    Table table{
        .columns = {
            {.title = "SENT", .style = Style::faint},
            {.title = "TO"},
            {.title = "FOR"},
            {.title = "CHARACTERS", .isNumber = true},
            {.title = "NOTES", .style = Style::strong, .mayShrink = true}}};
    for (const SentRequest& request : sent.all()) {
        array.push_back(boost::json::object{
            {"sentAt", request.sentAt.iso()},
            {"destination", request.destination},
            {"purpose", request.purpose},
            {"characterCount", request.characterCount},
            {"titles", boost::json::array(request.titles.begin(), request.titles.end())}});
        table.rows.push_back(
            {session.localTime(request.sentAt),
             request.destination,
             request.purpose,
             std::to_string(request.characterCount),
             onOneLine(request.titles)});
    }
    if (session.output().isJSON()) {
        session.output().json(array);
    } else if (table.rows.empty()) {
        session.remark("Nothing was sent.");
    } else {
        session.output().table(table);
    }
    return ExitStatus::done;
}

Option yesOption() { return {.name = "yes", .summary = "Do not ask"}; }

}  // namespace

std::vector<Command> assistantCommands() {
    return {
        {.path = "assistant status",
         .summary = "Tells how the assistant is set up",
         .access = Access::none,
         .example = "tesserine assistant status",
         .run = assistantStatus},
        {.path = "assistant enable",
         .summary = "Switches the assistant on, after saying what is sent where",
         .access = Access::none,
         .options = {yesOption()},
         .example = "tesserine assistant enable",
         .run = enable},
        {.path = "assistant disable",
         .summary = "Switches the assistant off",
         .access = Access::none,
         .example = "tesserine assistant disable",
         .run = disable},
        {.path = "assistant backend",
         .summary = "Chooses who carries questions: the service, or your own key",
         .access = Access::none,
         .arguments = {{.name = "BACKEND", .choices = {"relay", "ownKey"}}},
         .example = "tesserine assistant backend ownKey",
         .run = setBackend},
        {.path = "assistant key",
         .summary = "Keeps your key in the desktop's keyring",
         .access = Access::none,
         .options =
             {{.name = "key-file",
               .value = "FILE",
               .summary = "Takes the key from the first line of a file; - is standard input",
               .completion = Completion::file},
              {.name = "delete", .summary = "Forget the key instead"}},
         .details = "A key belongs to the server it was entered for; no other one is ever sent it.",
         .example = "tesserine assistant key",
         .run = setKey},
        {.path = "assistant provider",
         .summary = "Sends questions with your own key to a server of yours",
         .access = Access::none,
         .arguments = {{.name = "URL", .isOptional = true}},
         .options = {yesOption()},
         .details =
             "The server stands on this computer or in a private network and speaks the same "
             "forms. Without a URL the built-in provider is asked again.",
         .example = "tesserine assistant provider http://127.0.0.1:11434/v1",
         .run = setProvider},
        {.path = "assistant web",
         .summary = "Allows questions to search the web, or forbids it",
         .access = Access::none,
         .arguments = {{.name = "STATE", .choices = {"on", "off"}}},
         .example = "tesserine assistant web off",
         .run = setWeb},
        {.path = "assistant exclude",
         .summary = "Names notebooks and tags whose notes are never sent",
         .access = Access::none,
         .options =
             {{.name = "notebook",
               .value = "N",
               .summary = "A notebook, with what is below it",
               .isRepeatable = true},
              {.name = "tag",
               .value = "T",
               .summary = "A tag, with those below it",
               .isRepeatable = true},
              {.name = "allow", .summary = "Allow these again"}},
         .example = "tesserine assistant exclude --notebook Health",
         .run = exclude},
        {.path = "assistant log",
         .summary = "Shows what was sent, when and where to",
         .access = Access::none,
         .options = {{.name = "delete", .summary = "Delete the record instead"}},
         .example = "tesserine assistant log",
         .run = log}};
}

}  // namespace tesserine::cli
