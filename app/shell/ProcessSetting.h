#pragma once

#include "app/state/AppEnvironment.h"

#include <memory>
#include <optional>
#include <string>

namespace tesserine::app {

/// What the process was given by its environment: folders, zone, language, and for pictures a time
/// that stands still (`TESSERINE_NOW`, `TESSERINE_TIME_ZONE`, as in the terminal).
class ProcessSetting {
public:
    ProcessSetting();
    ProcessSetting(const ProcessSetting&) = delete;
    ProcessSetting& operator=(const ProcessSetting&) = delete;
    ~ProcessSetting();

    /// For a library in `folder`, else where `TESSERINE_LIBRARY` says, else at the usual place.
    /// Throws `LibraryFolderError`.
    AppSetting setting(const std::optional<std::string>& given) const;

private:
    std::unique_ptr<Clock> clock_;
    std::unique_ptr<Random> random_;
};

}  // namespace tesserine::app
