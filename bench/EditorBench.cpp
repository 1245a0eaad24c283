// How long the thread of the window is busy at a time while a long note is opened, written in,
// saved, resized and zoomed. What a person waits for is the longest of these times, not their sum.
//
// The second column is the time that the thread had a processor: what is left of the first one on
// a machine that does nothing else.
//
// Usage: tesserine-editor-bench [WORDS] [KEYS]

#include "app/commands/Commands.h"
#include "app/editor/BodyEdit.h"
#include "app/editor/NoteEditor.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "base/Clock.h"
#include "base/Random.h"
#include "bench/EventWatch.h"
#include "bench/GeneratedBody.h"
#include "bench/Measure.h"
#include "core/model/NoteEntities.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTextCursor>

#include <iostream>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace tesserine;
using namespace tesserine::bench;

constexpr std::size_t bytesPerWord = 6;

/// Tells when the words of a note were painted.
class PaintWatch final : public QObject {
public:
    explicit PaintWatch(app::BodyEdit& body) : body_(body) {
        body.viewport()->installEventFilter(this);
    }
    bool isPainted = false;

private:
    bool eventFilter(QObject* watched, QEvent* event) override {
        isPainted |= event->type() == QEvent::Paint && !body_.document()->isEmpty();
        return QObject::eventFilter(watched, event);
    }

    app::BodyEdit& body_;
};

std::string longBody(std::size_t words) {
    bench::Dice dice(11);
    const bench::Vocabulary vocabulary(7, 8000);
    bench::GeneratedBody body(dice, vocabulary, [] {
        return bench::GeneratedBody::Target{Uuid(), "Garden"};
    });
    body.write(words * bytesPerWord);
    return body.html();
}

/// A window with nothing but an editor, and one long note in it.
class EditorBench {
public:
    EditorBench(WatchedApplication& application, const std::string& folder, std::string body)
        : application_(application),
          environment_(
              {.clock = clock_,
               .random = random_,
               .zone = "UTC",
               .locale = "en_GB",
               .library = folder + "/Library",
               .preferencesFile = folder + "/preferences.json"}) {
        StoreContext& context = environment_.context();
        const NoteService& notes = environment_.notes();
        note_ = *notes.createNote(context, {.title = "Long", .html = std::move(body)}).id;
        context.save();
        environment_.startWork();
        environment_.waitForBackground();
        editor_.resize(1000, 800);
        editor_.show();
        QApplication::setActiveWindow(&editor_);
        runFor(1);
    }

    void open() {
        PaintWatch watch(editor_.body());
        application_.takeLongest();
        const Spent called = spentIn([&] { editor_.open(note_); });
        const Spent painted = spentIn([&] { runUntil([&] { return watch.isPainted; }); });
        const Spent loaded =
            spentIn([&] { runUntil([&] { return !editor_.body().isLoading(); }); });
        tell("opened: call returns", called);
        tell("opened: first screenful", sum(called, painted));
        tell("opened: all of it", sum(sum(called, painted), loaded));
        runFor(1);
        tell("opened: longest event", application_.takeLongest());
    }

    /// Writes in the middle of the note, and waits until nothing is left to do after each key.
    void type(int keys) {
        BodyEdit& body = editor_.body();
        QTextCursor middle(&body.note());
        middle.setPosition(body.note().characterCount() / 2);
        body.setTextCursor(middle);
        body.setFocus();
        runFor(2);
        std::vector<double> times;
        std::vector<double> work;
        application_.takeLongest();
        for (int i = 0; i < keys; ++i) {
            const bool isSpace = i % 6 == 5;
            const Spent spent = spentIn([&] {
                pressKey(
                    body,
                    isSpace ? Qt::Key_Space : Qt::Key_A,
                    isSpace ? QString(" ") : QString("a"));
                QCoreApplication::processEvents();
            });
            times.push_back(spent.time);
            work.push_back(spent.work);
            runFor(0.03);
        }
        for (const auto& [which, share] :
             {std::pair("median", 0.5), {"99 of 100", 0.99}, {"longest", 1.0}}) {
            tell(
                std::string("typed: a key, ") + which,
                {bench::quantile(times, share), bench::quantile(work, share)});
        }
        runFor(3);
        tell("typed and saved meanwhile: longest event", application_.takeLongest());
    }

