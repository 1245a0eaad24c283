#include "app/assistant/AskFilters.h"

#include "app/look/PageParts.h"
#include "app/state/AppEnvironment.h"
#include "core/services/Tree.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include <array>

namespace tesserine::app {
namespace {

/// Spans of days that end today.
struct Span {
    const char* title;
    int days;
};
constexpr std::array<Span, 4> spans{
    {{"Past week", 7}, {"Past month", 31}, {"Past 3 months", 92}, {"Past year", 366}}};
enum SpanIndex : int { anyTime = 0, firstSpan = 1, chosenDays = firstSpan + int(spans.size()) };

QDate dateOf(Instant instant, const Calendar& calendar) {
    const LocalTime local = calendar.local(instant);
    return {local.year, local.month, local.day};
}

std::string isoOf(const QDate& date) { return date.toString(Qt::ISODate).toStdString(); }

QDateEdit* makeDay(const QString& name, QWidget* parent) {
    auto* const day = new QDateEdit(parent);
    day->setCalendarPopup(true);
    day->setDisplayFormat("d MMM yyyy");
    day->setAccessibleName(name);
    return day;
}

}  // namespace

AskFilters::AskFilters(AppEnvironment& environment, QWidget* parent)
    : QWidget(parent),
      environment_(environment),
      notebook_(new QComboBox(this)),
      span_(new QComboBox(this)),
      days_(new QWidget(this)),
      from_(makeDay("From", days_)),
      to_(makeDay("To", days_)),
      web_(new QCheckBox("Search the web as well", this)),
      webHint_(makeHint(
          "The question, the passages of your notes and the web search go in one request.", this)) {
    notebook_->setObjectName("askNotebook");
    notebook_->setAccessibleName("Notebook to look in");
    notebook_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    notebook_->setMinimumContentsLength(8);
    span_->setObjectName("askSpan");
    span_->setAccessibleName("When the notes were written");
    span_->addItem("Any time");
    for (const Span& span : spans) {
        span_->addItem(span.title);
    }
    span_->addItem("Between two days");
    web_->setObjectName("askWeb");
    webHint_->setFont(Theme::font(TextRole::caption));
    const QDate today = dateOf(environment.now(), environment.calendar());
    from_->setDate(today.addMonths(-1));
    to_->setDate(today);

    auto* const choices = new QHBoxLayout;
    choices->setSpacing(space::small);
    choices->addWidget(notebook_, 1);
    choices->addWidget(span_, 1);
    auto* const days = new QHBoxLayout(days_);
    days->setContentsMargins(0, 0, 0, 0);
    days->setSpacing(space::small);
    days->addWidget(from_, 1);
    days->addWidget(makeHint("to", days_));
    days->addWidget(to_, 1);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(space::small);
    column->addLayout(choices);
    column->addWidget(days_);
    column->addWidget(web_);
    column->addWidget(webHint_);
    connect(span_, &QComboBox::currentIndexChanged, this, &AskFilters::showSpan);
    connect(web_, &QCheckBox::toggled, webHint_, &QWidget::setVisible);
    refresh();
    showSpan();
}

void AskFilters::refresh() {
    fillNotebooks();
    const bool mayAskWeb = AISettings::load(environment_.preferences()).allowWebSearch;
    web_->setVisible(mayAskWeb);
    if (!mayAskWeb) web_->setChecked(false);
    webHint_->setVisible(web_->isChecked());
}

void AskFilters::fillNotebooks() {
    const QString chosen = notebook_->currentData().toString();
    notebook_->clear();
    notebook_->addItem("All notebooks", QString());
    const auto rows =
        environment_.notebooks().tree(environment_.context(), environment_.collator());
    for (const auto& row : rows) {
        const QString path = QString::fromStdString(tree::pathText(*row.object));
        notebook_->addItem(path, path);
    }
    notebook_->setCurrentIndex(std::max(0, notebook_->findData(chosen)));
}

void AskFilters::showSpan() { days_->setVisible(span_->currentIndex() == chosenDays); }

QuestionFilters AskFilters::filters() const {
    QuestionFilters filters{.notebook = notebook_->currentData().toString().toStdString()};
    const int index = span_->currentIndex();
    if (index == chosenDays) {
        // Both days belong to the span; the search leaves out the days that it names.
        filters.after = isoOf(from_->date().addDays(-1));
        filters.before = isoOf(to_->date().addDays(1));
    } else if (index != anyTime) {
        const int days = spans[static_cast<std::size_t>(index - firstSpan)].days;
        const QDate today = dateOf(environment_.now(), environment_.calendar());
        filters.after = isoOf(today.addDays(-days));
    }
    return filters;
}

AskTesserine::Options AskFilters::options() const { return {.searchWeb = web_->isChecked()}; }

}  // namespace tesserine::app
