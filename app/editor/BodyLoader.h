#pragma once

#include "app/editor/BackgroundTask.h"
#include "core/body/AttributedText.h"

#include <QObject>
#include <QTimer>

#include <cstddef>
#include <string>

namespace tesserine::app {

class NoteDocument;
struct UndoHistory;

/// Puts the body of a note into its document. A long one is read on a thread of its own and put in
/// piece by piece, so that its first lines are seen at once and the window stays alive.
///
/// Belongs to the main thread. Whoever looks at all of the document, or changes it, calls `finish`
/// first.
class BodyLoader final : public QObject {
    Q_OBJECT

public:
    /// Bytes of HTML that are read and shown within a frame.
    static constexpr std::size_t longBody = 50'000;

    /// `document` outlives it.
    explicit BodyLoader(NoteDocument& document, QObject* parent = nullptr);

    /// Replaces everything by a canonical body. One that is not long can be undone through the
    /// states of `history`, which are told their steps; it begins anew where that leads elsewhere.
    void load(const std::string& html, UndoHistory* history = nullptr);
    /// Puts in all that is missing, at once.
    void finish();
    bool isLoading() const { return isLoading_; }

signals:
    void begun();     ///< the first lines are there
    void finished();  ///< all of it is there

private:
    void begin();
    void loadWithUndo(const std::string& html, UndoHistory& history);
    void addPiece();
    void end();

    NoteDocument& document_;
    QTimer timer_;
    bool isLoading_ = false;
    BackgroundTask<AttributedText> reading_;
};

}  // namespace tesserine::app
