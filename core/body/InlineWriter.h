#pragma once

#include "core/body/AttributedText.h"
#include "core/body/HTMLSerializer.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace tesserine {

/// Begins an element that is ended with `output.close()`.
void openElement(
    HTMLSerializer& output, HTMLElement element, const OwnedAttributes& attributes = {});

/// Writes stretches of a note being edited, one behind the other, with the elements around them.
class InlineWriter {
public:
    /// What becomes of several spaces in a row, of which a reader of HTML keeps one outside of
    /// code.
    enum class Spaces : std::uint8_t { shown, asTheyAre };

    /// `source` and `output` outlive it. Nothing before `source.runs[firstRun]` is written.
    InlineWriter(const AttributedText& source, HTMLSerializer& output, std::size_t firstRun)
        : source_(source), output_(output), run_(firstRun) {}

    /// Writes the text from `start` to `end`; elements that go on stay open. Stretches come in
    /// order.
    void write(std::size_t start, std::size_t end, Spaces spaces = Spaces::shown);
    /// Closes what is open: a block ends.
    void finish();

    /// The first run that does not end before `offset`.
    std::size_t runAt(std::size_t offset);

private:
    void enter(const std::vector<InlineMark>& marks);
    void writePiece(std::u16string_view text, Spaces spaces);
    void writeLineBreak();
    bool isPreformatted() const;

    const AttributedText& source_;
    HTMLSerializer& output_;
    std::size_t run_;
    std::vector<InlineMark> open_;
    bool isAfterSpace_ = false;
};

}  // namespace tesserine
