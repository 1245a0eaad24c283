#pragma once

#include "core/body/AttributePolicy.h"
#include "core/body/OpenStack.h"
#include "core/body/PlainTextWriter.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tesserine {

/// Writes the stored form of a body and its plain text at once, from elements that the stored form
/// may hold.
///
/// White space is collapsed, and what is not markup escaped. `Nesting::readable` keeps the rules by
/// which the tree builder reads: what would be read back otherwise (a block in a paragraph, a link
/// in a link) is closed before it is written. So the result reads back as it was written.
class BodyWriter {
public:
    enum class Nesting : std::uint8_t {
        readable,
        asTold,  ///< for the tree of somebody else, who says what stands in what
    };

    /// Names one open element, whatever is closed and reopened in between.
    enum class Handle : std::uint32_t { none };

    /// Throws `BodyError::tooLarge` as soon as there are more than `limit` bytes of HTML.
    BodyWriter(std::size_t limit, Nesting nesting) : limit_(limit), nesting_(nesting) {}

    /// Begins an element that is not void.
    Handle open(HTMLElement element, const KeptAttributes& attributes);
    /// Ends it, wherever it stands now. What was opened in it must be closed.
    void close(Handle handle);
    /// Writes a void element.
    void writeVoid(HTMLElement element, const KeptAttributes& attributes);
    /// Writes text; pieces that follow one another count as one.
    void text(std::string_view text);
    /// Keeps the text before and the text after apart by a space, for what is left out in between.
    void separateText() { isSeparating_ = isInText_; }

    struct Result {
        std::string html;
        std::string plainText;
    };
    /// Ends the body. All elements must be closed; the writer is empty afterwards.
    Result finish();

private:
    struct Detail {
        Handle handle;
        std::size_t startTag;  // where it lies in html_
        std::size_t startTagSize;
    };

    void makeRoomFor(HTMLElement element);
    void closeFrom(std::size_t first);
    void reopenFormatting();
    void reopen(HTMLElement element, const Detail& detail);
    void writeEndTag();
    void writeStartTag(HTMLElement element, const KeptAttributes& attributes);
    void startText();
    void endText(bool isBeforeBlock);
    bool isDroppableSpace(bool isBeforeBlock) const;
    void writeVerbatim(std::string_view text);
    void writeCollapsed(std::string_view text);
    std::size_t writeSpecial(std::string_view text);
    void writePlain(std::string_view text);
    bool isPreformatted() const;
    void checkLimit() const;

    const std::size_t limit_;
    const Nesting nesting_;
    std::string html_;
    PlainTextWriter plainText_;
    OpenStack<Detail> open_;
    std::uint32_t handles_ = 0;
    std::size_t reopenedBytes_ = 0;

    // The text since the last tag.
    bool isInText_ = false;
    bool isSpaceOnly_ = false;
    bool endsInSpace_ = false;
    bool isSeparating_ = false;
    std::size_t textStart_ = 0;
    std::size_t plainTextStart_ = 0;
    // The last tag.
    bool isAfterBlock_ = true;  // the body's edge counts as one
    bool isAfterPre_ = false;
};

}  // namespace tesserine