    void save() {
        pressKey(editor_.body(), Qt::Key_B, "b");
        tell("saved: on leaving", spentIn([&] { editor_.save(); }));
        bool isSaved = false;
        QObject::connect(&editor_, &app::NoteEditor::saved, &editor_, [&] { isSaved = true; });
        pressKey(editor_.body(), Qt::Key_B, "b");
        application_.takeLongest();
        runUntil([&] { return isSaved; });
        runFor(0.5);
        tell("saved: while writing, longest event", application_.takeLongest());
    }

    /// Looks for one letter after another, and replaces what is in the note very often.
    void findAndReplace() {
        commands_.trigger("find.replace");
        auto& sought = *editor_.findChild<QLineEdit*>("findField");
        Spent longest;
        for (const char* words : {"t", "th", "the", "zzz"}) {
            longest = longer(longest, spentIn([&] { sought.setText(words); }));
            runFor(0.1);
        }
        tell("sought: a letter, longest", longest);
        sought.setText("a");
        editor_.findChild<QLineEdit*>("replaceField")->setText("o");
        auto& all = *editor_.findChild<QPushButton*>("replaceAll");
        tell("every “a” replaced", spentIn([&] { all.click(); }));
        std::cout
            << "  "
            << editor_.findChild<QWidget*>("findBar")->findChild<QLabel*>()->text().toStdString()
            << "\n";
        tell("and taken back", spentIn([&] { commands_.trigger("edit.undo"); }));
        editor_.findChild<QWidget*>("findBar")->hide();
        runFor(3);
    }

    /// Makes the window narrower and wider, and the words larger and smaller, while one end of the
    /// note is seen.
    void resizeAndZoom(const std::string& place, QTextCursor::MoveOperation end) {
        editor_.body().moveCursor(end);
        runFor(1);
        const auto longest = [&](const std::string& what, int steps, const auto& step) {
            application_.takeLongest();
            Spent called;
            for (int i = 0; i < steps; ++i) {
                called = longer(called, spentIn([&] { step(i); }));
                runFor(0.05);
            }
            tell(place + what, longer(called, application_.takeLongest()));
            runFor(2);
            tell("  and once it rests", application_.takeLongest());
        };
        longest(": resized in 20 steps", 20, [&](int i) { editor_.resize(980 - 20 * i, 800); });
        longest(": resized at once", 1, [&](int /*i*/) { editor_.resize(1000, 800); });
        longest(": zoomed in 5 steps", 5, [&](int /*i*/) { commands_.trigger("view.zoomIn"); });
        longest(": zoomed at once", 1, [&](int /*i*/) { commands_.trigger("view.zoomReset"); });
    }

private:
    using BodyEdit = app::BodyEdit;

    WatchedApplication& application_;
    SystemClock clock_;
    SecureRandom random_;
    app::AppEnvironment environment_;
    app::Commands commands_{environment_.preferences()};
    app::NoteEditor editor_{environment_, commands_};
    Uuid note_;
};

}  // namespace

int main(int count, char** words) {
    WatchedApplication application(count, words);
    const app::Theme theme(application);
    const QStringList arguments = QApplication::arguments();
    const QTemporaryDir folder;
    EditorBench bench(
        application,
        folder.path().toStdString(),
        longBody(arguments.value(1, "100000").toULongLong()));
    bench.open();
    bench.type(arguments.value(2, "300").toInt());
    bench.save();
    bench.findAndReplace();
    bench.resizeAndZoom("top", QTextCursor::Start);
    bench.resizeAndZoom("end", QTextCursor::End);
    return 0;
}
