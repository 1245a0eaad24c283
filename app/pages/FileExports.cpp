#include "app/pages/FileExports.h"

#include "app/look/Notice.h"
#include "app/state/AppEnvironment.h"
#include "base/Files.h"
#include "core/export/ICSExporter.h"
#include "core/export/NoteExport.h"
#include "core/store/StoreError.h"

#include <QFileDialog>
#include <QRegularExpression>
#include <QStandardPaths>

#include <filesystem>
#include <utility>

namespace tesserine::app {
namespace {

namespace fs = std::filesystem;

/// Writes one file from a context of its own.
using Write = std::function<void(StoreContext& context, const fs::path& file)>;

struct FileChoice {
    const char* objectName;
    QString title;
    std::string suggested;  ///< the name that is offered, without its extension
    QStringList filters;    ///< the first one's extension is the usual one
    QString suffix;
};

void writeInBackground(
    AppEnvironment& environment,
    QWidget* parent,
    const QString& chosen,
    Write write,
    FileWritten written) {
    environment.inBackground(
        [write = std::move(write), file = fs::path(chosen.toStdString())](
            StoreContext& context, const std::stop_token&) { write(context, file); },
        parent,
        [chosen, written = std::move(written)] { written(chosen); },
        [parent](const std::string& sentence) { showNotice(parent, sentence); });
}

void ask(
    AppEnvironment& environment,
    QWidget* parent,
    const FileChoice& choice,
    Write write,
    FileWritten written) {
    auto* const dialog = new QFileDialog(
        parent, choice.title, QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    dialog->setObjectName(choice.objectName);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setNameFilters(choice.filters);
    dialog->setDefaultSuffix(choice.suffix);
    dialog->selectFile(QString::fromStdString(files::safeName(choice.suggested)));
    // The extension follows the form that is chosen in the dialog.
    QObject::connect(dialog, &QFileDialog::filterSelected, dialog, [dialog](const QString& filter) {
        dialog->setDefaultSuffix(
            filter.section("*.", 1, 1).section(QRegularExpression("[ )]"), 0, 0));
    });
    QObject::connect(
        dialog,
        &QFileDialog::fileSelected,
        parent,
        [&environment, parent, write = std::move(write), written = std::move(written)](
            const QString& chosen) {
            writeInBackground(environment, parent, chosen, write, written);
        });
    dialog->open();
}

void writeNote(
    StoreContext& context,
    const fs::path& file,
    const Uuid& id,
    const Calendar& calendar,
    const text::Collator& collator) {
    const auto* const note = context.find<CDNote>(id);
    if (note == nullptr) throw StoreError::notFound("The note");
    const auto form = noteFileFormOf(file).value_or(NoteFileForm::page);
    writeNoteFile(*note, form, file, NoteFileTarget::anyFile, calendar, collator);
}

/// The exporter only makes new files.
void writeTasks(StoreContext& context, const fs::path& file, const Calendar& calendar) {
    fs::path making = file;
    making += ".part";
    files::removeIfPresent(making);
    exportCalendar(context, making, {}, calendar);
    fs::rename(making, file);
}

}  // namespace

void exportNote(
    AppEnvironment& environment, const Uuid& note, QWidget* parent, FileWritten written) {
    const auto* const exported = environment.context().find<CDNote>(note);
    if (exported == nullptr) return;
    ask(
        environment,
        parent,
        {.objectName = "exportNoteDialog",
         .title = QObject::tr("Export Note"),
         .suggested = exported->title.valueOr(""),
         .filters =
             {QObject::tr("Page for any browser (*.html *.htm)"),
              QObject::tr("Markdown (*.md *.markdown)"),
              QObject::tr("Text (*.txt)")},
         .suffix = "html"},
        [note, calendar = environment.calendar(), &collator = environment.collator()](
            StoreContext& context, const fs::path& file) {
            writeNote(context, file, note, calendar, collator);
        },
        std::move(written));
}

void exportTasks(AppEnvironment& environment, QWidget* parent, FileWritten written) {
    ask(
        environment,
        parent,
        {.objectName = "exportTasksDialog",
         .title = QObject::tr("Export Tasks as Calendar"),
         .suggested = "Tasks",
         .filters = {QObject::tr("Calendar (*.ics)")},
         .suffix = "ics"},
        [calendar = environment.calendar()](StoreContext& context, const fs::path& file) {
            writeTasks(context, file, calendar);
        },
        std::move(written));
}

}  // namespace tesserine::app
