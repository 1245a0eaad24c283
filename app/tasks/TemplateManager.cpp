#include "app/tasks/TemplateManager.h"

#include "app/look/EmptyState.h"
#include "app/look/Icon.h"
#include "app/look/RowPainting.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "app/tasks/TaskCommands.h"
#include "app/tasks/TaskDelegate.h"
#include "app/tasks/TemplateForm.h"
#include "core/tasks/TaskErrors.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QStackedWidget>
#include <QStyledItemDelegate>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>

namespace tesserine::app {
namespace {

constexpr std::chrono::seconds pauseInTyping{1};
constexpr int narrowestList = 140;
constexpr int listWidth = 300;
constexpr int idRole = Qt::UserRole;
constexpr int summaryRole = Qt::UserRole + 1;

/// The name of a template, its summary below.
class TemplateDelegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(
        const QStyleOptionViewItem& option, const QModelIndex& /*index*/) const override {
        const int name = QFontMetrics(Theme::font(TextRole::body)).height();
        const int summary = QFontMetrics(Theme::font(TextRole::caption)).height();
        return {option.rect.width(), name + summary + 2 * space::small};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index)
        const override {
        painter->save();
        paintLineGround(*painter, option);
        const QRect area =
            option.rect.adjusted(space::medium, space::small, -space::medium, -space::small);
        painter->setFont(Theme::font(TextRole::body));
        painter->setPen(Theme::colors().text);
        const int nameHeight = painter->fontMetrics().height();
        paintName(
            *painter,
            QRect(area.topLeft(), QSize(area.width(), nameHeight)),
            index.data(Qt::DisplayRole).toString());
        painter->setFont(Theme::font(TextRole::caption));
        painter->setPen(Theme::colors().secondaryText);
        paintName(*painter, area.adjusted(0, nameHeight, 0, 0), index.data(summaryRole).toString());
        painter->restore();
    }
};

}  // namespace

TemplateManager::TemplateManager(AppEnvironment& environment, QWidget* parent)
    : QWidget(parent),
      environment_(environment),
      list_(new QListWidget(this)),
      stack_(new QStackedWidget(this)),
      form_(new TemplateForm(environment, this)),
      summary_(new QLabel(this)),
      pause_(new QTimer(this)) {
    setObjectName("templateManager");
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Base);
    setFocusProxy(list_);
    list_->setObjectName("templateList");
    list_->setAccessibleName("Task templates");
    list_->setItemDelegate(new TemplateDelegate(list_));
    list_->setFrameShape(QFrame::NoFrame);
    list_->setMouseTracking(true);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setMinimumWidth(narrowestList);
    list_->setMaximumWidth(listWidth);

    auto* const title = new QLabel("Task Templates", this);
    title->setFont(Theme::font(TextRole::title));
    auto* const make = new QPushButton(icon("plus"), "New Template", this);
    make->setObjectName("newTemplate");
    auto* const head = new QHBoxLayout;
    head->addWidget(title, 1);
    head->addWidget(make);
    auto* const body = new QHBoxLayout;
    body->setSpacing(space::large);
    body->addWidget(list_);
    body->addWidget(stack_, 1);
    stack_->addWidget(makeRight());
    stack_->addWidget(new EmptyState(
        {"template",
         "No task templates",
         "A template makes the same task again and again, with its subtasks, labels and a due date "
         "counted from the day you use it: packing for a trip, the end of a month."},
        this));
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(space::large, space::large, space::large, space::medium);
    layout->setSpacing(space::medium);
    layout->addLayout(head);
    layout->addLayout(body, 1);

    pause_->setSingleShot(true);
    pause_->setInterval(pauseInTyping);
    connect(pause_, &QTimer::timeout, this, &TemplateManager::flush);
    connect(form_, &TemplateForm::edited, this, [this] {
        summary_->setText(QString::fromStdString(form_->content().summary()));
        pause_->start();
    });
    connect(make, &QPushButton::clicked, this, &TemplateManager::create);
    connect(list_, &QListWidget::currentRowChanged, this, &TemplateManager::take);
    connect(&environment, &AppEnvironment::libraryChanged, this, [this](const auto& changes) {
        const auto concerns = [](const ObjectChange& change) {
            return change.entity == EntityKind::taskTemplate;
        };
        if (std::ranges::any_of(changes, concerns)) reload();
    });
}

QWidget* TemplateManager::makeRight() {
    auto* const right = new QWidget(this);
    auto* const useIt = new QPushButton(icon("task", Ink::onAccent), "Create Task", right);
    useIt->setObjectName("useTemplate");
    useIt->setDefault(true);
    auto* const remove = new QPushButton("Delete…", right);
    remove->setObjectName("deleteTemplate");
    summary_->setObjectName("templateSummary");
    summary_->setFont(Theme::font(TextRole::caption));
    summary_->setWordWrap(true);
    summary_->setTextFormat(Qt::PlainText);
    auto* const area = new QScrollArea(right);
    area->setFrameShape(QFrame::NoFrame);
    area->setAccessibleName("Template");
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setMinimumWidth(
        form_->minimumSizeHint().width() + area->verticalScrollBar()->sizeHint().width());
    area->setWidget(form_);
    auto* const foot = new QHBoxLayout;
    foot->addWidget(remove);
    foot->addStretch();
    foot->addWidget(useIt);
    auto* const layout = new QVBoxLayout(right);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(area, 1);
    layout->addWidget(summary_);
    layout->addLayout(foot);
    connect(useIt, &QPushButton::clicked, this, &TemplateManager::use);
    connect(remove, &QPushButton::clicked, this, &TemplateManager::askRemove);
    return right;
}

