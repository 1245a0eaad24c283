// How long the first window takes, and how much memory, beside a window of the toolkit with nothing
// in it. Both are started in turns as processes of their own; the middle of several rounds counts.
//
// Usage: tesserine-window-bench [NOTES] [ROUNDS]

#include "app/commands/Commands.h"
#include "app/look/Theme.h"
#include "app/shell/FirstPaint.h"
#include "app/shell/MainWindow.h"
#include "app/shell/WindowCommands.h"
#include "app/state/AppEnvironment.h"
#include "base/Clock.h"
#include "base/Random.h"
#include "bench/SampleLibrary.h"
#include "search/SearchCoordinator.h"

#include <QApplication>
#include <QMainWindow>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace tesserine;

/// The window has done by then what it does after a start: index compared, backup made.
constexpr int settlingTime = 10'000;  // milliseconds
constexpr int lookInterval = 50;      // milliseconds between looks at the memory

std::int64_t nowInMicroseconds() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

/// What only this process uses, in kilobytes.
std::int64_t privateMemory() {
    std::ifstream file("/proc/self/smaps_rollup");
    std::int64_t sum = 0;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("Private_")) sum += std::stoll(line.substr(line.find(':') + 1));
    }
    return sum;
}

/// Prints the time since `begun` at the first paint, later the memory, the most of it and what was
/// left at the end, and ends.
void reportAfterPaint(QWidget& window, std::int64_t begun) {
    app::afterFirstPaint(window, [begun, &window] {
        const std::int64_t painted = nowInMicroseconds();
        auto most = std::make_shared<std::int64_t>(0);
        auto* looks = new QTimer(&window);
        QObject::connect(
            looks, &QTimer::timeout, looks, [most] { *most = std::max(*most, privateMemory()); });
        looks->start(lookInterval);
        QTimer::singleShot(settlingTime, looks, [time = painted - begun, most] {
            std::cout << time << ' ' << *most << ' ' << privateMemory() << std::endl;
            QApplication::quit();
        });
    });
    window.show();
}

int runBare(std::int64_t begun) {
    QMainWindow window;
    window.resize(1240, 800);
    reportAfterPaint(window, begun);
    return QApplication::exec();
}

int runOurs(QApplication& application, std::int64_t begun, const std::string& library) {
    const SystemClock clock;
    SecureRandom random;
    app::Theme theme(application);
    app::AppEnvironment environment(
        {.clock = clock,
         .random = random,
         .zone = "UTC",
         .locale = "en_GB",
         .library = library,
         .preferencesFile = library + "/preferences.json"});
    app::Commands commands(environment.preferences());
    app::MainWindow window(environment, commands);
    app::handleWindowCommands(window, commands, environment);
    app::afterFirstPaint(window, [&environment] { environment.startWork(); });
    reportAfterPaint(window, begun);
    return QApplication::exec();
}

struct Figures {
    std::vector<double> milliseconds;
    std::vector<double> mostMegabytes;
    std::vector<double> megabytes;
};

double middle(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

void start(Figures& figures, const QString& mode, const QString& library) {
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(
        QApplication::applicationFilePath(), {mode, QString::number(nowInMicroseconds()), library});
    process.waitForFinished(120'000);
    const auto words = process.readAllStandardOutput().simplified().split(' ');
    if (words.size() != 3) return;
    figures.milliseconds.push_back(words[0].toDouble() / 1000);
    figures.mostMegabytes.push_back(words[1].toDouble() / 1024);
    figures.megabytes.push_back(words[2].toDouble() / 1024);
}

void makeLibrary(const std::filesystem::path& folder, std::size_t notes) {
    const bench::NoteGenerator generator(notes, 1);
    bench::OurLibrary library(folder);
    library.addPlaces(generator);
    std::vector<bench::GeneratedNote> group;
    for (std::size_t place = 0; place < notes; ++place) {
        group.push_back(generator.note(place));
        if (group.size() < bench::notesPerSave && place + 1 < notes) continue;
        library.addNotes(group);
        group.clear();
    }
    // Otherwise the first start would be measured while it fills the index.
    const SystemClock clock;
    SearchCoordinator(library.store(), {.clock = clock}).catchUp();
}

int compare(std::size_t notes, int rounds) {
    const QTemporaryDir folder;
    makeLibrary(folder.path().toStdString(), notes);
    Figures bare;
    Figures ours;
    for (int round = 0; round < rounds; ++round) {
        start(bare, "--bare", folder.path());
        start(ours, "--ours", folder.path());
    }
    if (bare.milliseconds.empty() || ours.milliseconds.empty()) return 1;
    const auto print = [](const Figures& figures) {
        std::cout << middle(figures.milliseconds) << " ms, " << middle(figures.megabytes)
                  << " MB, at most " << middle(figures.mostMegabytes) << " MB\n";
    };
    std::cout << "first window, bare        ";
    print(bare);
    std::cout << "first window, " << notes << " notes  ";
    print(ours);
    std::cout << "ratio                     "
              << middle(ours.milliseconds) / middle(bare.milliseconds) << '\n';
    return 0;
}

}  // namespace

int main(int count, char** words) {
    QApplication application(count, words);
    const QStringList arguments = QApplication::arguments();
    if (arguments.value(1) == "--bare") return runBare(arguments.value(2).toLongLong());
    if (arguments.value(1) == "--ours") {
        return runOurs(
            application, arguments.value(2).toLongLong(), arguments.value(3).toStdString());
    }
    const std::size_t notes = arguments.value(1, "100000").toULongLong();
    return compare(notes, arguments.value(2, "7").toInt());
}
