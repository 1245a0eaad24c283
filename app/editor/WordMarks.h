#pragma once

#include "app/editor/PassageMarks.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <vector>

class QTextDocument;

namespace tesserine::app {

/// What is to be marked for a search: lines as they are, and the words of a query without what
/// gives its conditions ("tag:travel", "-draft").
QStringList soughtWords(const QString& query);
/// Where words begin with one of `sought`, in the order of the text. Case and accents do not
/// matter.
std::vector<PassageRange> placesOf(const QTextDocument& document, const QStringList& sought);

/// Marks the words for which a note was opened, until it is changed or another one is shown.
class WordMarks final : public QObject {
    Q_OBJECT

public:
    explicit WordMarks(BodyEdit& body);

    /// Marks `words` and shows the first place: all of them where they stand so, otherwise each
    /// line, otherwise each word.
    void show(const QString& words);
    void clear();

private:
    BodyEdit& body_;
    PassageMarks marks_;
    bool isShown_ = false;
};

}  // namespace tesserine::app
