#include "app/pages/ImportWords.h"

#include "app/state/DateWords.h"

#include <QLocale>

namespace tesserine::app::importing {
namespace {

/// "12,345", as everywhere in the window.
QString digits(std::size_t count) { return QLocale(QLocale::English).toString(quint64{count}); }
QString notes(std::size_t count) { return counted(count, "note", "notes"); }
QString files(std::size_t count, std::uint64_t byteCount) {
    const QString number = counted(count, "file", "files");
    return count == 0 ? number : number + " (" + sizeText(byteCount) + ")";
}

}  // namespace

QString counted(std::size_t count, const QString& one, const QString& many) {
    return digits(count) + " " + (count == 1 ? one : many);
}

QString sizeText(std::uint64_t byteCount) { return shownSize(static_cast<qint64>(byteCount)); }

QString sentence(const ImportPreview& preview) {
    if (preview.found == 0) return "There are no notes in it.";
    QString text = notes(preview.found);
    if (preview.attachments > 0) {
        text += " and " + files(preview.attachments, preview.attachmentBytes);
    }
    if (!preview.notebooks.empty()) {
        text += " in " + counted(preview.notebooks.size(), "notebook", "notebooks");
    }
    text += ".";
    if (preview.duplicates > 0) {
        text += " " + digits(preview.duplicates)
                + (preview.duplicates == 1 ? " is in the library already."
                                           : " are in the library already.");
    }
    if (preview.unreadable > 0) {
        text += " " + digits(preview.unreadable) + " cannot be read.";
    }
    return text;
}

QString sentence(const ImportReport& report) {
    QStringList parts{
        notes(report.imported) + (report.imported == 1 ? " was imported" : " were imported")};
    if (report.replaced > 0) parts << digits(report.replaced) + " replaced";
    if (report.skipped > 0) parts << digits(report.skipped) + " skipped";
    if (report.failed > 0) parts << digits(report.failed) + " failed";
    QString text = parts.join(", ");
    if (report.attachments > 0) {
        text += ", with " + files(report.attachments, report.attachmentBytes);
    }
    text += ".";
    if (report.check) text += " " + QString::fromStdString(report.check->sentence());
    if (!report.finished) {
        text += " It was stopped before its end; what is in stays, and a new import goes on.";
    }
    return text;
}

QStringList troubles(const ImportReport& report) {
    QStringList lines;
    for (const ImportedNote& note : report.notes) {
        const QString title = QString::fromStdString("“" + note.title + "”");
        if (note.outcome == ImportOutcome::failed && note.warnings.empty()) {
            lines << title + ": could not be read.";
        }
        for (const std::string& warning : note.warnings) {
            lines << title + ": " + QString::fromStdString(warning);
        }
    }
    return lines;
}

}  // namespace tesserine::app::importing
