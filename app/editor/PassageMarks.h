#pragma once

#include "app/editor/BodyEdit.h"
#include "core/body/PassageSelection.h"

#include <QObject>
#include <QTimer>

#include <vector>

namespace tesserine::app {

/// Marks passages of a note, however many they are: those that are seen, and others as they come
/// into sight. A mark costs a cursor, through all of which every change of the note goes.
///
/// When the note is changed, the marks that are seen move along, and no others come.
class PassageMarks final : public QObject {
    Q_OBJECT

public:
    /// `overlay` is used by nobody else.
    PassageMarks(BodyEdit& body, BodyEdit::Overlay overlay);

    /// Marks these instead of those before. They stand in the order of the text.
    void show(std::vector<PassageRange> passages);
    void clear();

private:
    void markSeen();

    BodyEdit& body_;
    const BodyEdit::Overlay overlay_;
    std::vector<PassageRange> passages_;
    QTimer timer_;
};

}  // namespace tesserine::app
