#include "app/tasks/TemplateForm.h"

#include "app/look/FlowLayout.h"
#include "app/look/PageParts.h"
#include "app/look/Theme.h"
#include "app/state/AppEnvironment.h"
#include "app/tasks/FormParts.h"
#include "app/tasks/GrowingText.h"
#include "app/tasks/LabelsField.h"
#include "app/tasks/PriorityButtons.h"
#include "app/tasks/ProjectPicker.h"
#include "app/tasks/RecurrencePopup.h"
#include "core/tasks/TaskTemplateService.h"

#include <QCheckBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace tesserine::app {
namespace {

constexpr int leastLines = 3;
constexpr int mostLines = 20;
constexpr int timeFieldWidth = 72;

QString lines(const std::vector<std::string>& texts) {
    QStringList list;
    for (const std::string& text : texts) {
        list += QString::fromStdString(text);
    }
    return list.join('\n');
}

QStringList listOf(const std::vector<std::string>& texts) {
    return lines(texts).split('\n', Qt::SkipEmptyParts);
}

std::vector<std::string> textsOf(const QStringList& list) {
    std::vector<std::string> texts;
    for (const QString& text : list) {
        texts.push_back(text.toStdString());
    }
    return texts;
}

/// Leaves the caret where it is in a text that stays.
void showText(QLineEdit& field, const QString& text) {
    if (field.text() != text) field.setText(text);
}

}  // namespace

TemplateForm::TemplateForm(AppEnvironment& environment, QWidget* parent)
    : QWidget(parent),
      environment_(environment),
      name_(new QLineEdit(this)),
      title_(new QLineEdit(this)),
      isDue_(new QCheckBox("Due", this)),
      dueDays_(new QSpinBox(this)),
      dueTime_(new QLineEdit(this)),
      noTime_(makeHint("That is no time, such as 14:30.", this)),
      recurrence_(valueButton("Repetition", this)),
      project_(valueButton("Project", this)),
      priority_(new PriorityButtons(this)),
      labels_(new LabelsField([] { return QStringList(); }, this)),
      subtasks_(new GrowingText(GrowingText::Lines::many, leastLines, mostLines, this)),
      notes_(new GrowingText(GrowingText::Lines::many, leastLines, mostLines, this)) {
    name_->setObjectName("templateName");
    name_->setAccessibleName("Name of the template");
    name_->setFont(Theme::font(TextRole::heading));
    name_->setFrame(false);
    name_->setPlaceholderText("Name of the template");
    title_->setObjectName("templateTitle");
    title_->setAccessibleName("Title of the task");
    title_->setPlaceholderText("Title of the task it makes");
    isDue_->setObjectName("templateIsDue");
    dueDays_->setObjectName("templateDueDays");
    dueDays_->setAccessibleName("Days after it is created");
    dueDays_->setRange(0, static_cast<int>(TaskTemplateService::mostDueOffsetDays));
    dueTime_->setObjectName("templateDueTime");
    dueTime_->setAccessibleName("Time of day");
    dueTime_->setPlaceholderText("09:00");
    dueTime_->setFixedWidth(timeFieldWidth);
    noTime_->setObjectName("templateNoTime");
    subtasks_->setObjectName("templateSubtasks");
    subtasks_->setAccessibleName("Subtasks, one to a line");
    subtasks_->setPlaceholderText("One subtask to a line");
    notes_->setAccessibleName("Notes");
    notes_->setPlaceholderText("Add notes");
    arrange();
    follow();
}

void TemplateForm::arrange() {
    auto* const due = new QWidget(this);
    auto* const dueLine = new FlowLayout(space::small, due);
    dueLine->setContentsMargins(0, 0, 0, 0);
    auto* const words = new QLabel("days after it is created, at", due);
    for (QWidget* part :
         {static_cast<QWidget*>(isDue_),
          static_cast<QWidget*>(dueDays_),
          static_cast<QWidget*>(words),
          static_cast<QWidget*>(dueTime_)}) {
        part->setMinimumHeight(dueDays_->sizeHint().height());  // of one line
        dueLine->addWidget(part);
    }

    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(space::small);
    layout->addWidget(name_);
    layout->addLayout(formLine("task", title_, this));
    layout->addLayout(formLine("calendar", due, this));
    layout->addWidget(noTime_);
    layout->addLayout(formLine("repeat", recurrence_, this));
    layout->addLayout(formLine("project", project_, this));
    layout->addLayout(formLine("flag", priority_, this));
    layout->addLayout(formLine("label", labels_, this));
    layout->addWidget(sectionTitle("Subtasks", this));
    layout->addWidget(subtasks_);
    layout->addWidget(sectionTitle("Notes", this));
    layout->addWidget(notes_);
    layout->addStretch();
}

