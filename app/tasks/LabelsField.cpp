#include "app/tasks/LabelsField.h"

#include "app/look/FlowLayout.h"
#include "app/look/HandKeysOn.h"
#include "app/look/Icon.h"
#include "app/look/Theme.h"

#include <QAbstractButton>
#include <QCompleter>
#include <QEvent>
#include <QLineEdit>
#include <QPainter>
#include <QStringListModel>
#include <QStyle>

namespace tesserine::app {
namespace {

constexpr int fieldWidth = 120;
constexpr int crossSide = 10;

/// A label with a cross behind it; a press takes it away.
class Chip final : public QAbstractButton {
public:
    Chip(const QString& label, QWidget* parent) : QAbstractButton(parent) {
        setText("@" + label);
        setShortcut({});  // no letter behind an “&” is one
        setAccessibleName(QString("Remove the label %1").arg(label));
        setToolTip(accessibleName());
        setFocusPolicy(Qt::StrongFocus);
        setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
        setFont(Theme::font(TextRole::caption));
    }

private:
    QSize sizeHint() const override {
        const QFontMetrics metrics = fontMetrics();
        const int words = metrics.horizontalAdvance(text()) + 1;  // it counts whole pixels only
        return {words + crossSide + 3 * space::small, metrics.height() + space::small};
    }
    /// A long name is cut.
    QSize minimumSizeHint() const override {
        return {crossSide + 4 * space::small, sizeHint().height()};
    }
    void paintEvent(QPaintEvent* /*event*/) override {
        const Colors& colors = Theme::colors();
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(hasFocus() ? QPen(colors.accent) : QPen(Qt::NoPen));
        painter.setBrush(underMouse() ? colors.selection : colors.hover);
        const double radius = height() / 2.0;
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
        painter.setPen(colors.text);
        const QRect inner = rect().adjusted(space::small, 0, -space::small, 0);
        const QString shown = fontMetrics().elidedText(
            text(), Qt::ElideRight, inner.width() - crossSide - space::small);
        painter.drawText(inner, Qt::AlignLeading | Qt::AlignVCenter, shown);
        const QRect cross(
            inner.right() - crossSide + 1, (height() - crossSide) / 2, crossSide, crossSide);
        app::icon("close", Ink::secondary)
            .paint(&painter, QStyle::visualRect(layoutDirection(), rect(), cross));
    }
};

}  // namespace

LabelsField::LabelsField(Names names, QWidget* parent)
    : QWidget(parent), names_(std::move(names)), field_(new QLineEdit(this)) {
    field_->setObjectName("addLabel");
    field_->setAccessibleName("Add a label");
    field_->setPlaceholderText("Add a label");
    field_->setFrame(false);
    field_->setFixedWidth(fieldWidth);
    field_->installEventFilter(this);
    auto* const completer = new QCompleter(new QStringListModel(this), this);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    completer->setFilterMode(Qt::MatchContains);
    field_->setCompleter(completer);
    auto* const layout = new FlowLayout(space::tiny, this);
    layout->setContentsMargins(space::small, 0, 0, 0);
    layout->addWidget(field_);
    connect(field_, &QLineEdit::returnPressed, this, &LabelsField::take);
}

void LabelsField::setLabels(const QStringList& labels) {
    if (labels == labels_) return;
    labels_ = labels;
    for (QWidget* const chip : std::as_const(chips_)) {
        handKeysOn(*chip, *this);  // not to the next one, nor out of the task
        chip->deleteLater();
        chip->hide();
    }
    chips_.clear();
    auto* const flow = static_cast<FlowLayout*>(layout());
    for (const QString& label : labels) {
        auto* const chip = new Chip(label, this);
        connect(chip, &Chip::clicked, this, [this, label] { emit removed(label); });
        flow->addWidget(chip);
        flow->move(flow->count() - 1, static_cast<int>(chips_.size()));
        chip->show();
        chips_ += chip;
    }
    updateGeometry();
}

bool LabelsField::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn) {
        static_cast<QStringListModel*>(field_->completer()->model())->setStringList(names_());
    }
    if (event->type() == QEvent::FocusOut) take();
    return QWidget::eventFilter(watched, event);
}

void LabelsField::take() {
    QString name = field_->text().trimmed();
    if (name.startsWith('@')) name.remove(0, 1);
    field_->clear();
    if (!name.isEmpty()) emit added(name);
}

}  // namespace tesserine::app
