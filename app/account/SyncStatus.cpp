#include "app/account/SyncStatus.h"

#include "app/look/RowPainting.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "app/state/SyncControl.h"

#include <QPainter>

#include <chrono>

namespace tesserine::app {
namespace {

constexpr int iconSide = 16;
constexpr std::chrono::milliseconds patience{800};

}  // namespace

SyncStatus::SyncStatus(AppEnvironment& environment, QWidget* parent)
    : QAbstractButton(parent), environment_(environment) {
    setObjectName("syncStatus");
    setFocusPolicy(Qt::TabFocus);
    setCursor(Qt::PointingHandCursor);
    patience_.setSingleShot(true);
    patience_.setInterval(patience);
    connect(&patience_, &QTimer::timeout, this, &SyncStatus::showWords);
    connect(&environment_.syncControl(), &SyncControl::changed, this, &SyncStatus::follow);
    connect(this, &QAbstractButton::clicked, this, &SyncStatus::settingsWanted);
    showWords();
}

QSize SyncStatus::sizeHint() const {
    const QFontMetrics metrics(Theme::font(TextRole::caption));
    return {
        metrics.horizontalAdvance(text()) + iconSide + 3 * space::medium,
        metrics.height() + 2 * space::small};
}

void SyncStatus::follow() {
    const bool isAtWork = environment_.syncControl().state().phase == SyncState::Phase::syncing;
    if (!isAtWork) {
        patience_.stop();
        return showWords();
    }
    if (!patience_.isActive()) patience_.start();
}

void SyncStatus::showWords() {
    const SyncState& state = environment_.syncControl().state();
    const SyncWords words = SyncWords::of(state, environment_.now(), environment_.calendar());
    setVisible(state.phase != SyncState::Phase::off);
    setText(words.title);
    setToolTip(words.detail);
    setAccessibleName(tr("Sync: %1").arg(words.title));
    setAccessibleDescription(words.detail);
    ink_ = words.ink;
    update();
}

void SyncStatus::enterEvent(QEnterEvent*) { update(); }
void SyncStatus::leaveEvent(QEvent*) { update(); }

void SyncStatus::paintEvent(QPaintEvent*) {
    const Colors& colors = Theme::colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(hasFocus() ? QPen(colors.accent, 1) : QPen(Qt::NoPen));
    painter.setBrush(underMouse() ? QBrush(colors.hover) : QBrush(Qt::NoBrush));
    painter.drawRoundedRect(
        QRectF(rect()).adjusted(4.5, 1.5, -4.5, -1.5), cornerRadius, cornerRadius);

    QRect line = rect().adjusted(space::medium + 1, 0, -space::medium, 0);  // as the places above
    QRect place(line.left(), 0, iconSide, iconSide);
    place.moveTop((height() - iconSide) / 2);
    app::icon("sync", ink_).paint(&painter, place);
    line.setLeft(place.right() + space::small);
    painter.setFont(Theme::font(TextRole::caption));
    painter.setPen(ink_ == Ink::warning ? colors.warning : colors.secondaryText);
    paintText(painter, line, text());
}

}  // namespace tesserine::app
