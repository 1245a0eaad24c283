#pragma once

#include <QProxyStyle>

namespace tesserine::app {

/// Draws buttons, fields, menus and scroll bars flat, with rounded corners, in the colours of the
/// theme; what has the focus is framed in the accent. All measures it leaves to the style below.
class WindowStyle final : public QProxyStyle {
public:
    WindowStyle();

    using QProxyStyle::polish;
    void polish(QWidget* widget) override;
    void drawPrimitive(
        PrimitiveElement element,
        const QStyleOption* option,
        QPainter* painter,
        const QWidget* widget) const override;
    void drawControl(
        ControlElement element,
        const QStyleOption* option,
        QPainter* painter,
        const QWidget* widget) const override;
    void drawComplexControl(
        ComplexControl control,
        const QStyleOptionComplex* option,
        QPainter* painter,
        const QWidget* widget) const override;
    QRect subControlRect(
        ComplexControl control,
        const QStyleOptionComplex* option,
        SubControl part,
        const QWidget* widget) const override;
    QRect subElementRect(
        SubElement element, const QStyleOption* option, const QWidget* widget) const override;
    int pixelMetric(
        PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;
    QSize sizeFromContents(
        ContentsType type,
        const QStyleOption* option,
        const QSize& size,
        const QWidget* widget) const override;
    QIcon standardIcon(
        StandardPixmap picture, const QStyleOption* option, const QWidget* widget) const override;
    int styleHint(
        StyleHint hint,
        const QStyleOption* option,
        const QWidget* widget,
        QStyleHintReturn* returned) const override;

private:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

}  // namespace tesserine::app
