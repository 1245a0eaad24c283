#include "app/commands/KeyCaps.h"

#include "app/look/Theme.h"

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>

namespace tesserine::app {
namespace {

constexpr int gap = 3;

/// "Ctrl+Shift+7" as its keys; the plus of "Ctrl++" is one of them.
QStringList capsOf(const QKeySequence& keys) {
    QString text = keys.toString(QKeySequence::NativeText);
    const bool endsInPlus = text.endsWith("++") || text == "+";
    if (endsInPlus) text.chop(1);
    QStringList caps = text.split('+', Qt::SkipEmptyParts);
    if (endsInPlus) caps.append("+");
    return caps;
}

}  // namespace

KeyCaps::KeyCaps(const QList<QKeySequence>& keys, QWidget* parent) : QWidget(parent) {
    setFont(Theme::font(TextRole::caption));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setKeys(keys);
}

void KeyCaps::setKeys(const QList<QKeySequence>& keys) {
    ways_.clear();
    for (const QKeySequence& one : keys) {
        ways_.append(capsOf(one));
    }
    updateGeometry();
    update();
}

int KeyCaps::capWidth(const QString& text) const {
    const int height = fontMetrics().height() + 2 * gap;
    return std::max(height, fontMetrics().horizontalAdvance(text) + 2 * space::small - gap);
}

QSize KeyCaps::sizeHint() const {
    int width = 0;
    for (const QStringList& caps : ways_) {
        if (width > 0) width += space::medium;
        for (const QString& cap : caps) {
            width += capWidth(cap) + gap;
        }
    }
    return {std::max(width - gap, 0) + 1, fontMetrics().height() + 2 * gap + 1};
}

void KeyCaps::paintEvent(QPaintEvent*) {
    const Colors& colors = Theme::colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal height = fontMetrics().height() + 2 * gap;
    qreal x = 0.5;
    bool isFirst = true;
    for (const QStringList& caps : ways_) {
        if (!isFirst) x += space::medium;
        isFirst = false;
        for (const QString& cap : caps) {
            const QRectF shape(x, 0.5, capWidth(cap) - 1, height - 1);
            painter.setPen(colors.line);
            painter.setBrush(colors.raised);
            painter.drawRoundedRect(shape, 4, 4);
            painter.setPen(colors.text);
            painter.drawText(shape, Qt::AlignCenter, cap);
            x += capWidth(cap) + gap;
        }
    }
}

}  // namespace tesserine::app
