#pragma once

#include "core/body/HTMLSink.h"

#include <string_view>
#include <vector>

namespace tesserine {
class HTMLSerializer;
}

namespace tesserine::app::paste {

/// The elements that mark words where something is read, such as strong or a link, written only
/// around words: none is left empty, and none goes beyond its paragraph.
class ForeignMarks {
public:
    /// `output` outlives it.
    explicit ForeignMarks(HTMLSerializer& output) : output_(output) {}

    /// What the attributes refer to lasts until the mark is closed.
    void open(
        HTMLElement element, std::string_view name, std::span<const HTMLAttribute> attributes);
    /// The last one that is open.
    void close();
    /// Before words are written.
    void begin();
    /// Before anything else is written: a paragraph begins or ends. The marks go on behind it.
    void interrupt();

private:
    struct Mark {
        HTMLElement element;
        std::string_view name;
        std::vector<HTMLAttribute> attributes;
    };

    HTMLSerializer& output_;
    std::vector<Mark> marks_;
    std::size_t written_ = 0;  // of them, the outer ones
};

}  // namespace tesserine::app::paste
