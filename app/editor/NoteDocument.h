#pragma once

#include "app/editor/DocumentFormats.h"
#include "app/editor/ThemeColors.h"
#include "core/body/AttributedText.h"
#include "core/body/AttributedTextWriter.h"

#include <QTextDocument>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class QTextBlock;
class QTextCursor;

namespace tesserine::app {

/// The body of a note as a `QTextDocument`, in which positions are the UTF-16 offsets of the
/// `AttributedText` it was made from.
///
/// What comes in goes out unchanged: `content()` after `setContent(text)` writes the same body.
/// Every change of styles goes through here and can be undone. What an editor cannot change stands
/// in it as an object, one U+FFFC. Belongs to the main thread.
class NoteDocument final : public QTextDocument {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(NoteDocument)

public:
    using Paragraph = AttributedText::Paragraph;

    explicit NoteDocument(QObject* parent = nullptr);
    ~NoteDocument() override;

    /// Replaces everything and forgets what could be undone.
    void setContent(AttributedText text);
    /// The same, but bit by bit: nothing is there until `addContent` was called, and nothing can be
    /// undone before all of it is.
    void beginContent(AttributedText text);
    /// Adds paragraphs until there are `units` more UTF-16 units, or no more paragraphs.
    void addContent(std::size_t units);
    /// Adds all that is missing. It is laid out later, as far as it is seen.
    void completeContent();
    bool isComplete() const { return !missing_; }
    /// Linear in the size of the document.
    AttributedText content() const;
    /// The selected part; paragraphs of which only a part is selected are whole paragraphs.
    AttributedText content(const QTextCursor& selection) const;
    std::string html() const;

    /// What a paragraph is; its `length` means nothing.
    const Paragraph& paragraph(const QTextBlock& block) const;
    BlockStyle::Kind kind(const QTextBlock& block) const;
    /// Whether the block stands for something that cannot be edited as text.
    bool isObjectBlock(const QTextBlock& block) const;
    void setParagraph(const QTextBlock& block, const Paragraph& paragraph);
    /// Ends the paragraph at the cursor; what follows it becomes `next`.
    void splitParagraph(QTextCursor& cursor, const Paragraph& next);

    const InlineStyle& style(const QTextCharFormat& format) const { return formats_.style(format); }
    /// Of the character that stands at `position`; plain where there is none.
    const InlineStyle& styleAt(int position) const;
    QTextCharFormat charFormat(const InlineStyle& style, const Paragraph& paragraph) {
        return formats_.charFormat(style, paragraph);
    }
    /// Gives every stretch of the selection the style that `change` makes of its own.
    void changeStyles(
        const QTextCursor& selection, const std::function<void(InlineStyle&)>& change);
    /// Replaces the selection by text in `style`, on one line.
    void insertText(QTextCursor& cursor, const QString& text, const InlineStyle& style);
    void insertObject(QTextCursor& cursor, const std::string& html);
    /// Replaces the selection by the paragraphs of `text`. Its only paragraph, if it is a plain
    /// one, goes into that of the cursor; others stand as paragraphs of their own. An empty last
    /// one only ends the one before it, as in what was selected by lines.
    void insert(QTextCursor& cursor, const AttributedText& text);
    /// The same, but every paragraph stands on its own. An empty paragraph at the cursor gives way;
    /// otherwise that of the cursor is split. The cursor ends up behind the last one.
    void insertParagraphs(QTextCursor& cursor, const AttributedText& text);
    /// Replaces `count` paragraphs from number `first` on by all those of `text`, as they are;
    /// there is at least one of both.
    void replaceParagraphs(int first, int count, const AttributedText& text);

    /// The theme changed: shows everything in its colours. Undo is not touched.
    void followTheme();

signals:
    /// Everything is about to be replaced. Whoever keeps cursors in it lets them go now: one that
    /// goes while the document empties itself would not be forgotten by it.
    void aboutToBeReplaced();

private:
    /// What is still to be added, from `next` on.
    struct Missing {
        AttributedText text;
        ParagraphPlace next{};
    };

    void read(AttributedText& result, const QTextBlock& block, int from, int to) const;
    void write(QTextCursor& cursor, const AttributedText& text);
    void writeParagraph(QTextCursor& cursor, const AttributedText& text, ParagraphPlace& place);
    void writePiece(
        QTextCursor& cursor,
        std::u16string_view piece,
        const InlineStyle& style,
        const Paragraph& paragraph);

    DocumentFormats formats_;
    ThemeColors colors_;
    std::optional<Missing> missing_;
    std::vector<AttributedText::Container> containers_;
    /// The body holds no paragraph at all, as long as the only block is without text.
    bool isVoid_ = false;
};

}  // namespace tesserine::app
