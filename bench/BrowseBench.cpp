// How long the thread of the window is busy at a time while a large library is walked through:
// scrolling, going from place to place, searching while typing. What a person waits for is the
// longest of these times.
//
// The second column is the time that the thread had a processor: what is left of the first one on
// a machine that does nothing else.
//
// Usage: tesserine-browse-bench [NOTES]
//        tesserine-browse-bench --library FOLDER    one that tesserine-window-bench has made

#include "app/commands/Commands.h"
#include "app/lists/NoteList.h"
#include "app/lists/NoteListModel.h"
#include "app/lists/NoteListView.h"
#include "app/lists/Sidebar.h"
#include "app/lists/SidebarModel.h"
#include "app/look/Theme.h"
#include "app/search/SearchField.h"
#include "app/search/SearchResults.h"
#include "app/shell/FirstPaint.h"
#include "app/shell/MainWindow.h"
#include "app/shell/NotesPane.h"
#include "app/shell/WindowCommands.h"
#include "app/shell/WindowRooms.h"
#include "app/state/AppEnvironment.h"
#include "base/Clock.h"
#include "base/Random.h"
#include "bench/EventWatch.h"
#include "bench/SampleLibrary.h"

#include <QApplication>
#include <QLineEdit>
#include <QListView>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QWheelEvent>

#include <functional>
#include <iostream>
#include <string>
#include <vector>

namespace {

using namespace tesserine;
using app::Place;
using bench::runFor;

constexpr double keyInterval = 0.03;     // seconds, as a key that is held down repeats
constexpr double frameInterval = 0.016;  // seconds
constexpr double typingInterval = 0.12;  // seconds

void turnWheel(QWidget& viewport, int lines) {
    const QPointF middle = viewport.rect().center();
    QWheelEvent event(
        middle,
        viewport.mapToGlobal(middle),
        {},
        {0, -40 * lines},
        Qt::NoButton,
        Qt::NoModifier,
        Qt::NoScrollPhase,
        false);
    QCoreApplication::sendEvent(&viewport, &event);
}

/// The whole window on a library that is there already.
class BrowseBench {
public:
    BrowseBench(bench::WatchedApplication& application, const std::string& library)
        : application_(application),
          environment_(
              {.clock = clock_,
               .random = random_,
               .zone = "UTC",
               .locale = "en_GB",
               .library = library,
               .preferencesFile = library + "/preferences.json"}) {
        app::handleWindowCommands(window_, commands_, environment_);
        bool isSeen = false;
        app::afterFirstPaint(window_, [&] {
            environment_.startWork();
            app::addRooms(window_, commands_, environment_);
            isSeen = true;
        });
        application_.takeLongest();
        window_.show();
        QApplication::setActiveWindow(&window_);
        bench::runUntil([&] { return isSeen && isWhole(); });
        runFor(8);  // index compared, backup made
        bench::tell("start: longest event", application_.takeLongest());
    }

    void scroll() {
        QWidget& viewport = *view().viewport();
        QScrollBar& bar = *view().verticalScrollBar();
        measure("scrolled by the wheel, 300 turns", 300, frameInterval, [&](int) {
            turnWheel(viewport, 3);
        });
        bar.setSliderDown(true);
        measure("scroll bar drawn to the end, 200 steps", 200, frameInterval, [&](int step) {
            bar.setSliderPosition(bar.maximum() / 200 * (step + 1));
        });
        bar.setSliderDown(false);
        measure("Home, End, 40 pages", 42, 0.1, [&](int step) {
            press(view(), step == 0 ? Qt::Key_Home : step == 1 ? Qt::Key_End : Qt::Key_PageUp);
        });
        press(view(), Qt::Key_Home);
        measure("arrow held down over 200 notes", 200, keyInterval, [&](int) {
            press(view(), Qt::Key_Down);
        });
        measure("all notes selected, and one again", 2, 2, [&](int step) {
            if (step == 0) view().selectAll();
            if (step == 1) view().setCurrentIndex(view().model()->index(3, 0));
        });
    }

