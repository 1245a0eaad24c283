#include "app/assistant/ActionReview.h"

#include "ai/AIExclusions.h"
#include "ai/AnswerBody.h"
#include "app/assistant/ActionWords.h"
#include "app/assistant/Assistant.h"
#include "app/assistant/DataNotice.h"
#include "app/look/Notice.h"
#include "app/look/PageParts.h"
#include "app/look/QtText.h"
#include "app/state/AppEnvironment.h"
#include "app/state/DateWords.h"
#include "base/Text.h"
#include "core/body/PlainText.h"

#include <QApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include <memory>

namespace tesserine::app {
namespace {

constexpr const char* goneSentence = "This note is gone.";
constexpr const char* moreThanTextSentence =
    "The note holds files or locked passages, which a text cannot keep";

/// Whether a body of plain words could not keep all that the note holds.
bool holdsMoreThanText(CDNote& note) {
    const bool hasPassages = note.html.valueOr("").find("data-ts-cipher") != std::string::npos;
    return hasPassages || !note.attachments.all().empty();
}

QPushButton* makeButton(const QString& title, const char* name, QWidget* parent) {
    auto* const button = new QPushButton(title, parent);
    button->setObjectName(name);
    button->setAutoDefault(false);
    return button;
}

}  // namespace

ActionReview::ActionReview(
    AppEnvironment& environment, const Uuid& note, NoteAction action, QWidget* parent)
    : QDialog(parent),
      environment_(environment),
      noteID_(note),
      action_(action),
      job_(environment) {
    setObjectName("actionReview");
    setWindowTitle(wordsOf(action).title);
    setAttribute(Qt::WA_DeleteOnClose);
    resize(620, 520);
    build();
    connect(&job_, &Job::failed, this, [this](const QString& sentence) {
        showBusy(false);
        showSentence(sentence);
    });
}

void ActionReview::build() {
    progress_ = new QProgressBar(this);
    progress_->setRange(0, 0);
    progress_->setTextVisible(false);
    progress_->setFixedHeight(space::small);
    progress_->setAccessibleName("Waiting for the answer");
    state_ = makeHint({}, this);
    state_->setObjectName("reviewState");
    result_ = new QPlainTextEdit(this);
    result_->setObjectName("reviewText");
    result_->setAccessibleName("The assistant's text");
    result_->setTabChangesFocus(true);

    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(space::huge, space::huge, space::huge, space::large);
    column->setSpacing(space::medium);
    const CDNote* const shown = note();
    const std::string title =
        shown == nullptr ? ""
                         : displayTitle(shown->title.valueOr(""), shown->plainText.valueOr(""));
    column->addWidget(makeText(wordsOf(action_).title, TextRole::title, this));
    column->addWidget(makeHint(qt(title), this));
    if (action_ == NoteAction::ask) column->addWidget(makeQuestion());
    column->addWidget(progress_);
    column->addWidget(result_, 1);
    column->addWidget(state_);
    column->addWidget(makeButtons());
    result_->hide();
    showBusy(false);
}

QWidget* ActionReview::makeQuestion() {
    question_ = new QLineEdit(this);
    question_->setObjectName("noteQuestion");
    question_->setAccessibleName("Question about this note");
    question_->setPlaceholderText("What do you want to know about this note?");
    return question_;
}

QWidget* ActionReview::makeButtons() {
    auto* const buttons = new QWidget(this);
    ask_ = makeButton("Ask", "askAgain", buttons);
    cancel_ = makeButton("Cancel", "cancelAction", buttons);
    copy_ = makeButton("Copy", "copyResult", buttons);
    replace_ = makeButton("Replace", "replaceNote", buttons);
    below_ = makeMainButton("Insert Below", buttons);
    below_->setObjectName("insertBelow");
    below_->setAutoDefault(false);
    // Return asks while there is a question to be typed.
    below_->setDefault(question_ == nullptr);
    ask_->setDefault(question_ != nullptr);
    auto* const closing = makeButton("Close", "closeReview", buttons);
    auto* const row = new QHBoxLayout(buttons);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(space::small);
    row->addWidget(copy_);
    row->addStretch(1);
    for (QPushButton* const button : {cancel_, ask_, replace_, closing, below_}) {
        row->addWidget(button);
    }
    connect(ask_, &QPushButton::clicked, this, &ActionReview::ask);
    connect(cancel_, &QPushButton::clicked, this, [this] { job_.cancel(); });
    connect(copy_, &QPushButton::clicked, this, [this] {
        QApplication::clipboard()->setText(result_->toPlainText());
    });
    connect(below_, &QPushButton::clicked, this, [this] { take(Way::below); });
    connect(replace_, &QPushButton::clicked, this, [this] { take(Way::replace); });
    connect(closing, &QPushButton::clicked, this, &QDialog::reject);
    return buttons;
}

void ActionReview::begin() {
    open();
    if (question_ == nullptr) return ask();
    question_->setFocus();
}

CDNote* ActionReview::note() { return environment_.context().find<CDNote>(noteID_); }

void ActionReview::ask() {
    const bool isUnasked = question_ != nullptr && question_->text().trimmed().isEmpty();
    if (isUnasked || job_.isRunning()) return;
    if (sendable() == nullptr) return;
    withDataNotice(environment_, this, [this] {
        if (!job_.isRunning()) send();
    });
}

/// The note if it may be sent; the sheet says why not.
CDNote* ActionReview::sendable() {
    CDNote* const asked = note();
    if (asked == nullptr) {
        showSentence(goneSentence);
        return nullptr;
    }
    try {
        AIExclusions::load(environment_.preferences()).require(*asked);
    } catch (const NeverSentError& error) {
        showSentence(error.what());
        return nullptr;
    }
    return asked;
}

/// The note as it is now: others may have changed it while the notice was read.
void ActionReview::send() {
    CDNote* const asked = sendable();
    if (asked == nullptr) return;
    version_ = asked->contentVersion.valueOr(0);
    const bool mayReplace = !holdsMoreThanText(*asked);
    replace_->setEnabled(mayReplace);
    replace_->setToolTip(
        mayReplace ? "The present text stays among the note's versions" : moreThanTextSentence);
    const std::string noteText = asked->plainText.valueOr("");
    const auto assistant = std::make_shared<const Assistant>(environment_);
    const std::string question = question_ ? question_->text().trimmed().toStdString() : "";
    const AIRequest request = assistant->frameAction(action_, noteText, question);
    const std::string title = displayTitle(asked->title.valueOr(""), noteText);
    const auto response = std::make_shared<AIResponse>();
    showSentence("Asking " + qt(assistant->destination()) + "…");
    showBusy(true);
    job_.start(
        [=, action = action_](const Job::Given& given) {
            *response = assistant->send(request, std::string(nameOf(action)), {title}, given.stop);
        },
        [this, response] { showResult(response->text, response->model); });
}

void ActionReview::showResult(const std::string& text, const std::string& model) {
    showBusy(false);
    result_->setPlainText(qt(text));
    showSentence(
        shownCount(text::characterCount(text), "character", "characters") + " by " + qt(model)
        + ". Change what you like; the note is as it was until you take the text over.");
    result_->show();
    for (QPushButton* const button : {copy_, below_, replace_}) {
        button->show();
    }
    result_->setFocus();
}

void ActionReview::showSentence(const QString& sentence) {
    result_->hide();
    for (QPushButton* const button : {copy_, below_, replace_}) {
        button->hide();
    }
    state_->setText(sentence);
}

void ActionReview::showBusy(bool isBusy) {
    progress_->setVisible(isBusy);
    cancel_->setVisible(isBusy);
    ask_->setVisible(!isBusy);
    ask_->setText(question_ == nullptr ? "Ask Again" : "Ask");
}

void ActionReview::take(Way way) {
    CDNote* const changed = note();
    if (changed == nullptr) return showNotice(this, goneSentence);
    if (changed->trashedAt) return showNotice(this, "This note is in the trash.");
    if (way == Way::replace && holdsMoreThanText(*changed)) {
        return showNotice(this, std::string(moreThanTextSentence) + ".");
    }
    const std::string words = answerBody(action_, result_->toPlainText().toStdString());
    try {
        StoreContext& context = environment_.context();
        if (way == Way::below) {
            environment_.notes().updateNote(
                context, *changed, {.html = changed->html.valueOr("") + words});
        } else {
            environment_.notes().saveEdit(
                context, *changed, {.html = words, .loadedVersion = version_});
        }
    } catch (const UserError& error) {
        return showNotice(this, error.what());
    }
    if (environment_.save(this)) accept();
}

}  // namespace tesserine::app
