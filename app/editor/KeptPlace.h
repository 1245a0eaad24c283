#pragma once

#include <QString>
#include <QTextCursor>

#include <optional>

namespace tesserine::app {

class BodyEdit;

/// The words or the place that a question about the open note is about.
///
/// Others may change the note while the question is open: it is shown anew then, and every cursor
/// in it goes to its beginning.
class KeptPlace {
public:
    explicit KeptPlace(const QTextCursor& cursor);

    /// What it is about now; none when other words stand there, or the note is not to be changed
    /// any more.
    std::optional<QTextCursor> cursorIn(const BodyEdit& body) const;

private:
    const int anchor_;
    const int position_;
    const QString selected_;
    const QString paragraph_;  // in which the cursor stands
};

}  // namespace tesserine::app
