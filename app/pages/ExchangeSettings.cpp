#include "app/pages/ExchangeSettings.h"

#include "app/look/Notice.h"
#include "app/look/PageParts.h"
#include "app/pages/ImportWords.h"
#include "app/state/DateWords.h"
#include "core/import/ImportReports.h"
#include "core/model/BookkeepingEntities.h"
#include "core/model/NoteEntities.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <memory>
#include <set>
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

/// How many of the notes that the import made were changed after its end, by `now`: a note may bear
/// a date to come from its source.
std::size_t changedSince(
    StoreContext& context, const ImportReport& report, Instant end, Instant now) {
    std::set<Uuid> made;
    for (const ImportedNote& note : report.notes) {
        if (note.outcome == ImportOutcome::imported && note.noteID) made.insert(*note.noteID);
    }
    const auto changed = context.fetch<CDNote>(
        {.predicate = {"trashedAt == nil AND updatedAt > %@ AND updatedAt <= %@", end, now}});
    return static_cast<std::size_t>(std::ranges::count_if(
        changed, [&](const CDNote* note) { return note->id && made.contains(*note->id); }));
}

/// What is asked before the import is undone.
QString question(StoreContext& context, const ImportReport& report, Instant now) {
    QString text = ExchangeSettings::tr("The notes that it made go to the trash");
    if (report.finished) {
        const std::size_t changed = changedSince(context, report, *report.finished, now);
        text += ".";
        if (changed > 0) {
            text += " "
                    + importing::counted(
                        changed,
                        "of them was changed since the import; it goes to the trash as well.",
                        "of them were changed since the import; they go to the trash as well.");
        }
    } else {
        text += ExchangeSettings::tr(", also those that were changed since.");
    }
    return text + ExchangeSettings::tr(" Notes that it replaced stay as they are.");
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
        connect(button, &QPushButton::clicked, this, [this, id] { prepareToUndo(id); });
        row->addWidget(button, 0, Qt::AlignTop);
    }
    imports_->addLayout(row);
}

void ExchangeSettings::prepareToUndo(const Uuid& id) {
    const auto text = std::make_shared<QString>();
    environment_.inBackground(
        [&clock = environment_.clock(), id, text](StoreContext& context, auto) {
            const ImportReports reports(clock);
            *text = question(context, reports.read(context, reports.get(context, id)), clock.now());
        },
        this,
        [this, id, text] { askToUndo(id, *text); },
        [this](const std::string& sentence) { showNotice(this, sentence); });
}

/// The list may be made anew, and the button be gone, while the question is open.
void ExchangeSettings::askToUndo(const Uuid& id, const QString& text) {
    if (findChild<QMessageBox*>("question") != nullptr) return;  // the button was pressed twice
    auto* const question = new QMessageBox(
        QMessageBox::Question, tr("Undo the import"), text, QMessageBox::Cancel, this);
    question->setObjectName("question");
    question->setAttribute(Qt::WA_DeleteOnClose);
    auto* const yes = question->addButton(tr("Undo Import"), QMessageBox::AcceptRole);
    connect(yes, &QPushButton::clicked, this, [this, id] { undo(id); });
    question->setDefaultButton(QMessageBox::Cancel);
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
