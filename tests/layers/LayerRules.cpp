#include "tests/layers/LayerRules.h"

#include <algorithm>
#include <array>
#include <optional>

namespace tesserine::layers {
namespace {

/// A folder with all its subfolders, and the rooms it may include from. What those may use, it may
/// use as well.
struct Room {
    std::string_view folder;
    std::array<std::string_view, 4> uses = {};
};

constexpr std::array rooms = {
    Room{"base"},
    Room{"core/model", {"base"}},
    Room{"core/store", {"core/model"}},
    Room{"core/body", {"core/model"}},
    Room{"core/services", {"core/store", "core/body"}},
    Room{"core/tasks", {"core/store", "core/body"}},
    Room{"core/import", {"core/services", "core/tasks"}},
    Room{"core/export", {"core/services", "core/tasks"}},
    Room{"sync", {"core/services", "core/tasks"}},
    Room{"search", {"core/services"}},
    Room{"ai", {"search", "sync"}},
    Room{"updates", {"base"}},
    Room{"scans", {"core/model"}},
};

/// The window's own rooms. One may use those of lower floors; those of one floor do not know each
/// other.
struct WindowRoom {
    std::string_view folder;
    int floor;
};

constexpr std::array windowRooms = {
    WindowRoom{"app/testing", -1},  // fixtures, which only tests may include
    WindowRoom{"app/look", 0},
    WindowRoom{"app/state", 1},
    WindowRoom{"app/commands", 2},
    WindowRoom{"app/account", 3},
    WindowRoom{"app/assistant", 3},
    WindowRoom{"app/editor", 3},
    WindowRoom{"app/lists", 3},
    WindowRoom{"app/pages", 3},
    WindowRoom{"app/search", 3},
    WindowRoom{"app/tasks", 3},
    WindowRoom{"app/desktop", 4},
    WindowRoom{"app/shell", 5},
};

/// Programs stand on everything above and on none of each other; tests may drive programs too.
constexpr std::array<std::string_view, 4> programs = {"app", "cli", "server", "tools"};
constexpr std::array<std::string_view, 2> drivers = {"tests", "bench"};
constexpr std::string_view testSupport = "tests/support";
/// A service for the tests of programs that sync.
constexpr std::string_view fakeServer = "tests/fakeserver";
/// Makes libraries to measure with, which tests read as well.
constexpr std::string_view noteGenerator = "bench/NoteGenerator.h";
/// Measure the window.
constexpr std::array<std::string_view, 7> windowBenches = {
    "bench/BareWindow.cpp",
    "bench/BrowseBench.cpp",
    "bench/EditorBench.cpp",
    "bench/EventWatch.h",
    "bench/PaintReport.cpp",
    "bench/TaskListBench.cpp",
    "bench/WindowBench.cpp"};

/// A library from outside that is met in few places only.
struct Confined {
    std::string_view beginning;  // of the name between the angle brackets
    std::string_view name;
    std::array<std::string_view, 3> folders;
};

constexpr std::array confined = {
    Confined{"sqlite3", "SQLite", {"base/sqlite", testSupport, "bench"}},
    Confined{"md4c", "MD4C", {"core/import"}},
    Confined{"expat", "Expat", {"core/import", "bench"}},
    Confined{"zlib", "zlib", {"base", "core/import"}},
    Confined{"openssl/", "OpenSSL", {"base", testSupport}},
    Confined{"curl/", "libcurl", {"base"}},
    Confined{"libsecret/", "libsecret", {"base"}},
    Confined{"gio/", "GIO", {"base"}},
    Confined{"Poco/", "POCO", {"base", "server"}},
};

bool isIn(std::string_view path, std::string_view folder) {
    return !folder.empty() && path.size() > folder.size() && path.starts_with(folder)
           && path[folder.size()] == '/';
}

/// The room, program or driver that `path` lies in; empty when the tree has no such folder.
std::string_view homeOf(std::string_view path) {
    for (const Room& room : rooms) {
        if (isIn(path, room.folder)) return room.folder;
    }
    for (const WindowRoom& room : windowRooms) {
        if (isIn(path, room.folder)) return room.folder;
    }
    for (const std::string_view folder : programs) {
        if (isIn(path, folder)) return folder;
    }
    for (const std::string_view folder : drivers) {
        if (isIn(path, folder)) return folder;
    }
    return {};
}

bool isRoom(std::string_view folder) {
    return std::ranges::find(rooms, folder, &Room::folder) != rooms.end();
}

bool isDriver(std::string_view folder) {
    return std::ranges::find(drivers, folder) != drivers.end();
}

bool roomMayUse(std::string_view from, std::string_view to) {
    if (from == to) return true;
    const auto* room = std::ranges::find(rooms, from, &Room::folder);
    if (room == rooms.end()) return false;
    return std::ranges::any_of(
        room->uses, [to](std::string_view used) { return !used.empty() && roomMayUse(used, to); });
}

bool windowMayUse(std::string_view from, std::string_view to) {
    const auto* user = std::ranges::find(windowRooms, from, &WindowRoom::folder);
    const auto* used = std::ranges::find(windowRooms, to, &WindowRoom::folder);
    return user != windowRooms.end() && used != windowRooms.end() && used->floor < user->floor;
}

bool isFixture(std::string_view path) {
    return path.ends_with("Fixture.h") || path.ends_with("Fixture.cpp");
}

/// Tests, and what several tests of one room share.
bool isForTests(std::string_view path) {
    return path.ends_with("Test.cpp") || isFixture(path) || isDriver(homeOf(path));
}

bool mayInclude(std::string_view path, std::string_view included) {
    const std::string_view from = homeOf(path);
    const std::string_view to = homeOf(included);
    if (isFixture(included) && !isForTests(path)) return false;
    if (isIn(included, testSupport) || included == noteGenerator) return isForTests(path);
    if (isIn(included, fakeServer) && !isRoom(from)) return isForTests(path);
    if (isIn(path, testSupport)) return isRoom(to);
    if (isDriver(from)) return true;
    if (isRoom(from)) return roomMayUse(from, to);
    return from == to || isRoom(to) || windowMayUse(from, to);
}

struct Include {
    std::string_view name;
    bool isQuoted;
};

/// What `line` includes, when it is an include at all.
std::optional<Include> includeOf(std::string_view line) {
    const auto skipBlanks = [&line] {
        line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    };
    skipBlanks();
    if (!line.starts_with('#')) return std::nullopt;
    line.remove_prefix(1);
    skipBlanks();
    if (!line.starts_with("include")) return std::nullopt;
    line.remove_prefix(std::string_view("include").size());
    skipBlanks();
    if (!line.starts_with('"') && !line.starts_with('<')) return std::nullopt;

    const bool isQuoted = line.front() == '"';
    line.remove_prefix(1);
    return Include{line.substr(0, line.find(isQuoted ? '"' : '>')), isQuoted};
}

bool isQt(std::string_view name) {
    return name.size() > 1 && name[0] == 'Q'
           && (name[1] == 't' || (name[1] >= 'A' && name[1] <= 'Z'));
}

/// What is wrong with `path` including `include`; empty when nothing is.
std::string faultOf(std::string_view path, const Include& include) {
    const std::string name(include.name);
    // Made by the build, for a class with signals inside a source.
    if (include.isQuoted && name.ends_with(".moc")) return {};
    if (include.isQuoted || !homeOf(include.name).empty()) {
        if (homeOf(include.name).empty()) return "\"" + name + "\" is not a path from the root";
        if (mayInclude(path, include.name)) return {};
        return std::string(homeOf(path)) + " may not include from "
               + std::string(homeOf(include.name)) + " (\"" + name + "\")";
    }
    const bool mayUseQt =
        isIn(path, "app") || std::ranges::find(windowBenches, path) != windowBenches.end();
    if (isQt(name) && !mayUseQt) return "Qt lives in app only (<" + name + ">)";
    for (const Confined& library : confined) {
        if (!name.starts_with(library.beginning)) continue;
        const bool isHome = std::ranges::any_of(
            library.folders, [path](std::string_view folder) { return isIn(path, folder); });
        if (!isHome) {
            return std::string(library.name) + " is not to be met here (<" + name + ">)";
        }
    }
    return {};
}

}  // namespace

std::vector<std::string> faults(std::string_view path, std::string_view text) {
    std::vector<std::string> found;
    const auto report = [&](std::size_t line, const std::string& sentence) {
        found.push_back(std::string(path) + ":" + std::to_string(line) + ": " + sentence);
    };
    if (homeOf(path).empty()) report(1, "no floor is laid down for this folder");

    for (std::size_t line = 1; !text.empty(); ++line) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        if (const auto include = includeOf(text.substr(0, end))) {
            const std::string sentence = faultOf(path, *include);
            if (!sentence.empty()) report(line, sentence);
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return found;
}

}  // namespace tesserine::layers
