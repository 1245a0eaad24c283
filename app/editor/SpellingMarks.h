#pragma once

#include "app/editor/SpellChecker.h"

#include <QObject>
#include <QTimer>

class QMenu;
class QTextBlock;
class QTextCursor;

namespace tesserine::app {

class BodyEdit;

/// Underlines misspelt words in the part of a note that is seen, shortly after it was changed or
/// scrolled, and offers others in the menu. The word being typed, code, links, addresses and
/// names of keys are left alone.
class SpellingMarks final : public QObject {
    Q_OBJECT

public:
    explicit SpellingMarks(BodyEdit& body);

    /// Checks with another dictionary; without one nothing is marked. `checker` outlives it, or
    /// another one is set before.
    void setChecker(SpellChecker* checker);

private:
    bool isOn() const;
    void later();
    void mark();
    bool isWrong(const QString& text, qsizetype start, qsizetype end) const;
    void markBlock(const QTextBlock& block, QList<QTextCursor>& misspelt) const;
    void fillMenu(QMenu* menu, int position);

    BodyEdit& body_;
    SpellChecker* checker_ = nullptr;
    QTimer timer_;
};

}  // namespace tesserine::app
