#include "app/pages/ExportAssistant.h"

#include "app/pages/AssistantStep.h"
#include "app/pages/ImportWords.h"
#include "base/Product.h"
#include "core/export/LibraryExporter.h"

#include <QCheckBox>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <memory>
#include <string>

namespace tesserine::app {
namespace {

enum ExportStep { choiceStep, progressStep, resultStep };

/// What is typed without its beginning lies in the user's own folder, as "~" does.
std::filesystem::path folderTyped(QString typed) {
    if (typed == "~" || typed.startsWith("~/")) typed = "." + typed.mid(1);
    return QDir::cleanPath(QDir::home().absoluteFilePath(typed)).toStdString();
}

}  // namespace

ExportAssistant::ExportAssistant(
    AppEnvironment& environment, const QString& folder, QWidget* parent)
    : QDialog(parent),
      environment_(environment),
      job_(environment),
      steps_(new QStackedWidget(this)),
      progress_(tr("Exporting"), job_, this) {
    setObjectName("exportAssistant");
    setWindowTitle(tr("Export"));
    steps_->addWidget(makeChoice(folder));
    steps_->addWidget(progress_.page);
    steps_->addWidget(makeResult());
    auto* const all = new QVBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->addWidget(steps_);
    showStep(*steps_, choiceStep);
    resizeToFit(*this, {520, 420});
    connect(
        &job_, &Job::failed, this, [this](const QString& sentence) { endWith(sentence, false); });
}

QWidget* ExportAssistant::makeChoice(const QString& folder) {
    const AssistantStep step(tr("Export the library"), this);
    step.column->addWidget(makeHint(
        tr("A folder with a page for every note, in notebooks as you have them, and a table of "
           "contents. Any browser shows it; nothing of it needs Tesserine."),
        step.page));
    step.column->addSpacing(space::small);
    attachments_ = addBox(step.page, tr("Pictures and files"), "exportAttachments", true);
    tasks_ = addBox(step.page, tr("Tasks"), "exportTasks", true);
    markdown_ = addBox(step.page, tr("Markdown beside each page"), "exportMarkdown", true);
    originals_ = addBox(step.page, tr("Sources of imported notes"), "exportOriginals", false);
    trash_ = addBox(step.page, tr("Notes in the trash"), "exportTrash", false);
    for (QCheckBox* box : {attachments_, tasks_, markdown_, originals_, trash_}) {
        step.column->addWidget(box);
    }
    folder_ = new QLineEdit(folder, step.page);
    folder_->setObjectName("exportFolder");
    folder_->setAccessibleName(tr("Folder for the export"));
    auto* const choose = new QPushButton(tr("Choose…"), step.page);
    choose->setAccessibleName(tr("Choose the folder for the export"));
    connect(choose, &QPushButton::clicked, this, &ExportAssistant::chooseFolder);
    auto* const place = new QHBoxLayout;
    place->addWidget(folder_, 1);
    place->addWidget(choose);
    step.column->addSpacing(space::small);
    step.column->addLayout(place);
    step.column->addStretch(1);

    auto* const cancel = new QPushButton(tr("Cancel"), step.page);
    QPushButton* const write = makeMainButton(tr("Export"), step.page);
    write->setObjectName("export");
    write->setDisabled(folder.isEmpty());
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(write, &QPushButton::clicked, this, &ExportAssistant::run);
    step.buttons->addWidget(cancel);
    connect(folder_, &QLineEdit::textChanged, write, [write](const QString& typed) {
        write->setEnabled(!typed.trimmed().isEmpty());
    });
    step.buttons->addWidget(write);
    return step.page;
}

QCheckBox* ExportAssistant::addBox(
    QWidget* page, const QString& title, const char* name, bool isOn) {
    auto* const box = new QCheckBox(title, page);
    box->setObjectName(name);
    box->setChecked(isOn);
    return box;
}

QWidget* ExportAssistant::makeResult() {
    const AssistantStep step(tr("Export"), this);
    outcome_ = makeText({}, TextRole::body, step.page);
    outcome_->setObjectName("exportOutcome");
    outcome_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    step.column->addWidget(outcome_);
    step.column->addStretch(1);
    back_ = new QPushButton(tr("Back"), step.page);
    show_ = new QPushButton(tr("Show in Folder"), step.page);
    QPushButton* const done = makeMainButton(tr("Done"), step.page);
    connect(back_, &QPushButton::clicked, this, [this] { showStep(*steps_, choiceStep); });
    connect(show_, &QPushButton::clicked, this, [this] { showFolder(written_); });
    connect(done, &QPushButton::clicked, this, &QDialog::accept);
    step.buttons->addWidget(back_);
    step.buttons->addWidget(show_);
    step.buttons->addWidget(done);
    return step.page;
}

void ExportAssistant::chooseFolder() {
    const QString chosen = QFileDialog::getExistingDirectory(
        this, tr("Choose a folder for the export"), folder_->text());
    if (!chosen.isEmpty()) folder_->setText(chosen);
}

void ExportAssistant::run() {
    if (job_.isRunning()) return;
    progress_.begin({});
    showStep(*steps_, progressStep);
    const ExportOptions options{
        .includeTrash = trash_->isChecked(),
        .includeMarkdown = markdown_->isChecked(),
        .includeOriginalImportSource = originals_->isChecked(),
        .includeAttachments = attachments_->isChecked(),
        .includeTasks = tasks_->isChecked(),
        .appVersion = std::string(product::version)};
    const auto summary = std::make_shared<ExportSummary>();
    job_.start(
        [&environment = environment_,
         calendar = environment_.calendar(),
         folder = folderTyped(folder_->text().trimmed()),
         options,
         summary](const Job::Given& given) {
            const LibraryExporter exporter(
                {.clock = environment.clock(),
                 .calendar = calendar,
                 .collator = environment.collator(),
                 .library = environment.setting().library});
            *summary = exporter.run(
                given.context,
                folder,
                options,
                {.stop = given.stop, .progress = [&given](const ExportProgress& state) {
                     given.progress(state.notesWritten, state.totalNotes);
                 }});
        },
        [this, summary] { showResult(*summary); });
}

void ExportAssistant::showResult(const ExportSummary& summary) {
    written_ = QString::fromStdString(summary.directory.string());
    using importing::counted;
    QString text = tr("%1, %2 (%3) and %4 are in\n%5")
                       .arg(counted(summary.notesWritten, "note", "notes"))
                       .arg(counted(summary.attachmentsWritten, "file", "files"))
                       .arg(importing::sizeText(summary.attachmentBytes))
                       .arg(counted(summary.tasksWritten, "task", "tasks"))
                       .arg(written_);
    for (const std::string& warning : summary.warnings) {
        text += "\n" + QString::fromStdString(warning);
    }
    endWith(text, true);
}

void ExportAssistant::endWith(const QString& text, bool isWritten) {
    outcome_->setText(text);
    show_->setVisible(isWritten);
    back_->setVisible(!isWritten);
    showStep(*steps_, resultStep);
}

void ExportAssistant::reject() {
    if (job_.isRunning()) return job_.cancel();  // its sentence follows
    QDialog::reject();
}

}  // namespace tesserine::app
