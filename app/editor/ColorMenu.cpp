#include "app/editor/ColorMenu.h"

#include "app/editor/BodyEdit.h"
#include "app/look/Theme.h"

#include <QColorDialog>
#include <QIcon>
#include <QMenu>
#include <QPainter>
#include <QPixmap>

#include <span>
#include <string>

namespace tesserine::app {
namespace {

using editing::ColorUse;

struct NamedColor {
    const char* name;
    const char* value;
};

/// Words that can be read on a light and on a dark ground.
constexpr NamedColor textColors[] = {
    {"Red", "#d64545"},
    {"Orange", "#c2700a"},
    {"Green", "#2f9e44"},
    {"Teal", "#0c8599"},
    {"Blue", "#3b7dd8"},
    {"Purple", "#9c5fd6"},
    {"Grey", "#808080"},
};
/// Grounds for dark words.
constexpr NamedColor highlightColors[] = {
    {"Yellow", "#fff3a3"},
    {"Orange", "#ffe0b8"},
    {"Green", "#c8f0cd"},
    {"Blue", "#cfe4ff"},
    {"Purple", "#e6d9ff"},
    {"Pink", "#ffd3e6"},
    {"Grey", "#e3e3e3"},
};

QIcon sample(const QColor& color) {
    QPixmap pixmap(32, 32);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Theme::colors().line);
    painter.setBrush(color);
    painter.drawRoundedRect(QRectF(2.5, 2.5, 27, 27), cornerRadius, cornerRadius);
    return pixmap;
}

void choose(BodyEdit& body, ColorUse use, const std::string& color) {
    body.changeStyle([&](InlineStyle& style) { editing::setColor(style, use, color); });
    body.setFocus();
}

void askOther(BodyEdit& body, ColorUse use) {
    auto* const dialog = new QColorDialog(&body);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(
        dialog, &QColorDialog::colorSelected, &body, [&body, use](const QColor& color) {
            choose(body, use, color.name().toStdString());
        });
    dialog->open();
}

}  // namespace

void askColor(BodyEdit& body, ColorUse use) {
    if (body.isReadOnly()) return;
    const bool isText = use == ColorUse::text;
    auto* const menu = new QMenu(&body);
    menu->setObjectName("colorMenu");
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(
        isText ? "Usual Colour" : "No Highlight", &body, [&body, use] { choose(body, use, {}); });
    const std::span<const NamedColor> offered = isText
                                                    ? std::span<const NamedColor>(textColors)
                                                    : std::span<const NamedColor>(highlightColors);
    for (const auto& [name, value] : offered) {
        menu->addAction(sample(QColor(value)), name, &body, [&body, use, value = value] {
            choose(body, use, value);
        });
    }
    menu->addSeparator();
    menu->addAction("Other…", &body, [&body, use] { askOther(body, use); });
    menu->popup(body.viewport()->mapToGlobal(body.cursorRect().bottomLeft()));
}

}  // namespace tesserine::app
