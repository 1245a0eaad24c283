#pragma once

#include "core/body/HTMLElements.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tesserine {

/// Renders a tree, told in document order, as the plain text of a body.
class PlainTextWriter {
public:
    /// The attributes that show in the text.
    struct Attributes {
        std::optional<std::string_view> checked;  ///< "data-checked" of an item
        std::string_view alternative;             ///< "alt" of an image
    };

    void open(HTMLElement element, const Attributes& attributes);
    void close(HTMLElement element);
    void text(std::string_view text) { output_ += text; }

    /// Where the text stands, to go back to.
    std::size_t position() const noexcept { return output_.size(); }
    void cutTo(std::size_t position) { output_.resize(position); }

    /// The text in normal form. The writer is empty afterwards.
    std::string take();

private:
    void ensureLineBreak();

    std::string output_;
};

}  // namespace tesserine
