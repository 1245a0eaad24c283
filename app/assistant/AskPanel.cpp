#include "app/assistant/AskPanel.h"

#include "ai/AIError.h"
#include "ai/Dispatch.h"
#include "app/assistant/AnswerView.h"
#include "app/assistant/AskFilters.h"
#include "app/assistant/DataNotice.h"
#include "app/assistant/WhatIsSent.h"
#include "app/look/EmptyState.h"
#include "app/look/IconButton.h"
#include "app/look/PageParts.h"
#include "app/look/QtText.h"
#include "app/look/Separator.h"
#include "app/state/AppEnvironment.h"
#include "app/state/DateWords.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <utility>

namespace tesserine::app {
namespace {

constexpr int narrowest = 300;
constexpr int usualWidth = 380;
constexpr int linesOfQuestion = 3;
constexpr const char* hint =
    "Answers come from your notes, with the places they are from. Return asks; Shift+Return "
    "begins a new line.";

/// "12 passages, 8,431 characters of your notes, were sent to api.x.ai · grok-4.6"
QString figuresOf(const AskResult& result, const std::string& destination) {
    const QString what =
        result.noteCitations.empty()
            ? QString("Nothing of your notes was sent; the question went")
            : shownCount(result.noteCitations.size(), "passage", "passages") + ", "
                  + shownCount(result.contextCharactersSent, "character", "characters")
                  + " of your notes, sent";
    return what + " to " + qt(destination) + " · " + qt(result.model);
}

}  // namespace

AskPanel::AskPanel(AppEnvironment& environment, QWidget* parent)
    : QWidget(parent),
      environment_(environment),
      job_(environment),
      pages_(new QStackedWidget(this)),
      off_(new EmptyState({.icon = "sparkle", .title = {}, .text = {}}, pages_)) {
    setObjectName("askPanel");
    setAccessibleName("Ask");
    setMinimumWidth(narrowest);
    resize(usualWidth, height());
    build();
    connect(off_, &EmptyState::acted, this, &AskPanel::settingsWanted);
    connect(&job_, &Job::failed, this, &AskPanel::showFailure);
    refresh();
}

AskPanel::~AskPanel() = default;

void AskPanel::build() {
    auto* const asking = new QWidget(pages_);
    auto* const column = new QVBoxLayout(asking);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(makeQuestion());
    column->addWidget(new Separator(Qt::Horizontal, asking));
    column->addWidget(makeAnswer(), 1);
    pages_->addWidget(asking);
    pages_->addWidget(off_);

    auto* const all = new QVBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->setSpacing(0);
    all->addWidget(makeHead());
    all->addWidget(pages_, 1);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Base);
}

QWidget* AskPanel::makeHead() {
    auto* const head = new QWidget(this);
    auto* const record = new IconButton("eye", "Show what is sent", head);
    record->setObjectName("showRequest");
    auto* const closing = new IconButton("close", "Close the panel", head);
    auto* const row = new QHBoxLayout(head);
    row->setContentsMargins(space::large, space::small, space::small, space::small);
    row->addWidget(makeText("Ask", TextRole::heading, head), 1);
    row->addWidget(record);
    row->addWidget(closing);
    connect(record, &QToolButton::clicked, this, &AskPanel::showRequest);
    connect(closing, &QToolButton::clicked, this, [this] {
        cancel();
        hide();
        emit closed();
    });
    return head;
}

QWidget* AskPanel::makeQuestion() {
    auto* const part = new QWidget(this);
    question_ = new QPlainTextEdit(part);
    question_->setObjectName("question");
    question_->setAccessibleName("Question");
    question_->setPlaceholderText("What do you want to know?");
    question_->setTabChangesFocus(true);
    question_->setFixedHeight(
        linesOfQuestion * question_->fontMetrics().lineSpacing() + 2 * space::medium);
    question_->installEventFilter(this);
    filters_ = new AskFilters(environment_, part);
    ask_ = makeMainButton("Ask", part);
    ask_->setObjectName("ask");
    cancel_ = new QPushButton("Cancel", part);
    cancel_->setObjectName("cancelAsking");
    auto* const buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cancel_);
    buttons->addWidget(ask_);
    auto* const column = new QVBoxLayout(part);
    column->setContentsMargins(space::large, 0, space::large, space::medium);
    column->setSpacing(space::small);
    column->addWidget(question_);
    column->addWidget(filters_);
    column->addLayout(buttons);
    connect(ask_, &QPushButton::clicked, this, &AskPanel::ask);
    connect(cancel_, &QPushButton::clicked, this, &AskPanel::cancel);
    return part;
}

QWidget* AskPanel::makeAnswer() {
    auto* const part = new QWidget(this);
    progress_ = new QProgressBar(part);
    progress_->setRange(0, 0);
    progress_->setTextVisible(false);
    progress_->setFixedHeight(space::small);
    progress_->setAccessibleName("Waiting for the answer");
    state_ = makeHint(hint, part);
    state_->setObjectName("askState");
    answer_ = new AnswerView(part);
    figures_ = makeHint({}, part);
    figures_->setObjectName("askFigures");
    figures_->setFont(Theme::font(TextRole::caption));
    auto* const column = new QVBoxLayout(part);
    column->setContentsMargins(space::large, space::medium, space::large, space::medium);
    column->setSpacing(space::small);
    column->addWidget(progress_);
    column->addWidget(state_);
    column->addWidget(answer_, 1);
    column->addStretch(0);
    column->addWidget(figures_);
    answer_->hide();
    figures_->hide();
    showBusy(false);
    connect(answer_, &AnswerView::citationChosen, this, &AskPanel::open);
    return part;
}

