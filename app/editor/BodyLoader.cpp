#include "app/editor/BodyLoader.h"

#include "app/editor/NoteDocument.h"
#include "app/editor/ParagraphChange.h"
#include "app/editor/UndoMemory.h"
#include "core/body/AttributedTextReader.h"

namespace tesserine::app {
namespace {

/// UTF-16 units that fill a screen, and that are put in and laid out in a part of a frame.
constexpr std::size_t firstPiece = 8'000;
constexpr std::size_t piece = 4'000;

}  // namespace

BodyLoader::BodyLoader(NoteDocument& document, QObject* parent)
    : QObject(parent), document_(document), reading_(*this) {
    connect(&timer_, &QTimer::timeout, this, &BodyLoader::addPiece);
}

void BodyLoader::load(const std::string& html, UndoHistory* history) {
    timer_.stop();
    reading_.giveUp();
    isLoading_ = true;
    if (html.size() < longBody) {
        const bool hasPast = history != nullptr && history->states.size() > 1;
        hasPast ? loadWithUndo(html, *history) : document_.setContent(attributedText(html));
        emit begun();
        return end();
    }
    document_.beginContent({});
    reading_.begin([html] { return attributedText(html); }, [this] { begin(); });
}

/// Goes the way that the words went, and back over what was undone.
void BodyLoader::loadWithUndo(const std::string& html, UndoHistory& history) {
    auto& [states, now] = history;
    document_.setContent(attributedText(states.front().html));
    bool isExact = true;
    for (UndoHistory::State& state : states) {
        changeInto(document_, attributedText(state.html));
        state.steps = document_.availableUndoSteps();
        isExact = isExact && document_.html() == state.html;
    }
    while (document_.availableUndoSteps() > states[now].steps) {
        document_.undo();
    }
    document_.setModified(false);
    if (isExact && document_.html() == html) return;
    history = {.states = {{.html = html}}};
    document_.setContent(attributedText(html));
}

void BodyLoader::finish() {
    if (!isLoading_) return;
    const bool isUnread = reading_.isRunning();
    if (isUnread) document_.beginContent(reading_.take());
    document_.completeContent();
    if (isUnread) emit begun();
    end();
}

void BodyLoader::begin() {
    document_.beginContent(reading_.take());
    document_.addContent(firstPiece);
    emit begun();
    timer_.start(0);
}

void BodyLoader::addPiece() {
    document_.addContent(piece);
    if (document_.isComplete()) end();
}

void BodyLoader::end() {
    timer_.stop();
    isLoading_ = false;
    emit finished();
}

}  // namespace tesserine::app
