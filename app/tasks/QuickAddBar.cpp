#include "app/tasks/QuickAddBar.h"

#include "app/look/IconButton.h"
#include "app/look/IconLabel.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "app/tasks/QuickAddField.h"
#include "app/tasks/TaskHistory.h"
#include "base/Files.h"
#include "base/Text.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace tesserine::app {
namespace {

constexpr int plusSide = 18;
constexpr const char* example = "Add a task, such as “Send invoice tomorrow 9am #Work p1”";

QStringList sorted(std::vector<std::string> names, const text::Collator& collator) {
    std::ranges::sort(
        names, [&](const auto& a, const auto& b) { return collator.compare(a, b) < 0; });
    QStringList list;
    for (const std::string& name : names) {
        list += QString::fromStdString(name);
    }
    return list;
}

template <class Entity>
QStringList namesOf(AppEnvironment& environment) {
    std::vector<std::string> names;
    environment.context().visitRows<Entity>({}, [&](const ListedRow& row) {
        if (auto name = row.get(&Entity::name)) names.push_back(std::move(*name));
    });
    return sorted(std::move(names), environment.collator());
}

}  // namespace

QuickAddBar::QuickAddBar(AppEnvironment& environment, QWidget* parent)
    : QFrame(parent),
      environment_(environment),
      model_(environment.tasks()),
      field_(new QuickAddField(
          model_, [this] { return moment(); }, [this](QChar sign) { return names(sign); }, this)),
      words_(new QLabel(this)),
      refuse_(new IconButton("close", "Leave the date out", this)),
      add_(new QPushButton("Add Task", this)) {
    setObjectName("quickAddBar");
    setFocusProxy(field_);
    field_->installEventFilter(this);
    field_->setPlaceholderText(example);
    words_->setObjectName("quickAddWords");
    words_->setTextFormat(Qt::PlainText);
    words_->setFont(Theme::font(TextRole::caption));
    words_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    refuse_->setObjectName("refuseSuggestedDue");
    refuse_->setIconSize({12, 12});
    add_->setObjectName("addTask");

    auto* const sentence = new QHBoxLayout;
    sentence->setSpacing(space::small);
    sentence->addWidget(new IconLabel(icon("plus", Ink::accent), plusSide, this));
    sentence->addWidget(field_, 1);
    sentence->addWidget(add_);
    auto* const meaning = new QHBoxLayout;
    meaning->setContentsMargins(plusSide + space::medium, 0, 0, 0);
    meaning->setSpacing(space::tiny);
    meaning->addWidget(words_, 1);
    meaning->addWidget(refuse_);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(space::medium, space::tiny, space::small, space::tiny);
    layout->setSpacing(0);
    layout->addLayout(sentence);
    layout->addLayout(meaning);

    connect(field_, &QuickAddField::sentenceChanged, this, [this] { showMeaning(); });
    connect(field_, &QuickAddField::submitted, this, &QuickAddBar::create);
    connect(field_, &QuickAddField::escaped, this, &QuickAddBar::clear);
    connect(field_, &QuickAddField::leftDownwards, this, &QuickAddBar::left);
    connect(add_, &QPushButton::clicked, this, &QuickAddBar::create);
    connect(refuse_, &IconButton::clicked, this, [this] {
        model_.refuseSuggestedDue();
        showMeaning();
        field_->setFocus();
    });
    connect(&environment_, &AppEnvironment::calendarChanged, field_, &QuickAddField::readAgain);
    connect(&environment_, &AppEnvironment::libraryChanged, this, [this](const auto& changes) {
        for (const ObjectChange& change : changes) {
            if (change.entity == EntityKind::project) projects_.clear();
            if (change.entity == EntityKind::tag) labels_.clear();
        }
    });
    showMeaning();
}

QuickAddMoment QuickAddBar::moment() const {
    return {
        environment_.now(),
        environment_.calendar(),
        environment_.preferences().boolean(numberIsPriorityKey).value_or(false)};
}

QStringList QuickAddBar::names(QChar sign) {
    const bool isProject = sign == u'#';
    QStringList& known = isProject ? projects_ : labels_;
    if (known.isEmpty()) {
        known = isProject ? namesOf<CDProject>(environment_) : namesOf<CDTag>(environment_);
    }
    return known;
}

void QuickAddBar::setDefaults(QuickAddDefaults defaults) {
    model_.setDefaults(std::move(defaults));
    showMeaning();
}

void QuickAddBar::begin(const QString& sentence) {
    showSentence(sentence);
    field_->setFocus();
}

void QuickAddBar::showSentence(const QString& sentence) {
    field_->setPlainText(sentence);
    field_->moveCursor(QTextCursor::End);
}

void QuickAddBar::keepUnder(const std::string& name) {
    keptUnder_ = name;
    const auto waiting = environment_.preferences().string(name);
    if (waiting) showSentence(QString::fromStdString(*waiting));
}

void QuickAddBar::keep() {
    if (keptUnder_.empty()) return;
    Preferences& preferences = environment_.preferences();
    const std::string sentence = model_.text().toStdString();
    const auto waiting = text::isBlank(sentence) ? std::nullopt : std::optional(sentence);
    if (waiting == preferences.string(keptUnder_)) return;
    try {
        waiting ? preferences.set(keptUnder_, *waiting) : preferences.remove(keptUnder_);
    } catch (const FileError& error) {
        environment_.log().warning(std::string("quick-add bar: ") + error.what());
    }
}

void QuickAddBar::create() {
    if (!model_.isComplete()) return;
    try {
        Uuid id;
        // A save that failed has said so; the task waits in the context for the next one.
        TaskHistory::of(environment_).record({}, this, [&] {
            id = *environment_.tasks().create(environment_.context(), model_.draft()).id;
            return TaskHistory::Made{.tasks = {id}};
        });
        model_.clear();
        field_->clear();
        keep();
        emit created(id);
    } catch (const TaskError& error) {
        showMeaning(QString::fromUtf8(error.what()));
    }
}

void QuickAddBar::clear() {
    if (model_.text().isEmpty()) {
        emit left();
        return;
    }
    field_->takeAway();
}

void QuickAddBar::showMeaning(const QString& problem) {
    const Colors& colors = Theme::colors();
    QPalette palette = words_->palette();
    palette.setColor(
        QPalette::WindowText, problem.isEmpty() ? colors.secondaryText : colors.danger);
    words_->setPalette(palette);
    words_->setText(problem.isEmpty() ? model_.words() : problem);
    words_->setVisible(!words_->text().isEmpty());
    refuse_->setVisible(model_.isDueSuggested());
    add_->setEnabled(model_.isComplete());
    add_->setVisible(!model_.text().isEmpty());
}

/// The frame shows whether the field has the keys.
bool QuickAddBar::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) update();
    return QFrame::eventFilter(watched, event);
}

void QuickAddBar::changeEvent(QEvent* event) {
    QFrame::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) field_->readAgain();
}

void QuickAddBar::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Colors& colors = Theme::colors();
    painter.setPen(field_->hasFocus() ? colors.accent : colors.line);
    painter.setBrush(colors.raised);
    painter.drawRoundedRect(
        QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius, cornerRadius);
}

}  // namespace tesserine::app
