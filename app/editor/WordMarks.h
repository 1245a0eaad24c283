#pragma once

#include "app/editor/PassageMarks.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <vector>

namespace tesserine::app {

/// What is to be marked for a search: lines as they are, and the words of a query without what
/// gives its conditions ("tag:travel", "-draft").
QStringList soughtWords(const QString& query);
/// Where words begin with one of `sought`, in the order of the text. Case and accents do not
/// matter. A table and whatever else is one object is one place.
std::vector<PassageRange> placesOf(const NoteDocument& note, const QStringList& sought);

/// Marks the words for which a note was opened, until it is changed or another one is shown.
class WordMarks final : public QObject {
    Q_OBJECT

public:
    explicit WordMarks(BodyEdit& body);

    /// Marks `words` and shows the first place: all of them where they stand so, otherwise each
    /// line, otherwise each word. A table that is the first place is selected.
    void show(const QString& words);
    void clear();

private:
    BodyEdit& body_;
    PassageMarks marks_;
    bool isShown_ = false;
};

}  // namespace tesserine::app
