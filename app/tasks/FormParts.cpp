#include "app/tasks/FormParts.h"

#include "app/look/Icon.h"
#include "app/look/IconLabel.h"
#include "app/look/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace tesserine::app {
namespace {

constexpr int lineIconSide = 16;

}  // namespace

QHBoxLayout* formLine(const QString& iconName, QWidget* field, QWidget* parent) {
    auto* const line = new QHBoxLayout;
    line->setSpacing(space::medium);
    line->addWidget(new IconLabel(icon(iconName, Ink::secondary), lineIconSide, parent));
    line->addWidget(field, 1);
    return line;
}

QPushButton* valueButton(const QString& name, QWidget* parent) {
    auto* const button = new QPushButton(parent);
    button->setFlat(true);
    button->setStyleSheet("text-align: left; padding: 4px 6px;");
    button->setAccessibleName(name);
    button->setToolTip(name);
    button->setObjectName(QString(name).remove(' '));
    button->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    button->setMinimumWidth(1);  // a long name must not widen the form
    return button;
}

void setValue(QPushButton& button, const QString& value, const QString& whenNone) {
    const bool isSet = !value.isEmpty();
    button.setText(QString(isSet ? value : whenNone).replace('&', "&&"));
    button.setAccessibleDescription(isSet ? value : whenNone);
    QPalette palette = button.palette();
    palette.setColor(
        QPalette::ButtonText, isSet ? Theme::colors().text : Theme::colors().secondaryText);
    button.setPalette(palette);
}

QLabel* sectionTitle(const QString& text, QWidget* parent) {
    auto* const label = new QLabel(text, parent);
    label->setFont(Theme::font(TextRole::caption));
    label->setForegroundRole(QPalette::PlaceholderText);
    return label;
}

}  // namespace tesserine::app
