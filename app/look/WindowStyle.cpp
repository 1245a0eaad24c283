#include "app/look/WindowStyle.h"

#include "app/look/Icon.h"
#include "app/look/Theme.h"

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QEvent>
#include <QPainter>
#include <QPlainTextEdit>
#include <QStyleFactory>
#include <QStyleOption>

#include <algorithm>
#include <optional>

namespace tesserine::app {
namespace {

constexpr int scrollBarWidth = 10;
constexpr int shortestThumb = 32;
constexpr int boxRadius = 4;
constexpr int arrowSide = 14;  // of a combo box

bool has(const QStyleOption& option, QStyle::StateFlag flag) { return option.state.testFlag(flag); }

QColor mixed(const QColor& one, const QColor& other, double share) {
    const auto part = [share](float a, float b) {
        return static_cast<float>(a * (1 - share) + b * share);
    };
    return QColor::fromRgbF(
        part(one.redF(), other.redF()),
        part(one.greenF(), other.greenF()),
        part(one.blueF(), other.blueF()));
}

/// The border of what can be pressed or typed into: stronger than a line between panes.
QColor borderColor(const QStyleOption& option) {
    const Colors& colors = Theme::colors();
    if (has(option, QStyle::State_HasFocus)) return colors.accent;
    const double strength = has(option, QStyle::State_Enabled) ? 0.35 : 0.1;
    return mixed(colors.line, colors.secondaryText, strength);
}

void drawBox(
    QPainter& painter, const QStyleOption& option, const QColor& fill, const QColor& border) {
    const qreal width = has(option, QStyle::State_HasFocus) ? 1.5 : 1;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(border, width));
    painter.setBrush(fill);
    const qreal inset = width / 2;
    painter.drawRoundedRect(
        QRectF(option.rect).adjusted(inset, inset, -inset, -inset), cornerRadius, cornerRadius);
    painter.restore();
}

void fillBox(QPainter& painter, const QRect& area, const QColor& fill) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(area, cornerRadius, cornerRadius);
    painter.restore();
}

/// The part that is done, from where the reading begins.
void fillDone(QPainter& painter, const QStyleOptionProgressBar& bar, const QColor& fill) {
    const double share =
        static_cast<double>(bar.progress - bar.minimum) / (bar.maximum - bar.minimum);
    QRect done = bar.rect;
    done.setWidth(static_cast<int>(share * done.width()));
    fillBox(painter, QStyle::visualRect(bar.direction, bar.rect, done), fill);
}

bool isDefault(const QStyleOption& option) {
    const auto* const button = qstyleoption_cast<const QStyleOptionButton*>(&option);
    return button && button->features.testFlag(QStyleOptionButton::DefaultButton)
           && has(option, QStyle::State_Enabled);
}

bool isFlat(const QStyleOption& option) {
    const auto* const button = qstyleoption_cast<const QStyleOptionButton*>(&option);
    return button && button->features.testFlag(QStyleOptionButton::Flat);
}

void drawButton(QPainter& painter, const QStyleOption& option) {
    const Colors& colors = Theme::colors();
    const bool isPressed = has(option, QStyle::State_Sunken) || has(option, QStyle::State_On);
    const bool isHovered = has(option, QStyle::State_MouseOver);
    if (isDefault(option)) {
        const double change = isPressed ? 0.2 : isHovered ? 0.1 : 0;
        const QColor fill = mixed(colors.accent, colors.text, change);
        drawBox(painter, option, fill, has(option, QStyle::State_HasFocus) ? colors.text : fill);
        return;
    }
    const QColor fill = isPressed ? colors.selection : isHovered ? colors.hover : colors.raised;
    drawBox(painter, option, fill, borderColor(option));
}

void drawToolButton(QPainter& painter, const QStyleOption& option) {
    const Colors& colors = Theme::colors();
    const bool isOn = has(option, QStyle::State_Sunken) || has(option, QStyle::State_On);
    const bool isHovered = has(option, QStyle::State_MouseOver);
    const bool isFocused = has(option, QStyle::State_HasFocus);
    const bool isFlat = has(option, QStyle::State_AutoRaise);
    if (isFlat && !isOn && !isFocused && !(isHovered && has(option, QStyle::State_Enabled))) return;
    const QColor fill = isOn        ? colors.selection
                        : isHovered ? colors.hover
                                    : QColor(Qt::transparent);
    drawBox(painter, option, fill, isFocused ? colors.accent : isFlat ? fill : borderColor(option));
}