void TemplateManager::open() {
    reload();
    list_->setFocus();
}

std::optional<Uuid> TemplateManager::idAt(int row) const {
    const QListWidgetItem* const item = list_->item(row);
    return item == nullptr ? std::nullopt
                           : Uuid::parse(item->data(idRole).toString().toStdString());
}

void TemplateManager::reload() {
    const QSignalBlocker quiet(list_);
    list_->clear();
    for (const CDTaskTemplate* stored :
         environment_.taskTemplates().all(environment_.context(), environment_.collator())) {
        const auto content = TaskTemplateContent::of(*stored);
        auto* const item = new QListWidgetItem(QString::fromStdString(content.name), list_);
        item->setData(idRole, QString::fromStdString(stored->id->text()));
        item->setData(summaryRole, QString::fromStdString(content.summary()));
        if (stored->id == shown_) list_->setCurrentItem(item);
    }
    if (list_->currentItem() == nullptr && list_->count() > 0) list_->setCurrentRow(0);
    list_->setVisible(list_->count() > 0);
    take();
}

void TemplateManager::take() {
    const auto id = idAt(list_->currentRow());
    if (id != shown_ && !flush()) return markShown();
    const auto* const stored = id ? environment_.context().find<CDTaskTemplate>(*id) : nullptr;
    stack_->setCurrentIndex(stored == nullptr ? 1 : 0);
    if (stored == nullptr) {
        shown_.reset();
        return;
    }
    const bool isBeingTyped = shown_ == id && (form_->isEdited() || isSaving_);
    // What is typed on was not meant for the one that takes the place of a deleted one.
    const bool isAnother = shown_ && shown_ != id;
    if (isAnother) form_->dropQuestion();
    if (isAnother && form_->isAncestorOf(window()->focusWidget())) list_->setFocus();
    shown_ = id;
    markShown();
    if (isBeingTyped) return;
    const auto content = TaskTemplateContent::of(*stored);
    showContent(content);
}

void TemplateManager::showContent(const TaskTemplateContent& content) {
    form_->setContent(content);
    summary_->setText(QString::fromStdString(content.summary()));
}

/// What stands in the form is what is chosen: saving made the list anew, or did not succeed.
void TemplateManager::markShown() {
    const QSignalBlocker quiet(list_);
    for (int row = 0; row < list_->count(); ++row) {
        if (idAt(row) == shown_) list_->setCurrentRow(row);
    }
}

void TemplateManager::showTemplate(const Uuid& id) {
    flush();
    shown_ = id;
    form_->setContent({});
    reload();
    form_->editName();
}

bool TemplateManager::flush() {
    pause_->stop();
    if (!shown_ || !form_->isEdited()) return true;
    const auto* const stored = environment_.context().find<CDTaskTemplate>(*shown_);
    if (stored == nullptr) return true;
    try {
        auto content = TaskTemplateContent::of(*stored);
        const bool isForeign = form_->putInto(content);
        environment_.taskTemplates().update(environment_.context(), *shown_, content);
        form_->markSaved();
        if (isForeign) showContent(content);
        isSaving_ = true;
        const bool isSaved = environment_.save(this);
        isSaving_ = false;
        return isSaved;
    } catch (const TaskTemplateError& error) {
        showProblem(error.what());
    } catch (const TaskError& error) {
        showProblem(error.what());
    }
    return false;
}

void TemplateManager::showProblem(const QString& sentence) { summary_->setText(sentence); }

void TemplateManager::create() {
    if (!flush()) return;
    const CDTaskTemplate& made =
        environment_.taskTemplates().createUntitled(environment_.context());
    const Uuid id = *made.id;
    environment_.save(this);
    showTemplate(id);
}

void TemplateManager::use() {
    if (!shown_ || !flush()) return;
    try {
        emit used(TaskCommands(environment_, this).make(*shown_));
    } catch (const TaskTemplateError& error) {
        showProblem(error.what());
    }
}

void TemplateManager::askRemove() {
    if (!shown_) return;
    auto* const question = new QMessageBox(
        QMessageBox::NoIcon,
        "Delete Template",
        QString("Delete the template “%1”?").arg(list_->currentItem()->text()),
        QMessageBox::Cancel,
        this);
    question->setObjectName("deleteTemplateQuestion");
    question->setAttribute(Qt::WA_DeleteOnClose);
    question->setDefaultButton(QMessageBox::Cancel);
    question->setInformativeText("Tasks that were made of it stay.");
    auto* const button = question->addButton("Delete Permanently", QMessageBox::DestructiveRole);
    connect(button, &QPushButton::clicked, this, [this, id = *shown_] {
        try {
            environment_.taskTemplates().remove(environment_.context(), id);
            form_->markSaved();
            environment_.save(this);
        } catch (const TaskTemplateError& error) {
            showProblem(error.what());
        }
    });
    question->open();
}

}  // namespace tesserine::app
