#pragma once

#include <QPlainTextEdit>

namespace tesserine::app {

/// A text field as high as its text, between a least and a greatest number of lines.
class GrowingText final : public QPlainTextEdit {
    Q_OBJECT

public:
    enum class Lines { one, many };

    /// With `Lines::one` Return does not break the line but says `entered`; a long text still
    /// wraps.
    GrowingText(Lines lines, int leastLines, int mostLines, QWidget* parent = nullptr);

    /// Shows the text as one that nobody has typed.
    void setShownText(const QString& text);
    /// Whether it was typed into since `setShownText`.
    bool isEdited() const { return document()->isModified(); }

signals:
    void entered();
    /// The text was typed into and left alone for a second, or the field was left.
    void settled();

private:
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {80, sizeHint().height()}; }
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void insertFromMimeData(const QMimeData* source) override;
    void changeEvent(QEvent* event) override;
    void settle();
    int lineCount() const;
    void fit();

    Lines lines_;
    int leastLines_;
    int mostLines_;
};

}  // namespace tesserine::app