void TemplateForm::follow() {
    for (QLineEdit* const field : {name_, title_, dueTime_}) {
        connect(field, &QLineEdit::textEdited, this, &TemplateForm::edit);
    }
    for (GrowingText* const field : {subtasks_, notes_}) {
        connect(field, &QPlainTextEdit::textChanged, this, &TemplateForm::edit);
    }
    connect(isDue_, &QCheckBox::toggled, this, &TemplateForm::edit);
    connect(dueDays_, &QSpinBox::valueChanged, this, &TemplateForm::edit);
    connect(priority_, &PriorityButtons::chosen, this, &TemplateForm::edit);
    connect(recurrence_, &QPushButton::clicked, this, &TemplateForm::askRecurrence);
    connect(project_, &QPushButton::clicked, this, &TemplateForm::askProject);
    connect(labels_, &LabelsField::added, this, [this](const QString& label) {
        if (!labels_->labels().contains(label, Qt::CaseInsensitive)) {
            labels_->setLabels(labels_->labels() + QStringList{label});
        }
        edit();
    });
    connect(labels_, &LabelsField::removed, this, [this](const QString& label) {
        QStringList left = labels_->labels();
        left.removeAll(label);
        labels_->setLabels(left);
        edit();
    });
}

void TemplateForm::setContent(const TaskTemplateContent& content) {
    isFilling_ = true;
    content_ = content;
    showText(*name_, QString::fromStdString(content.name));
    showText(*title_, QString::fromStdString(content.title));
    isDue_->setChecked(content.dueOffsetDays.has_value());
    dueDays_->setValue(static_cast<int>(content.dueOffsetDays.value_or(0)));
    dueTime_->setText(
        content.dueTime ? QString::fromStdString(timeText(*content.dueTime)) : QString());
    priority_->setPriority(content.priority);
    labels_->setLabels(listOf(content.labels));
    subtasks_->setShownText(lines(content.subtasks));
    notes_->setShownText(QString::fromStdString(content.notes));
    showChoices();
    isFilling_ = false;
    markSaved();
}

void TemplateForm::markSaved() {
    saved_ = content();
    isEdited_ = false;
}

TaskTemplateContent TemplateForm::content() const {
    TaskTemplateContent content = content_;
    content.name = name_->text().toStdString();
    content.title = title_->text().toStdString();
    content.dueOffsetDays.reset();
    if (isDue_->isChecked()) content.dueOffsetDays = dueDays_->value();
    content.dueTime = typedTime();
    content.priority = priority_->priority();
    content.labels = textsOf(labels_->labels());
    content.subtasks = textsOf(subtasks_->toPlainText().split('\n', Qt::SkipEmptyParts));
    content.notes = notes_->toPlainText().toStdString();
    return content;
}

bool TemplateForm::putInto(TaskTemplateContent& stored) const {
    const TaskTemplateContent present = content();
    bool isForeign = false;
    const auto put = [&](auto member) {
        if (present.*member == saved_.*member) {
            isForeign = isForeign || stored.*member != saved_.*member;
        } else {
            stored.*member = present.*member;
        }
    };
    put(&TaskTemplateContent::name);
    put(&TaskTemplateContent::title);
    put(&TaskTemplateContent::notes);
    put(&TaskTemplateContent::priority);
    put(&TaskTemplateContent::labels);
    put(&TaskTemplateContent::dueOffsetDays);
    put(&TaskTemplateContent::dueTime);
    put(&TaskTemplateContent::recurrence);
    put(&TaskTemplateContent::projectID);
    put(&TaskTemplateContent::subtasks);
    return isForeign;
}

std::optional<TimeOfDay> TemplateForm::typedTime() const {
    return timeOfDay(dueTime_->text().trimmed().toStdString());
}

void TemplateForm::dropQuestion() {
    if (question_) question_->close();
}

void TemplateForm::editName() {
    name_->setFocus();
    name_->selectAll();
}

void TemplateForm::edit() {
    if (isFilling_) return;
    isEdited_ = true;
    showChoices();
    emit edited();
}

void TemplateForm::showChoices() {
    dueDays_->setEnabled(isDue_->isChecked());
    dueTime_->setEnabled(isDue_->isChecked());
    const bool isTyped = isDue_->isChecked() && !dueTime_->text().trimmed().isEmpty();
    noTime_->setVisible(isTyped && !typedTime());
    setValue(
        *recurrence_,
        content_.recurrence ? QString::fromStdString(content_.recurrence->description())
                            : QString(),
        "Does not repeat");
    const auto* const project =
        content_.projectID ? environment_.context().find<CDProject>(*content_.projectID) : nullptr;
    setValue(
        *project_,
        project == nullptr ? QString() : QString::fromStdString(project->name.valueOr("")),
        "Inbox");
}

void TemplateForm::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) showChoices();
}

void TemplateForm::askRecurrence() {
    auto* const popup = new RecurrencePopup(environment_.calendar(), {}, environment_.now(), this);
    question_ = popup;
    connect(popup, &RecurrencePopup::picked, this, [this](const auto& rule) {
        content_.recurrence = rule;
        edit();
    });
    popup->open(recurrence_->mapToGlobal(QPoint(0, recurrence_->height())), content_.recurrence);
}

void TemplateForm::askProject() {
    auto* const picker = new ProjectPicker(environment_, window());
    question_ = picker;
    connect(picker, &ProjectPicker::projectChosen, this, [this](const Uuid& project) {
        content_.projectID = project;
        edit();
    });
    picker->open();
}

}  // namespace tesserine::app
