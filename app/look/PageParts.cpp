#include "app/look/PageParts.h"

#include <QDesktopServices>
#include <QEvent>
#include <QLabel>
#include <QPushButton>
#include <QUrl>

#include <algorithm>

namespace tesserine::app {
namespace {

constexpr const char* mainProperty = "isMainButton";

QColor colorOf(Tone tone) {
    const Colors& colors = Theme::colors();
    switch (tone) {
    case Tone::text: return colors.text;
    case Tone::secondary: return colors.secondaryText;
    case Tone::danger: return colors.danger;
    case Tone::success: return colors.success;
    }
    return colors.text;
}

/// Gives its label the ink anew whenever the colours around it change.
class ToneKeeper final : public QObject {
public:
    ToneKeeper(QLabel& label, Tone tone) : QObject(&label), label_(label), tone_(tone) {
        setObjectName("toneKeeper");
        label.installEventFilter(this);
        apply();
    }
    void setTone(Tone tone) {
        tone_ = tone;
        apply();
    }

private:
    bool eventFilter(QObject* watched, QEvent* event) override {
        const QColor shown = label_.palette().color(QPalette::WindowText);
        if (event->type() == QEvent::PaletteChange && shown != colorOf(tone_)) apply();
        return QObject::eventFilter(watched, event);
    }
    void apply() {
        QPalette palette;
        palette.setColor(QPalette::WindowText, colorOf(tone_));
        label_.setPalette(palette);
    }

    QLabel& label_;
    Tone tone_;
};

}  // namespace

void setTone(QLabel& label, Tone tone) {
    auto* const keeper = label.findChild<QObject*>("toneKeeper", Qt::FindDirectChildrenOnly);
    if (keeper) {
        static_cast<ToneKeeper*>(keeper)->setTone(tone);
    } else {
        new ToneKeeper(label, tone);
    }
}

QLabel* makeText(const QString& text, TextRole role, QWidget* parent) {
    auto* const label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    label->setForegroundRole(QPalette::WindowText);  // whatever ground it stands on
    label->setWordWrap(true);
    label->setFont(Theme::font(role));
    return label;
}

QLabel* makeHint(const QString& text, QWidget* parent) {
    QLabel* const label = makeText(text, TextRole::body, parent);
    setTone(*label, Tone::secondary);
    return label;
}

QPushButton* makeMainButton(const QString& title, QWidget* parent) {
    auto* const button = new QPushButton(title, parent);
    button->setDefault(true);
    button->setAutoDefault(true);
    button->setProperty(mainProperty, true);
    return button;
}

bool isMainButton(const QPushButton& button) { return button.property(mainProperty).toBool(); }

void resizeToFit(QWidget& window, QSize usual) {
    const QSize size = usual.expandedTo(window.minimumSizeHint());
    window.resize(size.width(), std::max(size.height(), window.heightForWidth(size.width())));
}

bool showFolder(const QString& folder) {
    return QDesktopServices::openUrl(QUrl::fromLocalFile(folder));
}

}  // namespace tesserine::app
