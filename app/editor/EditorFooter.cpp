#include "app/editor/EditorFooter.h"

#include "app/editor/BodyEdit.h"
#include "app/look/Theme.h"
#include "app/state/DateWords.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QTextBlock>

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
    const QTextCursor cursor = body_.textCursor();
    std::size_t count = 0;
    if (cursor.hasSelection()) {
        count = wordsIn(cursor.selectedText());
        return words_->setText(shownCount(count, "word selected", "words selected"));
    }
    for (QTextBlock block = body_.note().begin(); block.isValid(); block = block.next()) {
        count += wordsIn(block.text());
    }
    words_->setText(shownCount(count, "word", "words"));
}

}  // namespace tesserine::app