/// The ground of a check box or radio button; what is checked is filled.
void drawMarkGround(QPainter& painter, const QStyleOption& option, qreal radius, bool isChecked) {
    const Colors& colors = Theme::colors();
    const bool isEnabled = has(option, QStyle::State_Enabled);
    const QColor checked = isEnabled ? colors.accent : colors.secondaryText;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(isChecked ? checked : borderColor(option), 1.25));
    painter.setBrush(isChecked ? checked : colors.raised);
    painter.drawRoundedRect(QRectF(option.rect).adjusted(1, 1, -1, -1), radius, radius);
}

void drawCheckBox(QPainter& painter, const QStyleOption& option) {
    const bool isPartly = has(option, QStyle::State_NoChange);
    const bool isChecked = has(option, QStyle::State_On) || isPartly;
    painter.save();
    drawMarkGround(painter, option, boxRadius, isChecked);
    if (isChecked) {
        const QRect inner = option.rect.adjusted(2, 2, -2, -2);
        icon(isPartly ? "minus" : "check", Theme::colors().onAccent).paint(&painter, inner);
    }
    painter.restore();
}

void drawRadioButton(QPainter& painter, const QStyleOption& option) {
    const bool isChecked = has(option, QStyle::State_On);
    painter.save();
    drawMarkGround(painter, option, option.rect.height() / 2.0, isChecked);
    if (isChecked) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(Theme::colors().onAccent);
        const qreal inset = option.rect.width() * 0.32;
        painter.drawEllipse(QRectF(option.rect).adjusted(inset, inset, -inset, -inset));
    }
    painter.restore();
}

void drawScrollBar(QPainter& painter, const QStyleOption& option, const QRect& thumb) {
    const Colors& colors = Theme::colors();
    const bool isHeld = has(option, QStyle::State_Sunken) || has(option, QStyle::State_MouseOver);
    const bool isUpright = !has(option, QStyle::State_Horizontal);
    if (!has(option, QStyle::State_Enabled)) return;
    const QRect slim = isUpright ? thumb.adjusted(2, 1, -2, -1) : thumb.adjusted(1, 2, -1, -2);
    const qreal radius = (isUpright ? slim.width() : slim.height()) / 2.0;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(mixed(colors.line, colors.secondaryText, isHeld ? 0.6 : 0.25));
    painter.drawRoundedRect(slim, radius, radius);
    painter.restore();
}

/// Where the thumb of a scroll bar stands, as read from left to right. It may stand anywhere in the
/// bar: there are no arrows.
QRect thumbOf(const QStyleOptionSlider& bar) {
    const bool isUpright = bar.orientation == Qt::Vertical;
    const int room = isUpright ? bar.rect.height() : bar.rect.width();
    const qint64 range = qint64{bar.maximum} - bar.minimum;
    const auto share = room * qint64{bar.pageStep} / std::max<qint64>(range + bar.pageStep, 1);
    const int length =
        range > 0 ? std::clamp(static_cast<int>(share), std::min(shortestThumb, room), room) : room;
    const int at = QStyle::sliderPositionFromValue(
        bar.minimum, bar.maximum, bar.sliderPosition, room - length, bar.upsideDown);
    const QRect thumb = isUpright ? QRect(0, at, bar.rect.width(), length)
                                  : QRect(at, 0, length, bar.rect.height());
    return thumb.translated(bar.rect.topLeft());
}

void drawComboBox(QPainter& painter, const QStyleOptionComboBox& box) {
    drawButton(painter, box);
    const QRect arrow(
        box.rect.right() - arrowSide - space::small,
        box.rect.center().y() - arrowSide / 2 + 1,
        arrowSide,
        arrowSide);
    const auto mode = has(box, QStyle::State_Enabled) ? QIcon::Normal : QIcon::Disabled;
    icon("chevron-down", Ink::secondary)
        .paint(&painter, QStyle::visualRect(box.direction, box.rect, arrow), Qt::AlignCenter, mode);
}

