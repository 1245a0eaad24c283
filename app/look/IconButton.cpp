#include "app/look/IconButton.h"

#include "app/look/Icon.h"

namespace tesserine::app {

IconButton::IconButton(const QString& icon, const QString& name, QWidget* parent)
    : QToolButton(parent) {
    setAutoRaise(true);
    setIconSize(QSize(20, 20));
    setFocusPolicy(Qt::TabFocus);
    setToolButtonStyle(Qt::ToolButtonIconOnly);
    setMeaning(icon, name);
}

void IconButton::setMeaning(const QString& icon, const QString& name) {
    setIcon(app::icon(icon));
    setToolTip(name);
    setAccessibleName(name);
}

}  // namespace tesserine::app
