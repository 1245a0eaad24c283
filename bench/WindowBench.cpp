// How long the first window takes, and how much memory, beside a program of the toolkit alone whose
// window is empty, and one whose window shows a line of text. All are started in turns as processes
// of their own, as a user starts them; the middle of several rounds counts.
//
// Usage: tesserine-window-bench [NOTES] [ROUNDS]
//        tesserine-window-bench --library FOLDER [NOTES]    makes the library and ends

#include "app/look/Theme.h"
#include "app/shell/HeadStart.h"
#include "app/shell/Program.h"
#include "app/shell/StartOptions.h"
#include "bench/PaintReport.h"
#include "bench/SampleLibrary.h"

#include <QApplication>
#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <string>
#include <vector>

namespace {

using namespace tesserine;

/// What each of them is told: how long to go on after the first paint.
const QString settlingMilliseconds = "10000";  // index compared, backup of the day made

/// The shipped program, on a library of its own: LIBRARY SETTLING_MILLISECONDS START.
int runOurs(QApplication& application, const QStringList& words) {
    bench::reportFirstPaint(
        words.value(2).toLongLong(), std::chrono::milliseconds(words.value(1).toInt()));
    const app::HeadStart headStart;
    app::Theme theme(application);
    app::Program program(theme, app::StartOptions::read({"--library", words.value(0)}));
    return program.run();
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

/// Runs a program that reports its first paint as it is told when it was started.
void start(Figures& figures, const QString& program, QStringList words, const QString& home) {
    auto environment = QProcessEnvironment::systemEnvironment();
    for (const char* name :
         {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_RUNTIME_DIR"}) {
        environment.insert(name, home);
    }
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    words << settlingMilliseconds << QString::number(bench::nowInMicroseconds());
    process.start(program, words);
    process.waitForFinished(120'000);
    const auto numbers = process.readAllStandardOutput().simplified().split(' ');
    if (numbers.size() != 3) return;
    figures.milliseconds.push_back(numbers[0].toDouble() / 1000);
    figures.mostMegabytes.push_back(numbers[1].toDouble() / 1024);
    figures.megabytes.push_back(numbers[2].toDouble() / 1024);
}

void print(const std::string& what, const Figures& figures) {
    std::cout << std::left << std::setw(16) << what << middle(figures.milliseconds)
              << " ms, at best " << std::ranges::min(figures.milliseconds) << " ms; "
              << middle(figures.megabytes) << " MB, at most " << middle(figures.mostMegabytes)
              << " MB\n";
}

double ratio(const Figures& figures, const Figures& limit) {
    return middle(figures.milliseconds) / middle(limit.milliseconds);
}

int compare(std::size_t notes, int rounds) {
    const QTemporaryDir folder;
    const QString library = folder.filePath("Library");
    bench::makeIndexedLibrary(library.toStdString(), notes);
    const QString ours = QApplication::applicationFilePath();
    const QString bare = QDir(QApplication::applicationDirPath()).filePath("tesserine-bare-window");
    Figures ofEmpty;
    Figures ofText;
    Figures ofOurs;
    for (int round = 0; round < rounds; ++round) {
        start(ofEmpty, bare, {}, folder.path());
        start(ofText, bare, {"A line of text"}, folder.path());
        start(ofOurs, ours, {"--ours", library}, folder.path());
    }
    for (const Figures* figures : {&ofEmpty, &ofText, &ofOurs}) {
        if (figures->milliseconds.empty()) return 1;
    }
    std::cout << "first window on " << QApplication::platformName().toStdString() << '\n';
    print("empty", ofEmpty);
    print("a line of text", ofText);
    print(std::to_string(notes) + " notes", ofOurs);
    std::cout << "ours beside the empty one " << ratio(ofOurs, ofEmpty)
              << ", beside the line of text " << ratio(ofOurs, ofText) << '\n';
    return 0;
}

}  // namespace

int main(int count, char** words) {
    QApplication application(count, words);
    const QStringList arguments = QApplication::arguments();
    if (arguments.value(1) == "--ours") return runOurs(application, arguments.mid(2));
    if (arguments.value(1) == "--library") {
        bench::makeIndexedLibrary(
            arguments.value(2).toStdString(), arguments.value(3, "100000").toULongLong());
        return 0;
    }
    const std::size_t notes = arguments.value(1, "100000").toULongLong();
    return compare(notes, arguments.value(2, "7").toInt());
}
