#include "base/FailPoint.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <map>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace tesserine::failpoint {
namespace {

struct Point {
    int passes = 0;
    int armedPass = 0;
    Action action;
};

struct Points {
    std::mutex mutex;
    // Behind mutex.
    std::map<std::string, Point, std::less<>> byName;
};

void killProcess() { ::kill(::getpid(), SIGKILL); }

/// Reads `name:pass:kill` or `name:pass:throw`; anything else arms nothing.
void armFromEnvironment(Points& points) {
    const char* value = std::getenv("TESSERINE_FAIL_POINT");
    if (value == nullptr) return;

    const std::string setting = value;
    const auto first = setting.find(':');
    const auto second = setting.rfind(':');
    if (first == std::string::npos || first == second) return;

    const std::string name = setting.substr(0, first);
    const std::string what = setting.substr(second + 1);
    const int pass = std::atoi(setting.substr(first + 1, second - first - 1).c_str());
    if (what == "kill") {
        points.byName[name] = {.armedPass = pass, .action = killProcess};
    } else if (what == "throw") {
        points.byName[name] = {.armedPass = pass, .action = [name] {
                                   throw std::runtime_error("The fail point " + name + " was hit.");
                               }};
    }
}

Points& points() {
    static Points& made = []() -> Points& {
        // Never destroyed: threads may pass a fail point while the process ends.
        static auto* const all = new Points;
        armFromEnvironment(*all);
        return *all;
    }();
    return made;
}

Point& pointNamed(Points& all, std::string_view name) {
    const auto found = all.byName.find(name);
    return found != all.byName.end() ? found->second : all.byName[std::string(name)];
}

}  // namespace

void arm(std::string_view name, int pass, Action action) {
    Points& all = points();
    const std::lock_guard lock(all.mutex);
    pointNamed(all, name) = {.passes = 0, .armedPass = pass, .action = std::move(action)};
}

void disarmAll() {
    Points& all = points();
    const std::lock_guard lock(all.mutex);
    all.byName.clear();
}

int passes(std::string_view name) {
    Points& all = points();
    const std::lock_guard lock(all.mutex);
    const auto found = all.byName.find(name);
    return found == all.byName.end() ? 0 : found->second.passes;
}

void pass(std::string_view name) {
    Points& all = points();
    Action action;
    {
        const std::lock_guard lock(all.mutex);
        Point& point = pointNamed(all, name);
        ++point.passes;
        if (point.passes == point.armedPass) action = std::exchange(point.action, nullptr);
    }
    // Outside the lock: the action may pass fail points itself, or wait for another thread.
    if (action) action();
}

}  // namespace tesserine::failpoint
