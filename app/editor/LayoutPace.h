#pragma once

#include <QObject>
#include <QTimer>

class QTextDocument;

namespace tesserine::app {

/// Has all of a document laid out a few milliseconds at a time, whenever there is nothing else to
/// do. What is seen is laid out when it is painted; the toolkit goes on with the rest in steps each
/// twice as long as the one before, the last of which would hold the window up.
class LayoutPace final : public QObject {
    Q_OBJECT

public:
    /// `document` outlives it.
    explicit LayoutPace(QTextDocument& document, QObject* parent = nullptr);

    /// To be called when all of the document is about to be laid out anew.
    void begin();

private:
    void step();

    QTextDocument& document_;
    int next_ = 0;  // everything before it is laid out
    QTimer timer_;
};

}  // namespace tesserine::app
