#include "app/commands/CheatSheet.h"

#include "app/commands/FuzzyMatch.h"
#include "app/commands/KeyCaps.h"
#include "app/commands/KeyDialog.h"
#include "app/look/PageParts.h"
#include "app/look/QtText.h"
#include "app/look/Theme.h"

#include <QAbstractButton>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QScrollArea>
#include <QVBoxLayout>

#include <map>

namespace tesserine::app {
namespace {

/// A row that can be pressed: what a command is called, and its keys at the end.
class CommandRow final : public QAbstractButton {
public:
    CommandRow(const QString& title, const QList<QKeySequence>& keys, QWidget* parent)
        : QAbstractButton(parent), caps_(new KeyCaps(keys, this)) {
        setText(title);
        setFocusPolicy(Qt::TabFocus);
        setAttribute(Qt::WA_Hover);
        auto* const row = new QHBoxLayout(this);
        row->setContentsMargins(space::small, space::hair, space::small, space::hair);
        row->addStretch(1);
        row->addWidget(caps_);
        setKeys(keys);
    }

    void setKeys(const QList<QKeySequence>& keys) {
        caps_->setKeys(keys);
        const QString named = QKeySequence::listToString(keys, QKeySequence::NativeText);
        setAccessibleName(text() + ", " + (keys.isEmpty() ? tr("no keys") : named));
        setToolTip(tr("Change the keys"));
    }

    QSize sizeHint() const override {
        const QSize caps = caps_->sizeHint();
        const int title = fontMetrics().horizontalAdvance(text());
        return {
            title + space::large + caps.width() + 2 * space::small,
            caps.height() + 2 * space::hair};
    }
    QSize minimumSizeHint() const override { return sizeHint(); }

private:
    void keyPressEvent(QKeyEvent* event) override {
        const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
        isEnter ? click() : QAbstractButton::keyPressEvent(event);
    }
    void paintEvent(QPaintEvent*) override {
        const Colors& colors = Theme::colors();
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        if (underMouse() || hasFocus()) {
            painter.setPen(hasFocus() ? QPen(colors.accent, 1.5) : QPen(Qt::NoPen));
            painter.setBrush(colors.hover);
            painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 5, 5);
        }
        painter.setPen(colors.text);
        painter.drawText(
            rect().adjusted(space::small, 0, -space::small, 0),
            Qt::AlignVCenter | Qt::AlignLeading,
            text());
    }

    KeyCaps* const caps_;
};

}  // namespace

CheatSheet::CheatSheet(Commands& commands, QWidget* parent)
    : QDialog(parent), commands_(commands), hint_(makeHint({}, this)) {
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName("cheatSheet");
    setWindowTitle(tr("Keyboard Shortcuts"));

    auto* const field = new QLineEdit(this);
    field->setPlaceholderText(tr("Find a command"));
    field->setAccessibleName(field->placeholderText());
    field->setClearButtonEnabled(true);

    auto* const sheet = new QWidget(this);
    auto* const columns = new QHBoxLayout(sheet);
    columns->setSpacing(space::huge);
    columns->setContentsMargins(space::large, space::small, space::large, space::large);
    auto* const left = new QVBoxLayout;
    auto* const right = new QVBoxLayout;
    for (QVBoxLayout* column : {left, right}) {
        column->setSpacing(space::large);
        columns->addLayout(column, 1);
    }
    left->addWidget(makeGroup(CommandContext::everywhere));
    for (const auto context :
         {CommandContext::note, CommandContext::lists, CommandContext::tasks}) {
        right->addWidget(makeGroup(context));
    }
    for (QVBoxLayout* column : {left, right})
        column->addStretch(1);

    auto* const area = new QScrollArea(this);
    area->setWidget(sheet);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setFocusPolicy(Qt::NoFocus);

    auto* const all = new QVBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(0);
    auto* const top = new QVBoxLayout;
    top->setContentsMargins(space::huge, space::large, space::huge, space::medium);
    top->addWidget(field);
    top->addWidget(hint_);
    all->addLayout(top);
    all->addWidget(area, 1);
    resize(760, 640);
    connect(field, &QLineEdit::textChanged, this, &CheatSheet::filter);
    field->setFocus();
    filter({});
}

QWidget* CheatSheet::makeGroup(CommandContext context) {
    auto* const group = new QWidget(this);
    auto* const column = new QVBoxLayout(group);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    auto* const heading = new QLabel(qt(titleOf(context)), group);
    heading->setFont(Theme::font(TextRole::heading));
    heading->setContentsMargins(space::small, 0, 0, space::tiny);
    column->addWidget(heading);
    for (const Command& command : commandTable()) {
        if (command.context != context) continue;
        QWidget* const row = makeRow(command);
        column->addWidget(row);
        rows_.push_back({row, group, commands_.action(command.id).text()});
    }
    return group;
}

QWidget* CheatSheet::makeRow(const Command& command) {
    const std::string_view id = command.id;
    auto* const row = new CommandRow(commands_.action(id).text(), commands_.keys(id), this);
    row->setObjectName(qt(id));
    connect(row, &QAbstractButton::clicked, this, [this, id] {
        (new KeyDialog(commands_, id, this))->open();
    });
    connect(&commands_, &Commands::keysChanged, row, [this, row, id](const QString& changed) {
        if (changed == qt(id)) row->setKeys(commands_.keys(id));
    });
    return row;
}

void CheatSheet::filter(const QString& typed) {
    std::map<QWidget*, bool> isGroupShown;
    for (const Row& row : rows_) {
        const bool isShown = fuzzyMatch(typed, row.text).has_value();
        row.widget->setVisible(isShown);
        isGroupShown[row.group] |= isShown;
    }
    bool isAnyShown = false;
    for (const auto& [group, isShown] : isGroupShown) {
        group->setVisible(isShown);
        isAnyShown |= isShown;
    }
    hint_->setText(
        isAnyShown ? tr("Choose a command to change its keys.")
                   : tr("No command has a name like this."));
}

}  // namespace tesserine::app