/// Flat, like everything else; the chosen one stands out by its ground and a line below.
void drawTab(QPainter& painter, const QStyleOption& tab) {
    const Colors& colors = Theme::colors();
    const bool isChosen = has(tab, QStyle::State_Selected);
    if (!isChosen && !has(tab, QStyle::State_MouseOver)) return;
    painter.fillRect(tab.rect, isChosen ? colors.surface : colors.hover);
    const int height = space::hair;
    const QRect line(tab.rect.left(), tab.rect.bottom() + 1 - height, tab.rect.width(), height);
    if (isChosen) painter.fillRect(line, colors.accent);
}

void drawTabCloser(QPainter& painter, const QStyleOption& option) {
    if (has(option, QStyle::State_MouseOver)) {
        fillBox(painter, option.rect, Theme::colors().hover);
    }
    icon("close", Ink::secondary).paint(&painter, option.rect.adjusted(1, 1, -1, -1));
}

void drawMenuBarItem(QPainter& painter, const QStyleOptionMenuItem& item, bool showsMnemonic) {
    const Colors& colors = Theme::colors();
    painter.fillRect(item.rect, colors.window);
    if (has(item, QStyle::State_Selected)) {
        const bool isOpen = has(item, QStyle::State_Sunken);
        const QRect patch = item.rect.adjusted(1, 1, -1, -1);
        fillBox(painter, patch, isOpen ? colors.selection : colors.hover);
    }
    painter.setPen(has(item, QStyle::State_Enabled) ? colors.text : colors.secondaryText);
    const int mnemonic = showsMnemonic ? Qt::TextShowMnemonic : Qt::TextHideMnemonic;
    painter.drawText(
        item.rect, static_cast<int>(Qt::AlignCenter) | Qt::TextSingleLine | mnemonic, item.text);
}

}  // namespace

WindowStyle::WindowStyle() : QProxyStyle(QStyleFactory::create("Fusion")) {}

void WindowStyle::polish(QWidget* widget) {
    QProxyStyle::polish(widget);
    const bool isTurned = qobject_cast<QComboBox*>(widget) != nullptr
                          || qobject_cast<QAbstractSpinBox*>(widget) != nullptr;
    if (isTurned) widget->installEventFilter(this);
    // The text would cover the corners of its frame, which fills the ground instead.
    const auto* const text = qobject_cast<QPlainTextEdit*>(widget);
    if (text != nullptr && text->frameShape() != QFrame::NoFrame) {
        text->viewport()->setAutoFillBackground(false);
    }
}

/// Whoever scrolls a page of settings does not mean to change the one below the pointer.
bool WindowStyle::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::Wheel) return QProxyStyle::eventFilter(watched, event);
    event->ignore();  // goes on to the page
    return true;
}

