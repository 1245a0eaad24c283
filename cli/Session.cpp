#include "cli/Session.h"

#include "base/Files.h"
#include "base/FirstWeekday.h"
#include "cli/LibrarySearch.h"
#include "cli/Safeguard.h"

#include <system_error>

namespace tesserine::cli {

namespace {

namespace fs = std::filesystem;

constexpr const char* namesLock = ".Tesserine.names";
constexpr std::chrono::milliseconds namesPatience{10'000};

/// The value of an option, else of a variable, with the name it is known by in an error.
struct Given {
    std::string name;
    std::string value;
};

std::optional<Given> given(
    const Environment& environment,
    const Arguments& arguments,
    const std::string& option,
    const std::string& variable) {
    if (auto value = arguments.text(option)) return Given{"--" + option, *value};
    if (auto value = environment.variable(variable)) return Given{variable, *value};
    return std::nullopt;
}

std::unique_ptr<FixedClock> clockOf(const Environment& environment, const Arguments& arguments) {
    const auto now = given(environment, arguments, "now", "TESSERINE_NOW");
    if (!now) return nullptr;
    const auto instant = Instant::parseISO(now->value);
    if (!instant) throw UsageError::badValue(now->name, "a time such as 2026-03-14T09:15:00Z");
    return std::make_unique<FixedClock>(instant->floorToMillisecond());
}

Calendar calendarOf(
    const Environment& environment, const Arguments& arguments, const Preferences& preferences) {
    const auto zone = given(environment, arguments, "time-zone", "TESSERINE_TIME_ZONE");
    if (zone && !Calendar::isZone(zone->value)) {
        throw UsageError::badValue(zone->name, "a time zone such as Europe/Berlin");
    }
    const auto weekday = arguments.integer("first-weekday", 1, 7);
    const int first =
        weekday ? static_cast<int>(*weekday) : firstWeekday(preferences, environment.locale());
    return Calendar(zone ? zone->value : environment.systemZone, first);
}

/// The log is a help, not a condition: without a place to write it the program still works.
Log logOf(const fs::path& file) {
    try {
        files::createPrivateFolder(file.parent_path());
        return Log(makeFileLogSink(file), "app.tesserine.cli", "main");
    } catch (const std::exception&) {
        return {};
    }
}

fs::path preferencesPath(const Environment& environment) {
    return environment.folder("XDG_CONFIG_HOME", ".config") / "preferences.json";
}

fs::path logPath(const Environment& environment) {
    return environment.folder("XDG_STATE_HOME", ".local/state") / "tesserine.log";
}

}  // namespace

Session::Session(Environment& environment, const Arguments& arguments, Access access)
    : environment_(environment),
      access_(access),
      libraryOption_(arguments.path("library")),
      output_(environment, arguments.has("json") ? Output::Format::json : Output::Format::text),
      fixedClock_(clockOf(environment, arguments)),
      preferences_(preferencesPath(environment)),
      calendar_(calendarOf(environment, arguments, preferences_)),
      collator_(environment.locale()),
      log_(logOf(logPath(environment))),
      notes_(clock()),
      notebooks_(clock()),
      tags_(clock()),
      savedSearches_(clock()),
      tasks_(clock()),
      taskTemplates_(clock()) {}

Session::~Session() = default;

fs::path Session::logFile() const { return logPath(environment_); }

fs::path Session::preferencesFile() const { return preferencesPath(environment_); }

fs::path Session::libraryFolder() const {
    if (libraryOption_) return checkedLibraryFolder(*libraryOption_);
    if (const auto variable = environment_.variable("TESSERINE_LIBRARY")) {
        return checkedLibraryFolder(*variable);
    }
    return checkedLibraryFolder(usualLibraryFolder(
        preferences_, environment_.variable("XDG_DATA_HOME"), environment_.home));
}

bool Session::hasLibrary() const {
    std::error_code error;
    return fs::exists(libraryFolder() / TesserineStore::fileName, error);
}

TesserineStore& Session::store() {
    if (!store_) openStore();
    return *store_;
}

void Session::openStore() {
    const fs::path folder = libraryFolder();
    if (access_ == Access::reads && !hasLibrary()) throw NoLibrary(folder);
    store_ = std::make_unique<TesserineStore>(
        StoreConfiguration{.directory = folder},
        StoreEnvironment{
            .clock = clock(),
            .random = environment_.random,
            .log = log_,
            .createIfMissing = access_ == Access::writes});
    if (access_ != Access::writes) return;
    if (store_->wasCreated()) remark("Made a library in “" + folder.string() + "”.");
    doStartWork(*this);
}

void Session::closeLibrary() {
    releaseNames();
    search_.reset();
    care_.reset();
    store_.reset();
}

void Session::holdNames() {
    if (names_) return;
    const fs::path file = store().configuration().directory / namesLock;
    names_ = files::FolderLock::acquire(file, namesPatience);
    if (!names_) throw StoreError::saveFailed("The library has been busy for too long. Try again.");
}

const mime::TypeRegistry& Session::types() {
    if (!types_) {
        types_ = std::make_unique<mime::TypeRegistry>(
            mime::TypeRegistry::find(environment_.variable("XDG_DATA_DIRS").value_or("")));
    }
    return *types_;
}

const AttachmentService& Session::attachments() {
    if (!attachments_) attachments_ = std::make_unique<AttachmentService>(clock(), types());
    return *attachments_;
}

LibrarySearch& Session::search() {
    if (!search_) search_ = std::make_unique<LibrarySearch>(*this);
    return *search_;
}

LibraryCare& Session::care() {
    if (!care_) {
        care_ = std::make_unique<LibraryCare>(store(), clock(), environment_.random, log_);
    }
    return *care_;
}

void Session::throwIfStopped() const {
    if (environment_.stop.stop_requested()) throw Interrupted();
}

void Session::remark(std::string_view sentence) {
    if (!output_.isJSON()) environment_.error << sentence << '\n';
}

std::string Session::localTime(Instant instant) const {
    std::string text = calendar_.local(instant).iso();
    text.resize(16);  // without the seconds
    text[10] = ' ';
    return text;
}

}  // namespace tesserine::cli
