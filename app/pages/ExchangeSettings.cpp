#include "app/pages/ExchangeSettings.h"

#include "app/look/Notice.h"
#include "app/look/PageParts.h"
#include "app/state/DateWords.h"
#include "core/import/ImportReports.h"
#include "core/model/BookkeepingEntities.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include <memory>
#include <vector>

namespace tesserine::app {
namespace {

/// What the list shows of an import.
struct PastImport {
    Uuid id{};
    QString title{};
    QString outcome{};
    bool canUndo = false;
};

constexpr std::size_t mostImports = 20;

PastImport shown(const ImportReport& report, const Calendar& calendar) {
    QString outcome = report.undone
                          ? ExchangeSettings::tr("Undone.")
                          : ExchangeSettings::tr("%1, %2, from %3")
                                .arg(shownCount(report.imported + report.replaced, "note", "notes"))
                                .arg(shownCount(report.attachments, "file", "files"))
                                .arg(QString::fromStdString(report.file));
    if (!report.finished && !report.undone) {
        outcome += ExchangeSettings::tr(". It was stopped before its end.");
    }
    return {
        .id = *report.id,
        .title = QString::fromStdString(ImportReports::title(report, calendar)),
        .outcome = outcome,
        .canUndo = !report.undone && report.imported > 0};
}

}  // namespace

ExchangeSettings::ExchangeSettings(AppEnvironment& environment, QWidget* parent)
    : SettingsForm(tr("Import & Export"), environment.preferences(), parent),
      environment_(environment),
      job_(environment, Job::WhenLeft::goesOn) {
    QPushButton& bringIn = addButton(
        {tr("Import notes"), tr("From folders of Markdown, and exports of other programs.")},
        tr("Import…"));
    QPushButton& takeOut = addButton(
        {tr("Export the library"),
         tr("Into a folder of pages, Markdown and files that any program can read.")},
        tr("Export…"));
    connect(&bringIn, &QPushButton::clicked, this, &ExchangeSettings::importAsked);
    connect(&takeOut, &QPushButton::clicked, this, &ExchangeSettings::exportAsked);
    addHeading(tr("Past imports"));
    connect(&job_, &Job::finished, this, &ExchangeSettings::showImports);
    connect(&job_, &Job::failed, this, [this](const QString& sentence) {
        list_->setEnabled(true);
        showNotice(this, sentence.toStdString());
    });
    showImports();
}

void ExchangeSettings::showImports() {
    const auto imports = std::make_shared<std::vector<PastImport>>();
    const Calendar calendar = environment_.calendar();
    environment_.inBackground(
        [&clock = environment_.clock(), imports, calendar](StoreContext& context, auto) {
            const ImportReports reports(clock);
            for (const CDImportReport* row : reports.list(context)) {
                if (imports->size() == mostImports) break;
                const ImportReport report = reports.read(context, *row);
                if (report.id) imports->push_back(shown(report, calendar));
            }
        },
        this,
        [this, imports] {
            delete list_;
            list_ = new QWidget(this);
            imports_ = new QVBoxLayout(list_);
            imports_->setContentsMargins(0, 0, 0, 0);
            imports_->setSpacing(space::medium);
            for (const PastImport& one : *imports) {
                addImport(one.id, one.title, one.outcome, one.canUndo);
            }
            if (imports->empty()) imports_->addWidget(makeHint(tr("None yet."), list_));
            addWide(list_);
        });
}

void ExchangeSettings::addImport(
    const Uuid& id, const QString& title, const QString& outcome, bool canUndo) {
    auto* const words = new QVBoxLayout;
    words->setSpacing(space::hair);
    words->addWidget(makeText(title, TextRole::body, list_));
    words->addWidget(makeHint(outcome, list_));
    auto* const row = new QHBoxLayout;
    row->addLayout(words, 1);
    if (canUndo) {
        auto* const button = new QPushButton(tr("Undo…"), list_);
        button->setAccessibleName(tr("Undo %1").arg(title));
        connect(button, &QPushButton::clicked, this, [this, id] { askToUndo(id); });
        row->addWidget(button, 0, Qt::AlignTop);
    }
    imports_->addLayout(row);
}

/// The list may be made anew, and the button be gone, while the question is open.
void ExchangeSettings::askToUndo(const Uuid& id) {
    auto* const question = new QMessageBox(
        QMessageBox::Question,
        tr("Undo the import"),
        tr("The notes that it made go to the trash. Notes that it replaced stay as they are."),
        QMessageBox::Cancel,
        this);
    question->setObjectName("question");
    question->setAttribute(Qt::WA_DeleteOnClose);
    auto* const yes = question->addButton(tr("Undo Import"), QMessageBox::AcceptRole);
    connect(yes, &QPushButton::clicked, this, [this, id] { undo(id); });
    question->open();
}

void ExchangeSettings::undo(const Uuid& id) {
    if (job_.isRunning()) return;
    list_->setEnabled(false);  // until it is made anew
    job_.start([&clock = environment_.clock(), id](const Job::Given& given) {
        ImportReports(clock).undo(given.context, id, {.stop = given.stop});
    });
}

}  // namespace tesserine::app
