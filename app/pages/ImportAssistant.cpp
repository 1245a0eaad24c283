#include "app/pages/ImportAssistant.h"

#include "app/look/LongWords.h"
#include "app/pages/AssistantStep.h"
#include "app/pages/ChoiceCard.h"
#include "app/pages/ImportWords.h"
#include "app/state/DateWords.h"
#include "base/Text.h"
#include "core/import/ImportReports.h"
#include "core/services/LibraryCare.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace tesserine::app {
namespace {

enum ImportStep { choiceStep, previewStep, progressStep, reportStep };

std::filesystem::path pathOf(const QString& text) { return text.toStdString(); }

/// "Work / Plans" as its names.
std::vector<std::string> pathNames(const QString& typed) {
    std::vector<std::string> names;
    for (const QString& name : typed.split('/', Qt::SkipEmptyParts)) {
        if (!name.trimmed().isEmpty()) names.push_back(name.trimmed().toStdString());
    }
    return names;
}

std::optional<Uuid> firstNoteOf(const ImportReport& report) {
    for (const ImportedNote& note : report.notes) {
        if (note.noteID && note.outcome == ImportOutcome::imported) return note.noteID;
    }
    return std::nullopt;
}

}  // namespace

ImportAssistant::ImportAssistant(AppEnvironment& environment, QWidget* parent)
    : QDialog(parent),
      environment_(environment),
      sources_(importSources(environment)),
      job_(environment),
      steps_(new QStackedWidget(this)),
      progress_(tr("Importing"), job_, this) {
    setObjectName("importAssistant");
    setWindowTitle(tr("Import"));
    steps_->addWidget(makeChoice());
    steps_->addWidget(makePreview());
    steps_->addWidget(progress_.page);
    steps_->addWidget(makeReport());
    auto* const all = new QVBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->addWidget(steps_);
    showStep(*steps_, choiceStep);
    resizeToFit(*this, {560, 540});
    connect(&job_, &Job::failed, this, &ImportAssistant::showFailure);
    connect(&job_, &Job::finished, this, &ImportAssistant::beginLook);
}

ImportAssistant::~ImportAssistant() = default;

QWidget* ImportAssistant::makeChoice() {
    const AssistantStep step(tr("Import from"), this);
    for (const ImportSource& source : sources_) {
        auto* const card = new ChoiceCard(source.icon, source.title, source.text, step.page);
        connect(card, &ChoiceCard::clicked, this, [this, &source] { pick(source); });
        step.column->addWidget(card);
    }
    step.column->addStretch(1);
    auto* const cancel = new QPushButton(tr("Cancel"), step.page);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    step.buttons->addWidget(cancel);
    return step.page;
}

QWidget* ImportAssistant::makePreview() {
    const AssistantStep step(tr("What will be imported"), this);
    from_ = makeHint({}, step.page);
    content_ = makeText({}, TextRole::body, step.page);
    content_->setObjectName("importContent");
    step.column->addWidget(from_);
    step.column->addWidget(content_);
    step.column->addSpacing(space::medium);

    choices_ = new QWidget(step.page);
    auto* const form = new QFormLayout(choices_);
    form->setContentsMargins(0, 0, 0, 0);
    form->setVerticalSpacing(space::small);
    form->setHorizontalSpacing(space::large);
    notebook_ = new QLineEdit(choices_);
    notebook_->setObjectName("importNotebook");
    notebook_->setPlaceholderText(tr("As the source has them"));
    tag_ = new QLineEdit(choices_);
    tag_->setPlaceholderText(tr("None"));
    duplicates_ = new QComboBox(choices_);
    duplicates_->addItems(
        {tr("Leave out"), tr("Replace, keeping the old version"), tr("Import beside them")});
    tasks_ = new QCheckBox(tr("Make tasks of tasks, not checklists"), choices_);
    tasks_->setObjectName("importTasks");
    tasks_->setChecked(true);
    form->addRow(tr("Into notebook"), notebook_);
    form->addRow(tr("Tag all notes"), tag_);
    form->addRow(tr("Notes already here"), duplicates_);
    form->addRow(QString(), tasks_);
    step.column->addWidget(choices_);
    step.column->addStretch(1);

    auto* const back = new QPushButton(tr("Back"), step.page);
    import_ = makeMainButton(tr("Import"), step.page);
    connect(back, &QPushButton::clicked, this, [this] {
        job_.cancel();
        isLookDue_ = false;
        showStep(*steps_, choiceStep);
    });
    connect(import_, &QPushButton::clicked, this, &ImportAssistant::run);
    step.buttons->addWidget(back);
    step.buttons->addWidget(import_);
    return step.page;
}

QWidget* ImportAssistant::makeReport() {
    const AssistantStep step(tr("Imported"), this);
    outcome_ = makeText({}, TextRole::body, step.page);
    outcome_->setObjectName("importOutcome");
    troubles_ = new QPlainTextEdit(step.page);
    troubles_->setReadOnly(true);
    troubles_->setAccessibleName(tr("What came in changed or not at all"));
    step.column->addWidget(outcome_);
    step.column->addWidget(troubles_, 1);
    step.column->addStretch(0);
    undo_ = new QPushButton(tr("Undo Import"), step.page);
    done_ = makeMainButton(tr("Done"), step.page);
    connect(undo_, &QPushButton::clicked, this, &ImportAssistant::undo);
    connect(done_, &QPushButton::clicked, this, &QDialog::accept);
    step.buttons->addWidget(undo_);
    step.buttons->addWidget(done_);
    return step.page;
}

