#include "core/store/LibraryExchange.h"

#include "base/Encoding.h"
#include "base/FailPoint.h"
#include "base/Files.h"
#include "core/store/TesserineStore.h"

#include <cerrno>
#include <cstdio>
#include <vector>

namespace tesserine::exchange {
namespace {

constexpr const char* arrivingMark = ".new-";
constexpr std::uint64_t planLimit = 1024;

/// What is to be done, kept in a file until it is done.
struct Plan {
    std::string arriving;  ///< name of the new file
    std::string suffix;    ///< of what goes aside
};

std::filesystem::path fileIn(const std::filesystem::path& library, const std::string& ending = {}) {
    return library / (TesserineStore::fileName + ending);
}

std::filesystem::path planIn(const std::filesystem::path& library) {
    return fileIn(library, ".exchange");
}

bool isPresent(const std::filesystem::path& path) {
    std::error_code ignored;
    return std::filesystem::exists(std::filesystem::symlink_status(path, ignored));
}

void moveTo(const std::filesystem::path& from, const std::filesystem::path& to) {
    if (std::rename(from.c_str(), to.c_str()) != 0) {
        throw FileError::fromErrno(to, "written", errno);
    }
}

std::optional<Plan> readPlan(const std::filesystem::path& library) {
    if (!isPresent(planIn(library))) return std::nullopt;
    const Bytes bytes = files::read(planIn(library), planLimit, files::Links::refuse);
    const std::string text(textOf(bytes));
    const std::size_t end = text.find('\n');
    if (end == std::string::npos || text.find('/') != std::string::npos) return std::nullopt;
    return Plan{.arriving = text.substr(0, end), .suffix = text.substr(end + 1)};
}

/// Every step may be found done already.
std::optional<std::filesystem::path> carryOut(
    const std::filesystem::path& library, const Plan& plan) {
    const auto arriving = library / plan.arriving;
    if (isPresent(arriving)) {
        for (const char* part : {"-shm", "-wal", ""}) {
            if (!isPresent(fileIn(library, part))) continue;
            moveTo(fileIn(library, part), fileIn(library, plan.suffix + part));
            FAIL_POINT("exchange.moved");
        }
        moveTo(arriving, fileIn(library));
        files::syncFolder(library);
        FAIL_POINT("exchange.arrived");
    }
    files::removeIfPresent(planIn(library));
    files::syncFolder(library);
    const auto aside = fileIn(library, plan.suffix);
    return isPresent(aside) ? std::optional(aside) : std::nullopt;
}

}  // namespace

std::optional<std::filesystem::path> replaceLibrary(
    const std::filesystem::path& library,
    const std::filesystem::path& arriving,
    const std::string& suffix) {
    const Plan plan{.arriving = arriving.filename().string(), .suffix = suffix};
    files::writeAtomically(planIn(library), bytesOf(plan.arriving + "\n" + plan.suffix));
    FAIL_POINT("exchange.planned");
    return carryOut(library, plan);
}

void finish(const std::filesystem::path& library) {
    if (const auto plan = readPlan(library)) carryOut(library, *plan);
}

std::filesystem::path arrivingName(
    const std::filesystem::path& library, const std::string& distinction) {
    return fileIn(library, arrivingMark + distinction);
}

void sweepArriving(const std::filesystem::path& library) {
    std::error_code ignored;
    const std::string beginning = fileIn(library, arrivingMark).filename().string();
    std::vector<std::filesystem::path> old;
    for (const auto& entry : std::filesystem::directory_iterator(library, ignored)) {
        // File times come from the machine's clock, so they are compared with it and with no other.
        const auto age =
            std::filesystem::file_time_type::clock::now() - entry.last_write_time(ignored);
        if (age < std::chrono::hours(24)) continue;
        if (entry.path().filename().string().starts_with(beginning)) old.push_back(entry.path());
    }
    for (const auto& path : old) {
        files::removeIfPresent(path);
    }
}

}  // namespace tesserine::exchange
