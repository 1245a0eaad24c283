#include "app/look/Icon.h"

#include "app/look/Theme.h"

#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QSet>
#include <QSvgRenderer>

#include <cassert>
#include <optional>

/// Drawings in a static library are linked in only when somebody asks for them, outside namespaces.
static void linkDrawings() { Q_INIT_RESOURCE(icons); }

namespace tesserine::app {
namespace {

QColor colorOf(Ink ink) {
    const Colors& colors = Theme::colors();
    switch (ink) {
    case Ink::text: return colors.text;
    case Ink::secondary: return colors.secondaryText;
    case Ink::accent: return colors.accent;
    case Ink::onAccent: return colors.onAccent;
    case Ink::danger: return colors.danger;
    case Ink::warning: return colors.warning;
    case Ink::success: return colors.success;
    }
    return colors.text;
}

QString pathOf(const QString& name) {
    [[maybe_unused]] static const bool areLinked = (linkDrawings(), true);
    return ":/icons/" + name + ".svg";
}

QByteArray drawingIn(const QString& name, const QColor& color) {
    QFile file(pathOf(name));
    const bool isThere = file.open(QIODevice::ReadOnly);
    assert(isThere && "icons are named as their files are");
    return isThere ? file.readAll().replace("currentColor", color.name().toLatin1()) : QByteArray();
}

/// Whether a drawing shows where reading goes, and turns round where that is from right to left.
bool isMirrored(const QString& name) {
    static const QSet<QString> directed{
        "back", "forward", "chevron-left", "chevron-right", "indent", "outdent", "sidebar"};
    return QGuiApplication::isRightToLeft() && directed.contains(name);
}

QPixmap drawn(const QString& name, const QColor& color, const QSize& size) {
    const bool isTurned = isMirrored(name);
    const QString key = QString("%1 %2 %3 %4 %5")
                            .arg(name, color.name())
                            .arg(size.width())
                            .arg(size.height())
                            .arg(isTurned);
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap)) return pixmap;

    pixmap = QPixmap(size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    if (isTurned) painter.setTransform({-1, 0, 0, 1, qreal(size.width()), 0});
    QSvgRenderer renderer(drawingIn(name, color));
    renderer.setAspectRatioMode(Qt::KeepAspectRatio);
    renderer.render(&painter);
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

/// Draws one icon of the set in the colour of the moment.
class TintedIcon final : public QIconEngine {
public:
    TintedIcon(QString name, Ink ink, std::optional<QColor> color = {})
        : name_(std::move(name)), ink_(ink), color_(color) {}

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        const bool isFaded = mode == QIcon::Disabled;
        QPixmap full = drawn(name_, isFaded ? colorOf(Ink::secondary) : color(state), size);
        if (!isFaded) return full;

        QPixmap faded(size);
        faded.fill(Qt::transparent);
        QPainter painter(&faded);
        painter.setOpacity(0.45);
        painter.drawPixmap(0, 0, full);
        return faded;
    }

    void paint(
        QPainter* painter, const QRect& area, QIcon::Mode mode, QIcon::State state) override {
        // At 1.25 and the like an area begins and ends between pixels of the screen: the drawing
        // takes the whole pixels nearest to it, or it would be stretched.
        const QTransform toScreen = painter->deviceTransform();
        const QRect pixels = toScreen.mapRect(QRectF(area)).toRect();
        QPixmap full = pixmap(pixels.size(), mode, state);
        full.setDevicePixelRatio(toScreen.m11());
        painter->drawPixmap(toScreen.inverted().map(QPointF(pixels.topLeft())), full);
    }

    QIconEngine* clone() const override { return new TintedIcon(*this); }

private:
    QColor color(QIcon::State state) const {
        if (color_) return *color_;
        return colorOf(state == QIcon::On && ink_ == Ink::text ? Ink::accent : ink_);
    }

    QString name_;
    Ink ink_;
    std::optional<QColor> color_;
};

}  // namespace

QIcon icon(const QString& name, Ink ink) { return QIcon(new TintedIcon(name, ink)); }

QIcon icon(const QString& name, const QColor& color) {
    return QIcon(new TintedIcon(name, Ink::text, color));
}

QIcon programIcon() { return QIcon(pathOf("tesserine")); }

}  // namespace tesserine::app
