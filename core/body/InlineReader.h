#pragma once

#include "core/body/AttributedText.h"
#include "core/body/HTMLNode.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// Whether `node` is text, or an element that stands in a line and holds nothing else.
bool isInline(const HTMLNode& node);
/// Whether all children of `node` are such.
bool holdsLinesOnly(const HTMLNode& node);

/// Adds what stands in a line to the end of a note being edited.
class InlineReader {
public:
    /// What a line break in the text (not the element br) becomes: an object, because it would end
    /// the paragraph, or the end of a line of code.
    enum class LineBreaks : std::uint8_t { asObjects, asTheyAre };

    /// `target` outlives it.
    explicit InlineReader(AttributedText& target) : target_(target) {}

    /// Adds `node`, for which `isInline` holds.
    void read(const HTMLNode& node, LineBreaks lineBreaks = LineBreaks::asObjects);

private:
    void readElement(const HTMLNode& node, LineBreaks lineBreaks);
    void readText(std::string_view text, LineBreaks lineBreaks);
    void addText(std::u16string_view units);
    void addObject(std::string html);
    InlineMark markFor(const HTMLNode& element) const;
    bool continuesLastRun() const;

    AttributedText& target_;
    std::vector<InlineMark> marks_;  // open, outermost first
};

}  // namespace tesserine
