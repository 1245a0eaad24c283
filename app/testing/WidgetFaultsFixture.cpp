#include "app/testing/WidgetFaultsFixture.h"

#include <gtest/gtest.h>
#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QWidget>

namespace tesserine::test {
namespace {

std::string described(const QWidget& widget) {
    QString name = widget.objectName();
    if (const auto* label = qobject_cast<const QLabel*>(&widget))
        name += " “" + label->text() + "”";
    if (const auto* button = qobject_cast<const QAbstractButton*>(&widget)) {
        name += " “" + button->text() + "”";
    }
    const QString parent = widget.parentWidget() ? widget.parentWidget()->objectName() : QString();
    return std::string(widget.metaObject()->className()) + " " + name.toStdString() + " in "
           + parent.toStdString();
}

/// What scrolls may be higher than its viewport, but not wider: nobody scrolls sideways to read.
bool standsOut(const QWidget& widget) {
    const QWidget& parent = *widget.parentWidget();
    const auto* area = qobject_cast<const QAbstractScrollArea*>(parent.parentWidget());
    if (area == nullptr || area->viewport() != &parent) {
        // Splitters that are read from right to left are a pixel off.
        return !parent.rect().adjusted(-1, 0, 1, 0).contains(widget.geometry());
    }
    const bool scrollsSideways = area->horizontalScrollBarPolicy() != Qt::ScrollBarAlwaysOff;
    return !scrollsSideways && widget.width() > parent.width();
}

bool isCut(const QWidget& widget) {
    if (const auto* label = qobject_cast<const QLabel*>(&widget)) {
        if (label->text().isEmpty()) return false;
        const bool wraps = label->wordWrap();
        return wraps ? label->height() < label->heightForWidth(label->width())
                     : label->width() < label->minimumSizeHint().width();
    }
    const auto* button = qobject_cast<const QAbstractButton*>(&widget);
    if (button == nullptr || button->text().isEmpty()) return false;
    const QSize needed = button->minimumSizeHint();
    return button->width() < needed.width() || button->height() < needed.height();
}

template <class Judge>
std::string faultsOf(const QWidget& window, Judge judge) {
    std::string faults;
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        if (!widget->isVisibleTo(&window) || widget->isWindow()) continue;
        const std::string fault = judge(*widget);
        if (!fault.empty()) faults += described(*widget) + " " + fault + "\n";
    }
    return faults;
}

}  // namespace

std::string layoutFaults(const QWidget& window) {
    return faultsOf(window, [](const QWidget& widget) -> std::string {
        if (isCut(widget)) return "is cut";
        if (!widget.size().isEmpty() && standsOut(widget)) return "stands out";
        return {};
    });
}

std::string namelessControls(const QWidget& window) {
    return faultsOf(window, [](const QWidget& widget) -> std::string {
        const bool takesKeys = widget.focusPolicy() != Qt::NoFocus && !widget.focusProxy();
        const bool isPart = qobject_cast<const QScrollBar*>(&widget) != nullptr
                            || qobject_cast<const QComboBox*>(widget.parentWidget()) != nullptr;
        if (!takesKeys || isPart) return {};
        auto* const told = QAccessible::queryAccessibleInterface(const_cast<QWidget*>(&widget));
        const bool isNamed = told != nullptr && !told->text(QAccessible::Name).isEmpty();
        return isNamed ? std::string() : "has no name";
    });
}

void forReaders(
    std::initializer_list<double> scales, const std::function<void(double scale)>& judge) {
    const QFont usual = QApplication::font();
    for (const double scale : scales) {
        QFont font = usual;
        font.setPointSizeF(usual.pointSizeF() * scale);
        QApplication::setFont(font);
        for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
            QApplication::setLayoutDirection(direction);
            SCOPED_TRACE(
                std::to_string(scale)
                + (direction == Qt::LeftToRight ? " left to right" : " right to left"));
            judge(scale);
        }
    }
    QApplication::setFont(usual);
    QApplication::setLayoutDirection(Qt::LeftToRight);
}

}  // namespace tesserine::test
