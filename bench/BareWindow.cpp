// What the first window is measured beside: a program of the toolkit alone, whose window is empty
// or shows one line of text. The empty one needs no fonts, which every other window does.
//
// Usage: tesserine-bare-window [TEXT] SETTLING_MILLISECONDS MICROSECONDS_AT_START

#include "bench/PaintReport.h"

#include <QApplication>
#include <QLabel>
#include <QMainWindow>

int main(int count, char** words) {
    QApplication application(count, words);
    QMainWindow window;
    window.resize(1240, 800);
    QStringList arguments = QApplication::arguments();
    const qint64 begun = arguments.takeLast().toLongLong();
    const std::chrono::milliseconds settling(arguments.takeLast().toInt());
    if (arguments.size() > 1) window.setCentralWidget(new QLabel(arguments.last()));
    tesserine::bench::reportFirstPaint(begun, settling);
    window.show();
    return QApplication::exec();
}
