#include "app/shell/ProcessSetting.h"

#include "base/Clock.h"
#include "base/Product.h"
#include "base/Random.h"
#include "core/store/LibraryFolder.h"

#include <QDir>

#include <filesystem>

namespace tesserine::app {
namespace {

namespace fs = std::filesystem;

std::optional<std::string> variable(const char* name) {
    if (qEnvironmentVariableIsEmpty(name)) return std::nullopt;
    return qgetenv(name).toStdString();
}

fs::path home() { return QDir::homePath().toStdString(); }

/// The base directory rules say that a relative path counts as none.
fs::path folder(const char* name, const char* fallback) {
    const fs::path given = variable(name).value_or("");
    return (given.is_absolute() ? given : home() / fallback) / "Tesserine";
}

std::string locale() {
    for (const char* name : {"LC_ALL", "LC_COLLATE", "LANG"}) {
        if (const auto value = variable(name)) return value->substr(0, value->find('.'));
    }
    return {};
}

std::unique_ptr<Clock> clockOfProcess() {
    const auto now = Instant::parseISO(variable("TESSERINE_NOW").value_or(""));
    if (now) return std::make_unique<FixedClock>(now->floorToMillisecond());
    return std::make_unique<SystemClock>();
}

}  // namespace

ProcessSetting::ProcessSetting()
    : clock_(clockOfProcess()), random_(std::make_unique<SecureRandom>()) {}

ProcessSetting::~ProcessSetting() = default;

AppSetting ProcessSetting::setting(const std::optional<std::string>& given) const {
    const fs::path preferences = folder("XDG_CONFIG_HOME", ".config") / "preferences.json";
    const auto told = given ? given : variable("TESSERINE_LIBRARY");
    const fs::path library =
        told ? fs::path(*told)
             : usualLibraryFolder(Preferences(preferences), variable("XDG_DATA_HOME"), home());
    const std::string zone = variable("TESSERINE_TIME_ZONE").value_or("");
    return {
        .clock = *clock_,
        .random = *random_,
        .zone = Calendar::isZone(zone) ? zone : std::string(),
        .locale = locale(),
        .library = checkedLibraryFolder(library),
        .preferencesFile = preferences,
        .logFile = folder("XDG_STATE_HOME", ".local/state") / "tesserine.log",
        .dataFolder = folder("XDG_DATA_HOME", ".local/share"),
        .cacheFolder = folder("XDG_CACHE_HOME", ".cache"),
        .dataDirs = variable("XDG_DATA_DIRS").value_or(""),
        .serviceURL = variable(product::serviceURLVariable)};
}

}  // namespace tesserine::app