void WindowStyle::drawPrimitive(
    PrimitiveElement element,
    const QStyleOption* option,
    QPainter* painter,
    const QWidget* widget) const {
    switch (element) {
    case PE_PanelButtonCommand: return drawButton(*painter, *option);
    case PE_PanelButtonTool: return drawToolButton(*painter, *option);
    case PE_IndicatorCheckBox: return drawCheckBox(*painter, *option);
    case PE_IndicatorRadioButton: return drawRadioButton(*painter, *option);
    case PE_IndicatorTabClose: return drawTabCloser(*painter, *option);
    case PE_FrameTabBarBase: return;
    case PE_FrameLineEdit: return drawBox(*painter, *option, Qt::transparent, borderColor(*option));
    case PE_PanelLineEdit: {
        const auto* const frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
        if (!frame || frame->lineWidth == 0) break;
        return drawBox(*painter, *option, Theme::colors().raised, borderColor(*option));
    }
    case PE_Frame: {
        if (!widget || !widget->inherits("QPlainTextEdit")) break;
        return drawBox(*painter, *option, Theme::colors().raised, borderColor(*option));
    }
    case PE_PanelItemViewItem: {
        const bool isSelected = has(*option, State_Selected);
        if (!isSelected && !has(*option, State_MouseOver)) return;
        const Colors& colors = Theme::colors();
        return fillBox(*painter, option->rect, isSelected ? colors.selection : colors.hover);
    }
    case PE_FrameFocusRect: {
        const auto isA = [widget](const char* type) { return widget && widget->inherits(type); };
        if (isA("QPushButton") || isA("QComboBox")) return;  // framed themselves
        if (isA("QAbstractItemView")) return;                // the selection shows it
        return drawBox(*painter, *option, Qt::transparent, Theme::colors().accent);
    }
    default: break;
    }
    QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void WindowStyle::drawControl(
    ControlElement element,
    const QStyleOption* option,
    QPainter* painter,
    const QWidget* widget) const {
    const Colors& colors = Theme::colors();
    if (element == CE_ToolBar) return;  // stands on the ground of its window
    if (element == CE_TabBarTabShape) return drawTab(*painter, *option);
    if (element == CE_PushButtonBevel && isFlat(*option) && has(*option, State_HasFocus)) {
        drawBox(*painter, *option, Qt::transparent, colors.accent);
    }
    if (element == CE_PushButtonLabel && isDefault(*option)) {
        QStyleOptionButton button(*qstyleoption_cast<const QStyleOptionButton*>(option));
        button.palette.setColor(QPalette::ButtonText, colors.onAccent);
        return QProxyStyle::drawControl(element, &button, painter, widget);
    }
    if (element == CE_MenuBarEmptyArea) return painter->fillRect(option->rect, colors.window);
    const auto* const item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    if (item && element == CE_MenuBarItem) {
        const bool showsMnemonic = proxy()->styleHint(SH_UnderlineShortcut, option, widget) != 0;
        return drawMenuBarItem(*painter, *item, showsMnemonic);
    }
    if (item && element == CE_MenuItem) {
        QStyleOptionMenuItem quiet(*item);
        quiet.palette.setColor(QPalette::Highlight, colors.selection);
        quiet.palette.setColor(QPalette::HighlightedText, colors.text);
        return QProxyStyle::drawControl(element, &quiet, painter, widget);
    }
    if (const auto* row = qstyleoption_cast<const QStyleOptionViewItem*>(option)) {
        QStyleOptionViewItem quiet(*row);
        quiet.palette.setColor(QPalette::HighlightedText, colors.text);
        return QProxyStyle::drawControl(element, &quiet, painter, widget);
    }
    if (element == CE_ProgressBarGroove) return fillBox(*painter, option->rect, colors.hover);
    const auto* const bar = qstyleoption_cast<const QStyleOptionProgressBar*>(option);
    const bool isMeasured = bar && element == CE_ProgressBarContents && bar->maximum > bar->minimum;
    if (isMeasured) return fillDone(*painter, *bar, colors.accent);
    QProxyStyle::drawControl(element, option, painter, widget);
}

void WindowStyle::drawComplexControl(
    ComplexControl control,
    const QStyleOptionComplex* option,
    QPainter* painter,
    const QWidget* widget) const {
    if (control == CC_ScrollBar) {
        return drawScrollBar(
            *painter, *option, subControlRect(control, option, SC_ScrollBarSlider, widget));
    }
    const auto* const box = qstyleoption_cast<const QStyleOptionComboBox*>(option);
    if (control == CC_ComboBox && box && !box->editable) return drawComboBox(*painter, *box);
    QProxyStyle::drawComplexControl(control, option, painter, widget);
}

QRect WindowStyle::subControlRect(
    ComplexControl control,
    const QStyleOptionComplex* option,
    SubControl part,
    const QWidget* widget) const {
    const auto* const box = qstyleoption_cast<const QStyleOptionComboBox*>(option);
    if (control == CC_ComboBox && part == SC_ComboBoxEditField && box && !box->editable) {
        const int behind = arrowSide + 2 * space::small;
        return visualRect(
            box->direction, box->rect, box->rect.adjusted(space::small, 0, -behind, 0));
    }
    const auto* const bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (control != CC_ScrollBar || !bar) {
        return QProxyStyle::subControlRect(control, option, part, widget);
    }
    const QRect thumb = thumbOf(*bar);
    QRect area = bar->rect;
    const bool isUpright = bar->orientation == Qt::Vertical;
    switch (part) {
    case SC_ScrollBarSlider: area = thumb; break;
    case SC_ScrollBarGroove: break;
    case SC_ScrollBarSubPage:
        isUpright ? area.setBottom(thumb.top() - 1) : area.setRight(thumb.left() - 1);
        break;
    case SC_ScrollBarAddPage:
        isUpright ? area.setTop(thumb.bottom() + 1) : area.setLeft(thumb.right() + 1);
        break;
    default: return {};  // no arrows
    }
    return visualRect(bar->direction, bar->rect, area);
}

QRect WindowStyle::subElementRect(
    SubElement element, const QStyleOption* option, const QWidget* widget) const {
    const QRect area = QProxyStyle::subElementRect(element, option, widget);
    const auto* const frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
    const bool isField = element == SE_LineEditContents && frame && frame->lineWidth > 0;
    return isField ? area.adjusted(space::tiny, 0, -space::tiny, 0) : area;
}

int WindowStyle::pixelMetric(
    PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
    switch (metric) {
    case PM_ScrollBarExtent: return scrollBarWidth;
    case PM_ScrollBarSliderMin: return shortestThumb;
    case PM_IndicatorWidth:
    case PM_IndicatorHeight:
    case PM_ExclusiveIndicatorWidth:
    case PM_ExclusiveIndicatorHeight: return 18;
    case PM_ButtonMargin: return space::medium;
    case PM_MessageBoxIconSize: return 32;
    case PM_ToolBarFrameWidth:
    case PM_TabBarTabShiftVertical:
    case PM_TabBarTabShiftHorizontal:
    case PM_TabBarTabOverlap: return 0;
    default: return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

QSize WindowStyle::sizeFromContents(
    ContentsType type, const QStyleOption* option, const QSize& size, const QWidget* widget) const {
    QSize result = QProxyStyle::sizeFromContents(type, option, size, widget);
    constexpr int leastHeight = 30;
    const bool isControl =
        type == CT_PushButton || type == CT_LineEdit || type == CT_ComboBox || type == CT_SpinBox;
    const auto* const frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
    const bool isBare = frame && frame->lineWidth == 0;
    if (isControl && !isBare) result.setHeight(std::max(result.height(), leastHeight));
    if (type == CT_PushButton) result.rwidth() += space::medium;
    if (type == CT_ComboBox) result.rwidth() += space::huge;
    if (type == CT_TabBarTab) result.setHeight(std::max(result.height(), leastHeight));
    if (type == CT_MenuItem) result.rheight() += space::hair;
    return result;
}

QIcon WindowStyle::standardIcon(
    StandardPixmap picture, const QStyleOption* option, const QWidget* widget) const {
    switch (picture) {
    // Otherwise every icon theme of the desktop would be searched for it before the first paint.
    case SP_LineEditClearButton: return icon("close", Ink::secondary);
    case SP_ToolBarHorizontalExtensionButton: return icon("more");  // theirs is black
    case SP_MessageBoxWarning: return icon("warning", Ink::warning);
    case SP_MessageBoxQuestion: return icon("help", Ink::accent);
    default: return QProxyStyle::standardIcon(picture, option, widget);
    }
}

int WindowStyle::styleHint(
    StyleHint hint,
    const QStyleOption* option,
    const QWidget* widget,
    QStyleHintReturn* returned) const {
    // A click into the groove goes there.
    if (hint == SH_ScrollBar_LeftClickAbsolutePosition) return 1;
    // The style beneath would put coloured pictures of its own on "Cancel" and "Save".
    if (hint == SH_DialogButtonBox_ButtonsHaveIcons) return 0;
    // It would also draw what cannot be chosen twice, in light and dark.
    if (hint == SH_EtchDisabledText) return 0;
    return QProxyStyle::styleHint(hint, option, widget, returned);
}

}  // namespace tesserine::app
