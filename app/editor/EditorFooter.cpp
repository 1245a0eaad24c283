#include "app/editor/EditorFooter.h"

#include "app/editor/BodyEdit.h"
#include "app/editor/NoteObject.h"
#include "app/look/Theme.h"
#include "app/state/DateWords.h"
#include "core/body/PlainText.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QTextBlock>

#include <algorithm>

namespace tesserine::app {
namespace {

constexpr int countDelay = 500;  // milliseconds without a change

std::size_t wordsIn(QStringView text) {
    std::size_t count = 0;
    bool isInWord = false;
    for (const QChar unit : text) {
        const bool isWord = unit.isLetterOrNumber() || unit.isSurrogate() || unit.isMark()
                            || (isInWord && (unit == u'\'' || unit == u'’'));
        if (isWord && !isInWord) ++count;
        isInWord = isWord;
    }
    return count;
}

/// Also those in tables and other HTML that is shown as it is.
std::size_t wordsBetween(const NoteDocument& note, int begin, int end) {
    std::size_t count = 0;
    for (QTextBlock block = note.findBlock(begin); block.isValid(); block = block.next()) {
        if (block.position() >= end) break;
        const qsizetype from = std::max(begin - block.position(), 0);
        const QString text = block.text().mid(from, end - block.position() - from);
        count += wordsIn(text);
        qsizetype at = text.indexOf(QChar::ObjectReplacementCharacter);
        for (; at >= 0; at = text.indexOf(QChar::ObjectReplacementCharacter, at + 1)) {
            const auto place = block.position() + static_cast<int>(from + at);
            const std::string& object = note.styleAt(place).object;
            if (NoteObject::of(object).kind != NoteObject::Kind::block) continue;
            count += wordsIn(QString::fromStdString(PlainText::fromHTML(object)));
        }
    }
    return count;
}

}  // namespace

EditorFooter::EditorFooter(BodyEdit& body, QWidget* parent)
    : QWidget(parent), body_(body), words_(new QLabel(this)), state_(new QLabel(this)) {
    words_->setObjectName("wordCount");
    state_->setObjectName("saveState");
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(space::large, space::tiny, space::large, space::tiny);
    row->addWidget(state_, 1);
    row->addWidget(words_);
    for (QLabel* const label : {words_, state_}) {
        label->setFont(Theme::font(TextRole::caption));
        label->setForegroundRole(QPalette::PlaceholderText);
    }
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, &EditorFooter::count);
    const auto later = [this] { timer_.start(countDelay); };
    connect(&body, &QTextEdit::textChanged, this, later);
    connect(&body, &QTextEdit::selectionChanged, this, later);
}

void EditorFooter::showState(const QString& state) { state_->setText(state); }

void EditorFooter::showWordCount(bool isShown) { words_->setVisible(isShown); }

void EditorFooter::count() {
    if (words_->isHidden() || body_.isLoading()) return;
    const NoteDocument& note = body_.note();
    const QTextCursor cursor = body_.textCursor();
    if (cursor.hasSelection()) {
        const auto count = wordsBetween(note, cursor.selectionStart(), cursor.selectionEnd());
        return words_->setText(shownCount(count, "word selected", "words selected"));
    }
    words_->setText(shownCount(wordsBetween(note, 0, note.characterCount()), "word", "words"));
}

}  // namespace tesserine::app
