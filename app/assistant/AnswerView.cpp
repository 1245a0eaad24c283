#include "app/assistant/AnswerView.h"

#include "app/look/QtText.h"
#include "app/look/Theme.h"
#include "app/state/DateWords.h"

#include <QDesktopServices>
#include <QEvent>
#include <QTextBlockFormat>
#include <QTextCursor>
#include <QUrl>

#include <set>

namespace tesserine::app {
namespace {

constexpr const char* sourceScheme = "source";

QTextCharFormat formatOf(TextRole role, const QColor& color) {
    QTextCharFormat format;
    format.setFont(Theme::font(role));
    format.setForeground(color);
    return format;
}

QTextCharFormat plain() { return formatOf(TextRole::body, Theme::colors().text); }
QTextCharFormat faint() { return formatOf(TextRole::caption, Theme::colors().secondaryText); }

QTextCharFormat link(const QString& address) {
    QTextCharFormat format = formatOf(TextRole::emphasis, Theme::colors().accent);
    format.setAnchor(true);
    format.setAnchorHref(address);
    return format;
}

QString addressOf(int index) { return QString("%1:%2").arg(sourceScheme).arg(index); }

/// A new block below what is there, `above` pixels away.
void begin(QTextCursor& cursor, int above) {
    QTextBlockFormat block;
    block.setTopMargin(above);
    if (cursor.document()->isEmpty()) {
        cursor.setBlockFormat(block);
    } else {
        cursor.insertBlock(block);
    }
}

void writeHeading(QTextCursor& cursor, const QString& text) {
    begin(cursor, space::large);
    cursor.insertText(text, formatOf(TextRole::heading, Theme::colors().text));
}

std::set<int> citedIn(const AskResult& result) {
    std::set<int> cited;
    for (const CitationMark& mark : citationMarks(result.answer, result.noteCitations.size())) {
        cited.insert(mark.index);
    }
    return cited;
}

}  // namespace

AnswerView::AnswerView(QWidget* parent) : QTextBrowser(parent) {
    setObjectName("answer");
    setAccessibleName("Answer");
    setFrameShape(QFrame::NoFrame);
    setOpenLinks(false);
    setUndoRedoEnabled(false);
    document()->setDocumentMargin(0);
    connect(this, &QTextBrowser::anchorClicked, this, &AnswerView::follow);
}

void AnswerView::showAnswer(const AskResult& result, Instant now, const Calendar& calendar) {
    shown_.emplace(Shown{result, now, calendar});
    write();
}

void AnswerView::clearAnswer() {
    shown_.reset();
    clear();
}

void AnswerView::write() {
    clear();
    QTextCursor cursor(document());
    if (shown_->result.foundNothingLocally) {
        begin(cursor, 0);
        cursor.insertText("No passages in your notes matched this question.", faint());
    }
    writeText(cursor);
    writeSources(cursor);
    writeWebSources(cursor);
    moveCursor(QTextCursor::Start);
}

/// `insertText` takes every letter for itself, whatever it looks like.
void AnswerView::writeText(QTextCursor& cursor) {
    const AskResult& result = shown_->result;
    const std::string_view answer = result.answer;
    begin(cursor, result.foundNothingLocally ? space::small : 0);
    std::size_t written = 0;
    for (const CitationMark& mark : citationMarks(answer, result.noteCitations.size())) {
        cursor.insertText(qt(answer.substr(written, mark.start - written)), plain());
        cursor.insertText(qt(answer.substr(mark.start, mark.length)), link(addressOf(mark.index)));
        written = mark.start + mark.length;
    }
    cursor.insertText(qt(answer.substr(written)), plain());
}

void AnswerView::writeSources(QTextCursor& cursor) {
    const std::set<int> cited = citedIn(shown_->result);
    const auto writeThose = [&](bool areCited, const QString& heading) {
        bool isFirst = true;
        for (const NoteCitation& citation : shown_->result.noteCitations) {
            if (cited.contains(citation.index) != areCited) continue;
            if (isFirst) writeHeading(cursor, heading);
            isFirst = false;
            writeSource(cursor, citation);
        }
    };
    writeThose(true, "Sources");
    writeThose(false, "Sent, not cited");
}

void AnswerView::writeSource(QTextCursor& cursor, const NoteCitation& citation) {
    begin(cursor, space::small);
    cursor.insertText(QString("[%1] ").arg(citation.index), link(addressOf(citation.index)));
    cursor.insertText(qt(citation.title), link(addressOf(citation.index)));
    QString facts;
    if (!citation.notebook.empty()) facts += " · " + qt(citation.notebook);
    if (citation.updatedAt) {
        facts += " · " + shownDate(*citation.updatedAt, shown_->now, shown_->calendar);
    }
    if (citation.fromAttachment) facts += " · from an attachment";
    cursor.insertText(facts, faint());
    begin(cursor, space::hair);
    cursor.insertText(qt(citation.excerpt), faint());
}

void AnswerView::writeWebSources(QTextCursor& cursor) {
    if (shown_->result.webCitations.empty()) return;
    writeHeading(cursor, "From the web");
    for (const WebCitation& citation : shown_->result.webCitations) {
        const QUrl address = QUrl::fromEncoded(QByteArray::fromStdString(citation.url));
        begin(cursor, space::small);
        cursor.insertText(qt(citation.title.value_or(citation.url)), link(address.toString()));
        cursor.insertText(" · " + address.host(), faint());
    }
}

/// Only what was pressed is opened, and only pages of the web.
void AnswerView::follow(const QUrl& link) {
    if (link.scheme() == sourceScheme) return emit citationChosen(link.path().toInt());
    if (link.scheme() == "https" || link.scheme() == "http") QDesktopServices::openUrl(link);
}

QVariant AnswerView::loadResource(int, const QUrl&) { return {}; }

void AnswerView::changeEvent(QEvent* event) {
    QTextBrowser::changeEvent(event);
    const bool looksAnew =
        event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange;
    if (looksAnew && shown_) write();
}

}  // namespace tesserine::app
