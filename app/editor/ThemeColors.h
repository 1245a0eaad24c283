#pragma once

#include <QSyntaxHighlighter>

namespace tesserine::app {

class NoteDocument;

/// Lays the colours of the theme over the words of a note: those of links, code, marked words and
/// of what stands back.
///
/// They belong to the layout and not to the document, so that another theme neither changes what
/// can be undone nor what was undone.
class ThemeColors final : public QSyntaxHighlighter {
    Q_OBJECT

public:
    /// `document` outlives it.
    explicit ThemeColors(NoteDocument& document);

private:
    void highlightBlock(const QString& text) override;

    const NoteDocument& document_;
};

}  // namespace tesserine::app
