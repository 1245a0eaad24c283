#include "app/editor/SpellingMarks.h"

#include "app/editor/BodyEdit.h"
#include "app/editor/KeptPlace.h"
#include "app/editor/StyleCommands.h"
#include "app/look/Theme.h"

#include <QAction>
#include <QMenu>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextBoundaryFinder>

namespace tesserine::app {
namespace {

constexpr int checkDelay = 300;  // milliseconds

/// Whether a word is one of a language: no number, no abbreviation in capitals, no path.
bool isProse(const QString& word) {
    if (word.size() < 2 || word == word.toUpper()) return false;
    for (const QChar unit : word) {
        if (!unit.isLetter() && !unit.isMark() && unit != '\'' && unit != u'’') return false;
    }
    return true;
}

}  // namespace

SpellingMarks::SpellingMarks(BodyEdit& body) : QObject(&body), body_(body) {
    timer_.setSingleShot(true);
    timer_.setInterval(checkDelay);
    connect(&timer_, &QTimer::timeout, this, &SpellingMarks::mark);
    connect(&body, &QTextEdit::textChanged, this, &SpellingMarks::later);
    connect(body.verticalScrollBar(), &QScrollBar::valueChanged, this, &SpellingMarks::later);
    connect(&body, &BodyEdit::menuWanted, this, &SpellingMarks::fillMenu);
}

void SpellingMarks::setChecker(SpellChecker* checker) {
    checker_ = checker;
    mark();
}

bool SpellingMarks::isOn() const {
    return checker_ != nullptr && checker_->isOn() && !body_.isReadOnly() && !body_.isLoading();
}

void SpellingMarks::later() {
    if (checker_ != nullptr) timer_.start();
}

void SpellingMarks::mark() {
    QList<QTextEdit::ExtraSelection> marks;
    if (isOn()) {
        const int bottom = body_.viewport()->height();
        QTextBlock block = body_.cursorForPosition(QPoint(0, 0)).block();
        QList<QTextCursor> misspelt;
        for (; block.isValid(); block = block.next()) {
            if (body_.cursorRect(QTextCursor(block)).top() > bottom) break;
            markBlock(block, misspelt);
        }
        QTextCharFormat wave;
        wave.setUnderlineStyle(QTextCharFormat::SpellCheckUnderline);
        wave.setUnderlineColor(Theme::colors().danger);
        for (const QTextCursor& word : misspelt) {
            marks.append({word, wave});
        }
    }
    body_.setOverlay(BodyEdit::Overlay::spelling, marks);
}

bool SpellingMarks::isWrong(const QString& text, qsizetype start, qsizetype end) const {
    const bool isKey = end < text.size() && text[end] == '+';  // as in Ctrl+N
    const QString word = text.mid(start, end - start);
    return !isKey && isProse(word) && !checker_->isCorrect(word);
}

void SpellingMarks::markBlock(const QTextBlock& block, QList<QTextCursor>& misspelt) const {
    const NoteDocument& note = body_.note();
    if (note.kind(block) == BlockStyle::Kind::codeBlock || note.isObjectBlock(block)) return;
    const QString text = block.text();
    QTextBoundaryFinder finder(QTextBoundaryFinder::Word, text);
    qsizetype start = 0;
    for (qsizetype end = finder.toNextBoundary(); end >= 0; end = finder.toNextBoundary()) {
        const bool isMisspelt = isWrong(text, start, end);
        const int first = block.position() + static_cast<int>(start);
        const int last = block.position() + static_cast<int>(end);
        start = end;
        const bool isBeingTyped = body_.textCursor().position() == last;
        if (isBeingTyped || !isMisspelt) continue;
        const InlineStyle& style = note.styleAt(first);
        if (style.has(HTMLElement::a) || style.has(HTMLElement::code)) continue;
        QTextCursor place(block);
        place.setPosition(first);
        place.setPosition(last, QTextCursor::KeepAnchor);
        misspelt.append(place);
    }
}

void SpellingMarks::fillMenu(QMenu* menu, int position) {
    if (!isOn()) return;
    QTextCursor place(&body_.note());
    place.setPosition(position);
    place.select(QTextCursor::WordUnderCursor);
    const QString word = place.selectedText();
    const QTextBlock block = place.block();
    const int start = place.selectionStart() - block.position();
    if (!isWrong(block.text(), start, start + word.size())) return;
    QAction* const first = menu->actions().isEmpty() ? nullptr : menu->actions().front();
    for (const QString& suggestion : checker_->suggestions(word)) {
        auto* const action = new QAction(suggestion, menu);
        connect(action, &QAction::triggered, &body_, [this, kept = KeptPlace(place), suggestion] {
            auto present = kept.cursorIn(body_);
            if (!present) return;
            const InlineStyle style = body_.note().styleAt(present->selectionStart());
            body_.note().insertText(*present, suggestion, style);
        });
        menu->insertAction(first, action);
    }
    auto* const accepting = new QAction("Accept “" + word + "”", menu);
    connect(accepting, &QAction::triggered, &body_, [this, word] {
        if (checker_ != nullptr) checker_->accept(word);
        mark();
    });
    menu->insertAction(first, accepting);
    menu->insertSeparator(first);
}

}  // namespace tesserine::app