void AskPanel::begin() {
    refresh();
    show();
    question_->setFocus(Qt::ShortcutFocusReason);
    question_->selectAll();
}

void AskPanel::cancel() { job_.cancel(); }

/// Shows whether the assistant may be asked at all. The keyring is asked with the question only.
void AskPanel::refresh() {
    const AISettings settings = AISettings::load(environment_.preferences());
    const bool isRelayMissing =
        settings.backend == AISettings::Backend::relay && environment_.sync() == nullptr;
    filters_->refresh();
    if (settings.isEnabled && !isRelayMissing) return pages_->setCurrentIndex(0);
    const AIError missing = settings.isEnabled ? AIError::notConfigured() : AIError::disabled();
    off_->setContent(
        {.icon = "sparkle",
         .title = "Ask your notes",
         .text = QString::fromUtf8(missing.what()),
         .action = "Open Settings"});
    pages_->setCurrentWidget(off_);
}

std::optional<AskedQuestion> AskPanel::typed() const {
    const QString text = question_->toPlainText().trimmed();
    if (text.isEmpty()) return std::nullopt;
    return AskedQuestion{
        .text = text.toStdString(), .filters = filters_->filters(), .options = filters_->options()};
}

void AskPanel::run(
    std::function<void(Exchange&, const Assistant&, const Job::Given&)> work,
    std::function<void(const std::shared_ptr<const Exchange>&)> done) {
    const auto assistant = std::make_shared<const Assistant>(environment_);
    const auto exchange = std::make_shared<Exchange>();
    exchange->destination = assistant->destination();
    showBusy(true);
    job_.start(
        [exchange, assistant, work = std::move(work)](const Job::Given& given) {
            work(*exchange, *assistant, given);
        },
        [this, exchange, done = std::move(done)] {
            done(exchange);
            showBusy(false);
        });
}

void AskPanel::ask() {
    const auto question = typed();
    if (!question || job_.isRunning()) return question_->setFocus();
    send([question](const Assistant& assistant, StoreContext& context) {
        return assistant.frame(*question, context);
    });
}

/// Sends what `frame` gives, once the user knows what that is.
void AskPanel::send(std::function<FramedQuestion(const Assistant&, StoreContext&)> frame) {
    withDataNotice(environment_, this, [this, frame = std::move(frame)] {
        if (job_.isRunning()) return;
        showSentence("Asking " + qt(Assistant(environment_).destination()) + "…");
        run(
            [frame](Exchange& exchange, const Assistant& assistant, const Job::Given& given) {
                exchange.framed = frame(assistant, given.context);
                const PreparedQuestion& prepared = exchange.framed.prepared;
                const auto titles = titlesOf(prepared.citations);
                exchange.result = AskTesserine::result(
                    prepared, assistant.send(prepared.request, "ask", titles, given.stop));
            },
            [this](const auto& exchange) { showAnswer(exchange); });
    });
}

/// The request as it would be sent now; without a question, what was sent before.
void AskPanel::showRequest() {
    if (job_.isRunning()) return;
    const auto question = typed();
    if (!question) return (new WhatIsSent(environment_, std::nullopt, this))->open();
    run(
        [question](Exchange& exchange, const Assistant& assistant, const Job::Given& given) {
            exchange.framed = assistant.frame(*question, given.context);
        },
        [this](const auto& exchange) {
            const AISettings settings = AISettings::load(environment_.preferences());
            auto* const view = new WhatIsSent(
                environment_,
                WhatIsSent::Request{
                    .body = exactRequest(settings, exchange->framed.prepared.request),
                    .destination = exchange->destination},
                this);
            connect(view, &WhatIsSent::sendingWanted, this, [this, exchange] {
                send([exchange](const Assistant&, StoreContext&) { return exchange->framed; });
            });
            view->open();
        });
}

void AskPanel::showAnswer(const std::shared_ptr<const Exchange>& exchange) {
    shown_ = exchange;
    answer_->showAnswer(exchange->result, environment_.now(), environment_.calendar());
    figures_->setText(figuresOf(exchange->result, exchange->destination));
    state_->hide();
    answer_->show();
    figures_->show();
    if (hasKeys()) answer_->setFocus();
}

/// The question stays, so that it can be asked again.
void AskPanel::showFailure(const QString& sentence) {
    showSentence(sentence);
    if (hasKeys()) question_->setFocus();
    showBusy(false);
}

/// Whoever writes in the note meanwhile goes on there.
bool AskPanel::hasKeys() const {
    const QWidget* const widget = window()->focusWidget();
    return widget == nullptr || widget == this || isAncestorOf(widget);
}

/// In the place of an answer.
void AskPanel::showSentence(const QString& sentence) {
    answer_->hide();
    figures_->hide();
    state_->setText(sentence);
    state_->show();
}

void AskPanel::showBusy(bool isBusy) {
    progress_->setVisible(isBusy);
    cancel_->setVisible(isBusy);
    ask_->setEnabled(!isBusy);
}

void AskPanel::open(int citation) {
    const auto& citations = shown_->result.noteCitations;
    const auto place = static_cast<std::size_t>(citation) - 1;
    if (place >= citations.size()) return;
    emit citationChosen(citations[place].noteID, qt(shown_->framed.places[place]));
}

/// What the settings say may have changed while another window was in front.
bool AskPanel::event(QEvent* event) {
    const auto type = event->type();
    const bool isInFront = type == QEvent::Show || type == QEvent::WindowActivate;
    if (isInFront && isVisible()) refresh();
    return QWidget::event(event);
}

bool AskPanel::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const auto& key = static_cast<const QKeyEvent&>(*event);
        const bool isReturn = key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter;
        if (isReturn && !(key.modifiers() & Qt::ShiftModifier)) {
            ask();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace tesserine::app
