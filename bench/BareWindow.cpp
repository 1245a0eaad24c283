// What the first window is measured beside: a program of the toolkit alone, whose window is empty.
//
// Usage: tesserine-bare-window SETTLING_MILLISECONDS MICROSECONDS_AT_START

#include "bench/PaintReport.h"

#include <QApplication>
#include <QMainWindow>

int main(int count, char** words) {
    QApplication application(count, words);
    QMainWindow window;
    window.resize(1240, 800);
    const QStringList arguments = QApplication::arguments();
    tesserine::bench::reportFirstPaint(
        arguments.value(2).toLongLong(), std::chrono::milliseconds(arguments.value(1).toInt()));
    window.show();
    return QApplication::exec();
}