    /// Every place of the sidebar, then back to all notes.
    void visitPlaces() {
        std::vector<Place> places;
        const auto& model = window_.sidebar().places();
        std::vector<QModelIndex> open{QModelIndex()};
        while (!open.empty()) {
            const QModelIndex above = open.back();
            open.pop_back();
            for (int row = 0; row < model.rowCount(above); ++row) {
                open.push_back(model.index(row, 0, above));
                if (const auto place = app::SidebarModel::placeAt(open.back())) {
                    places.push_back(*place);
                }
            }
        }
        const int count = static_cast<int>(places.size());
        const auto placeAt = [&](int step) { return places[static_cast<std::size_t>(step)]; };
        const int longest = measure(
            "every place of the sidebar, " + std::to_string(count), count, 0.4, [&](int step) {
                window_.go(placeAt(step));
            });
        std::cout << "  longest: " << placeAt(longest).address() << '\n';
        measure("all notes by title, and by change", 2, 4, [&](int step) {
            if (step == 0) window_.go({Place::Kind::allNotes});
            window_.notes().list().setOrder(
                step == 0 ? app::NoteOrder::title : app::NoteOrder::updated);
        });
    }

    void search() {
        QLineEdit& field = window_.searchField();
        const QString typed = "the garden plan of";
        measure(
            "typed a search, 18 letters",
            static_cast<int>(typed.size()),
            typingInterval,
            [&](int step) { type(field, typed.mid(step, 1)); });
        measure("the results came", 1, 3, [](int) {});
        QListView& results = window_.searchResults().list();
        std::cout << "  results: " << results.model()->rowCount() << '\n';
        press(field, Qt::Key_Escape);
        press(field, Qt::Key_Down);
        measure("arrow held down over results", 60, keyInterval, [&](int) {
            press(results, Qt::Key_Down);
        });
        window_.go({Place::Kind::allNotes});
    }

    void pick(const char* command, const char* what) {
        measure(what, 8, typingInterval, [&](int step) {
            if (step == 0) commands_.trigger(command);
            auto* const field = window_.findChild<QLineEdit*>("pickerField");
            if (step > 0 && field != nullptr) {
                type(*field, QString("garden p").mid(step - 1, 1));
            }
        });
        runFor(1);
        if (auto* const field = window_.findChild<QLineEdit*>("pickerField")) {
            press(*field, Qt::Key_Escape);
        }
        runFor(0.1);
    }

    void change() {
        window_.go({Place::Kind::allNotes});
        runFor(2);
        view().setCurrentIndex(view().model()->index(5000, 0));
        runFor(1);
        measure("a note pinned, put into the trash, and back", 4, 1.5, [&](int step) {
            app::NoteList& list = window_.notes().list();
            if (step < 2) commands_.trigger("note.pin");
            if (step == 2) trashed_ = list.selected();
            if (step == 2) list.moveToTrash();
            if (step == 3) {
                window_.go({.kind = Place::Kind::note, .id = trashed_.front()});
                list.restore();
            }
        });
    }

private:
    app::NoteListView& view() { return window_.notes().list().view(); }
    bool isWhole() { return window_.notes().list().model().rowCount() > 0; }

    void press(QWidget& widget, int key) { bench::pressKey(widget, key, {}); }
    void type(QLineEdit& field, const QString& text) {
        bench::pressKey(field, text == " " ? Qt::Key_Space : Qt::Key_A, text);
    }

    /// Does something so often, with a pause after each, and tells the longest time that the
    /// window could not answer. Returns the step that it belongs to.
    int measure(
        const std::string& what,
        int times,
        double pause,
        const std::function<void(int step)>& act) {
        application_.takeLongest();
        bench::Spent longest;
        int longestStep = 0;
        for (int step = 0; step < times; ++step) {
            const bench::Spent called = bench::spentIn([&] { act(step); });
            runFor(pause);
            const bench::Spent spent = bench::longer(called, application_.takeLongest());
            if (spent.work > longest.work) longestStep = step;
            longest = bench::longer(longest, spent);
        }
        bench::tell(what, longest);
        return longestStep;
    }

    bench::WatchedApplication& application_;
    SystemClock clock_;
    SecureRandom random_;
    app::AppEnvironment environment_;
    app::Commands commands_{environment_.preferences()};
    app::MainWindow window_{environment_, commands_};
    std::vector<Uuid> trashed_;
};

}  // namespace

int main(int count, char** words) {
    bench::WatchedApplication application(count, words);
    const app::Theme theme(application);
    const QStringList arguments = QApplication::arguments();
    const QTemporaryDir folder;
    std::string library = arguments.value(2).toStdString();
    if (arguments.value(1) != "--library") {
        library = folder.filePath("Library").toStdString();
        bench::makeIndexedLibrary(library, arguments.value(1, "100000").toULongLong());
    }
    BrowseBench bench(application, library);
    bench.scroll();
    bench.visitPlaces();
    bench.search();
    bench.pick("go.switcher", "typed into the switcher");
    bench.pick("go.palette", "typed into the palette");
    bench.change();
    return 0;
}