bool ImportAssistant::begin(const std::vector<std::filesystem::path>& paths) {
    if (paths.empty() || steps_->currentIndex() > previewStep) return false;
    source_ = sourceFor(sources_, paths.front());
    if (!source_) return false;
    paths_ = paths;
    look();
    return true;
}

void ImportAssistant::pick(const ImportSource& source) {
    ImportSource::Paths paths;
    if (source.picks == ImportSource::Picks::folder) {
        const QString folder = QFileDialog::getExistingDirectory(this, source.title);
        if (!folder.isEmpty()) paths.push_back(pathOf(folder));
    } else {
        for (const QString& file :
             QFileDialog::getOpenFileNames(this, source.title, {}, source.filter)) {
            paths.push_back(pathOf(file));
        }
    }
    if (paths.empty()) return;
    source_ = &source;
    paths_ = std::move(paths);
    look();
}

void ImportAssistant::look() {
    QString from = QString::fromStdString(paths_.front().string());
    if (paths_.size() > 1) from = tr("%1 and %2 more").arg(from).arg(paths_.size() - 1);
    from_->setText(withBreaks(from));
    content_->setText(tr("Looking…"));
    choices_->setVisible(source_->choices == ImportSource::Choices::all);
    tasks_->setVisible(source_->holdsTasks);
    import_->setEnabled(false);
    showStep(*steps_, previewStep);
    job_.cancel();
    isLookDue_ = true;
    beginLook();
}

/// One look at a time: what was given up for another comes to its end first.
void ImportAssistant::beginLook() {
    if (!isLookDue_ || job_.isRunning()) return;
    isLookDue_ = false;
    const auto found = std::make_shared<ImportPreview>();
    job_.start(
        [source = *source_, paths = paths_, found](const Job::Given& given) {
            *found = source.preview(given.context, paths, {}, {.stop = given.stop});
        },
        [this, found] {
            if (!job_.isCancelled()) showPreview(*found);
        });
}

void ImportAssistant::showPreview(const ImportPreview& found) {
    content_->setText(importing::sentence(found));
    import_->setEnabled(found.found > 0);
    const bool isTyping = notebook_->isModified() || tag_->isModified();
    if (found.found > 0 && !isTyping) import_->setFocus();
}

ImportOptions ImportAssistant::options() const {
    ImportOptions options{
        .notebook = pathNames(notebook_->text()),
        .duplicates = static_cast<DuplicatePolicy>(duplicates_->currentIndex()),
        .createsTasks = tasks_->isChecked()};
    const std::string tag = text::sanitized(tag_->text().trimmed().toStdString());
    if (!tag.empty()) options.tag = tag;
    return options;
}

void ImportAssistant::run() {
    progress_.begin(tr("Making a backup…"));
    showStep(*steps_, progressStep);
    const auto made = std::make_shared<ImportReport>();
    job_.start(
        [&environment = environment_, source = *source_, paths = paths_, options = options(), made](
            const Job::Given& given) {
            if (!environment.store().wasCreated()) {
                LibraryCare care(
                    environment.store(),
                    environment.clock(),
                    environment.random(),
                    environment.log());
                care.backUpBefore("import", given.stop);
            }
            *made = source.run(
                given.context,
                paths,
                options,
                {.stop = given.stop, .progress = [&given](const ImportProgress& state) {
                     given.progress(state.done, state.total);
                 }});
        },
        [this, made] { showReport(*made); });
}

void ImportAssistant::showReport(const ImportReport& made) {
    reportID_ = made.id;
    outcome_->setText(importing::sentence(made));
    const QStringList lines = importing::troubles(made);
    troubles_->setPlainText(lines.join('\n'));
    troubles_->setVisible(!lines.isEmpty());
    undo_->setVisible(made.id && made.imported > 0);
    undo_->setEnabled(true);
    showStep(*steps_, reportStep);
    emit imported(firstNoteOf(made));
}

void ImportAssistant::undo() {
    if (job_.isRunning() || !reportID_) return;
    showUndoing(true);
    outcome_->setText(tr("Undoing the import…"));
    const auto undone = std::make_shared<ImportUndo>();
    job_.start(
        [&clock = environment_.clock(), id = *reportID_, undone](const Job::Given& given) {
            *undone = ImportReports(clock).undo(given.context, id, {.stop = given.stop});
        },
        [this, undone] {
            showUndoing(false);
            outcome_->setText(
                tr("The import was undone: %1 in the trash.")
                    .arg(shownCount(undone->trashed, tr("note is"), tr("notes are"))));
            undo_->hide();
        });
}

/// Who closes the dialog does not want a half of it.
void ImportAssistant::showUndoing(bool isUndoing) {
    undo_->setEnabled(!isUndoing);
    done_->setEnabled(!isUndoing);
}

void ImportAssistant::showFailure(const QString& sentence) {
    if (isLookDue_) return beginLook();                // it was of what was given up
    if (steps_->currentIndex() == choiceStep) return;  // what was looked at is no longer wanted
    if (steps_->currentIndex() == previewStep) {
        content_->setText(sentence);
        return;
    }
    outcome_->setText(sentence);
    troubles_->hide();
    if (steps_->currentIndex() == reportStep) return showUndoing(false);  // it can be tried again
    undo_->hide();
    showStep(*steps_, reportStep);
}

void ImportAssistant::reject() {
    if (job_.isRunning() && steps_->currentIndex() == progressStep) {
        return job_.cancel();  // the report follows
    }
    if (job_.isRunning() && steps_->currentIndex() == reportStep) return;  // an undo
    QDialog::reject();
}

}  // namespace tesserine::app
