#include "app/look/Theme.h"

#include "app/look/WindowStyle.h"

#include <QApplication>
#include <QEvent>
#include <QPalette>

namespace tesserine::app {
namespace {

Colors lightColors() {
    return {
        .isDark = false,
        .window = QColor(0xF3F2EF),
        .surface = QColor(0xFFFFFF),
        .raised = QColor(0xFFFFFF),
        .text = QColor(0x23211E),
        .secondaryText = QColor(0x625E57),
        .line = QColor(0xE0DED9),
        .hover = QColor(0xEBE9E4),
        .selection = QColor(0xDCE8E6),
        .accent = QColor(0x1F6F68),
        .onAccent = QColor(0xFFFFFF),
        .danger = QColor(0xB3261E),
        .warning = QColor(0x8A5A00),
        .success = QColor(0x2E6B34),
        .highlight = QColor(0xFBE7A1),
        .code = QColor(0xF4F3F0),
        .priority = {QColor(0xB3261E), QColor(0x8F5400), QColor(0x2A5DA8), QColor(0x8A867F)}};
}

Colors darkColors() {
    return {
        .isDark = true,
        .window = QColor(0x1E1E1D),
        .surface = QColor(0x252524),
        .raised = QColor(0x2E2E2C),
        .text = QColor(0xE9E7E2),
        .secondaryText = QColor(0xB1ADA5),
        .line = QColor(0x3A3937),
        .hover = QColor(0x32312F),
        .selection = QColor(0x25403D),
        .accent = QColor(0x6FC3B8),
        .onAccent = QColor(0x10201E),
        .danger = QColor(0xF08A80),
        .warning = QColor(0xE0B25C),
        .success = QColor(0x8CCB8F),
        .highlight = QColor(0x4A4019),
        .code = QColor(0x2E2E2C),
        .priority = {QColor(0xF08A80), QColor(0xE5AE62), QColor(0x85B2F2), QColor(0x8F8B84)}};
}

Colors& currentColors() {
    static Colors colors = lightColors();
    return colors;
}

QPalette paletteOf(const Colors& colors) {
    QPalette palette;
    palette.setColor(QPalette::Window, colors.window);
    palette.setColor(QPalette::WindowText, colors.text);
    palette.setColor(QPalette::Base, colors.surface);
    palette.setColor(QPalette::AlternateBase, colors.window);
    palette.setColor(QPalette::Text, colors.text);
    palette.setColor(QPalette::PlaceholderText, colors.secondaryText);
    palette.setColor(QPalette::Button, colors.raised);
    palette.setColor(QPalette::ButtonText, colors.text);
    palette.setColor(QPalette::ToolTipBase, colors.raised);
    palette.setColor(QPalette::ToolTipText, colors.text);
    palette.setColor(QPalette::Highlight, colors.accent);
    palette.setColor(QPalette::HighlightedText, colors.onAccent);
    palette.setColor(QPalette::Link, colors.accent);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, colors.secondaryText);
    }
    return palette;
}

/// Qt 6.4 knows no colour scheme of the desktop; the palette that it brought tells.
bool isDarkDesktop(const QPalette& palette) {
    return palette.color(QPalette::WindowText).lightness()
           > palette.color(QPalette::Window).lightness();
}

}  // namespace

Theme::Theme(QApplication& application) : application_(application) {
    QApplication::setStyle(new WindowStyle);
    application_.installEventFilter(this);
    apply();
}

Theme::~Theme() { currentColors() = lightColors(); }

Theme::OnPaper::OnPaper() : screen_(currentColors()) { currentColors() = lightColors(); }

Theme::OnPaper::~OnPaper() { currentColors() = screen_; }

const Colors& Theme::colors() { return currentColors(); }

QFont Theme::font(TextRole role) {
    struct Look {
        double scale;
        QFont::Weight weight;
    };
    constexpr Look looks[] = {
        {0.88, QFont::Normal},
        {1.0, QFont::Normal},
        {1.0, QFont::DemiBold},
        {1.15, QFont::DemiBold},
        {1.6, QFont::Bold},
        {2.2, QFont::Bold},
    };
    const Look look = looks[static_cast<int>(role)];
    QFont font = QApplication::font();
    font.setPointSizeF(font.pointSizeF() * look.scale);
    font.setWeight(look.weight);
    return font;
}

void Theme::setScheme(Scheme scheme) {
    scheme_ = scheme;
    apply();
}

void Theme::setDesktopScheme(Scheme scheme) {
    if (scheme == desktopScheme_) return;
    desktopScheme_ = scheme;
    if (scheme_ == Scheme::system) apply();
}

bool Theme::eventFilter(QObject* watched, QEvent* event) {
    const bool isOfDesktop = watched == &application_ && !isApplying_
                             && event->type() == QEvent::ApplicationPaletteChange;
    if (isOfDesktop && scheme_ == Scheme::system) apply();
    return QObject::eventFilter(watched, event);
}

void Theme::apply() {
    isApplying_ = true;
    QApplication::setPalette(QPalette());  // what the desktop says, without ours
    currentColors() = isDark() ? darkColors() : lightColors();
    QApplication::setPalette(paletteOf(currentColors()));
    isApplying_ = false;
    emit changed();
}

bool Theme::isDark() const {
    const Scheme told = scheme_ == Scheme::system ? desktopScheme_ : scheme_;
    return told == Scheme::system ? isDarkDesktop(QApplication::palette()) : told == Scheme::dark;
}

}  // namespace tesserine::app
