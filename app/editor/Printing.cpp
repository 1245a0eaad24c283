#include "app/editor/Printing.h"

#include "app/editor/BlockPainter.h"
#include "app/editor/NoteDocument.h"
#include "app/editor/ObjectRenderer.h"
#include "app/look/Theme.h"
#include "core/body/AttributedTextReader.h"

#include <QAbstractTextDocumentLayout>
#include <QPageLayout>
#include <QPainter>
#include <QPrinter>

#include <system_error>

namespace tesserine::app {
namespace {

/// As on the screen: distances and fonts then agree.
constexpr int dotsPerInch = 96;

/// The pages of a note, at 96 dots per inch.
class Pages {
public:
    Pages(const PrintedNote& note, Pictures& pictures, QPrinter& printer)
        : title_(note.title),
          paper_(printer.pageRect(QPrinter::DevicePixel).size()),
          painter_(document_),
          renderer_(document_, pictures, nullptr) {
        QFont font = Theme::font(TextRole::body);
        font.setPointSizeF(10.5);
        document_.setDefaultFont(font);

        document_.setContent(attributedText(note.html));
        // The title stands above the first page's text; every page ends with its number.
        document_.setPageSize({paper_.width(), paper_.height() - footHeight - headHeight});
    }

    int count() const { return document_.pageCount(); }

    void paint(QPainter& painter, int page) {
        const double height = document_.pageSize().height();
        // Without its last row of dots, in which the next page may begin.
        const QRectF visible(0, page * height, paper_.width(), height - 1);
        if (page == 0) paintTitle(painter);
        paintNumber(painter, page);
        painter.save();
        painter.translate(0, headHeight - visible.top());
        painter.setClipRect(visible);
        painter_.paintBehind(painter, visible);
        QAbstractTextDocumentLayout::PaintContext context;
        context.clip = visible;
        context.palette.setColor(QPalette::Text, Theme::colors().text);
        document_.documentLayout()->draw(&painter, context);
        painter_.paintMarkers(painter, visible);
        painter.restore();
    }

private:
    static constexpr double headHeight = 46;
    static constexpr double footHeight = 24;

    void paintTitle(QPainter& painter) const {
        QFont font = document_.defaultFont();
        font.setPointSizeF(18);
        font.setBold(true);
        painter.setFont(font);
        painter.setPen(Theme::colors().text);
        const QRectF place(0, 0, paper_.width(), headHeight);
        painter.drawText(place, Qt::AlignTop | Qt::AlignLeading | Qt::TextSingleLine, title_);
    }

    void paintNumber(QPainter& painter, int page) const {
        QFont font = document_.defaultFont();
        font.setPointSizeF(8.5);
        painter.setFont(font);
        painter.setPen(Theme::colors().secondaryText);
        const QRectF place(0, paper_.height() - footHeight, paper_.width(), footHeight);
        painter.drawText(
            place,
            Qt::AlignBottom | Qt::AlignHCenter,
            QString("%1 / %2").arg(page + 1).arg(count()));
    }

    QString title_;
    QSizeF paper_;
    NoteDocument document_;
    BlockPainter painter_;
    ObjectRenderer renderer_;
};

}  // namespace

bool print(const PrintedNote& note, Pictures& pictures, QPrinter& printer) {
    const Theme::OnPaper onPaper;
    printer.setResolution(dotsPerInch);
    QPainter painter;
    if (!painter.begin(&printer)) return false;
    Pages pages(note, pictures, printer);
    for (int page = 0; page < pages.count(); ++page) {
        if (page > 0 && !printer.newPage()) return false;
        pages.paint(painter, page);
    }
    return painter.end();
}

bool writePDF(const PrintedNote& note, Pictures& pictures, const std::filesystem::path& file) {
    std::filesystem::path unfinished = file;
    unfinished += ".part";
    QPrinter printer;
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(QString::fromStdString(unfinished.string()));
    printer.setDocName(note.title);
    printer.setPageMargins({18, 18, 18, 18}, QPageLayout::Millimeter);
    std::error_code problem;
    if (print(note, pictures, printer)) {
        std::filesystem::rename(unfinished, file, problem);
        if (!problem) return true;
    }
    std::filesystem::remove(unfinished, problem);
    return false;
}

}  // namespace tesserine::app
