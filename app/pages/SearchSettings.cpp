#include "app/pages/SearchSettings.h"

#include "app/look/PageParts.h"
#include "search/RecentSearches.h"
#include "search/SearchCoordinator.h"
#include "search/SearchSynonyms.h"

#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>

#include <chrono>
#include <memory>

namespace tesserine::app {
namespace {

constexpr auto pauseOfTyping = std::chrono::milliseconds(600);
constexpr int linesShown = 5;

}  // namespace

SearchSettings::SearchSettings(AppEnvironment& environment, QWidget* parent)
    : SettingsForm(tr("Search"), environment.preferences(), parent),
      environment_(environment),
      synonyms_(new QPlainTextEdit(this)),
      coverage_(makeHint({}, this)),
      job_(environment, Job::WhenLeft::goesOn) {
    addSynonyms();
    addHeading(tr("History"));
    QPushButton& forget = addButton(
        {tr("Recent searches"), tr("They are offered while you type.")}, tr("Forget All"));
    forget.setEnabled(!RecentSearches(preferences()).all().empty());
    connect(&forget, &QPushButton::clicked, this, [this, &forget] {
        keep(std::string(RecentSearches::preferenceKey), [this] {
            RecentSearches(preferences()).forgetAll();
        });
        forget.setEnabled(!RecentSearches(preferences()).all().empty());
    });
    addIndex();
}

void SearchSettings::addSynonyms() {
    addHeading(tr("Words found for each other"));
    addWide(makeHint(
        tr("One group a line, with commas between the words: invoice, bill, receipt."), this));
    synonyms_->setObjectName("synonyms");
    synonyms_->setAccessibleName(tr("Words found for each other"));
    synonyms_->setTabChangesFocus(true);
    synonyms_->setPlainText(QString::fromStdString(SearchSynonyms::load(preferences()).lines()));
    synonyms_->setFixedHeight(
        linesShown * synonyms_->fontMetrics().lineSpacing() + 2 * space::small);
    addWide(synonyms_);
    typing_.setSingleShot(true);
    typing_.setInterval(pauseOfTyping);
    connect(synonyms_, &QPlainTextEdit::textChanged, &typing_, qOverload<>(&QTimer::start));
    connect(&typing_, &QTimer::timeout, this, &SearchSettings::keepSynonyms);
}

void SearchSettings::keepSynonyms() {
    keep(std::string(SearchSynonyms::preferenceKey), [this] {
        SearchSynonyms::fromLines(synonyms_->toPlainText().toStdString()).save(preferences());
    });
}

/// The settings may be closed before the pause is over.
void SearchSettings::hideEvent(QHideEvent* event) {
    if (typing_.isActive()) keepSynonyms();
    typing_.stop();
    SettingsForm::hideEvent(event);
}

void SearchSettings::addIndex() {
    addHeading(tr("Index"));
    coverage_->setObjectName("coverage");
    addWide(coverage_);
    QPushButton& again = addButton(
        {tr("Search index"),
         tr("It keeps itself up to date. Making it anew loses nothing and takes a moment.")},
        tr("Rebuild"));
    connect(&again, &QPushButton::clicked, this, &SearchSettings::rebuild);
    connect(&job_, &Job::progressed, this, [this](std::size_t done, std::size_t total) {
        if (total > 0) coverage_->setText(tr("%1 of %2 are in the index…").arg(done).arg(total));
    });
    connect(&job_, &Job::failed, coverage_, &QLabel::setText);
    connect(&job_, &Job::finished, this, &SearchSettings::showCoverage);
    showCoverage();
}

void SearchSettings::showCoverage() {
    const auto sentence = std::make_shared<std::string>();
    environment_.search();  // opened on this thread
    environment_.inBackground(
        [&environment = environment_, sentence](StoreContext&, auto) {
            *sentence = environment.search().coverage().summary(environment.setting().locale);
        },
        this,
        [this, sentence] { coverage_->setText(QString::fromStdString(*sentence)); },
        [this](const std::string& why) { coverage_->setText(QString::fromStdString(why)); });
}

void SearchSettings::rebuild() {
    if (job_.isRunning()) return;
    environment_.search();  // opened on this thread
    job_.start([&environment = environment_](const Job::Given& given) {
        environment.search().rebuild({.stop = given.stop, .progress = given.progress});
    });
}

}  // namespace tesserine::app
