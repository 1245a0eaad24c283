#include "core/body/InlineWriter.h"

#include "base/Text.h"

#include <algorithm>
#include <string>

namespace tesserine {
namespace {

/// A no-break space in the place of every second one of several spaces.
std::string withVisibleSpaces(std::string_view text, bool& isAfterSpace) {
    std::string visible;
    visible.reserve(text.size());
    for (const char c : text) {
        if (c == ' ' && isAfterSpace) {
            visible += "\u00A0";
            isAfterSpace = false;
        } else {
            visible += c;
            isAfterSpace = c == ' ';
        }
    }
    return visible;
}

}  // namespace

void openElement(HTMLSerializer& output, HTMLElement element, const OwnedAttributes& attributes) {
    std::vector<HTMLAttribute> views;
    views.reserve(attributes.size());
    for (const OwnedAttribute& attribute : attributes) {
        views.push_back({attribute.name, attribute.value});
    }
    output.open(element, html::nameOf(element), views);
}

void InlineWriter::write(std::size_t start, std::size_t end, Spaces spaces) {
    const std::u16string_view text(source_.text);
    while (start < end) {
        const bool isStyled = runAt(start) < source_.runs.size();
        const std::size_t runStart = isStyled ? source_.runs[run_].start : end;
        if (start < runStart) {
            enter({});
            const std::size_t plainEnd = std::min(runStart, end);
            writePiece(text.substr(start, plainEnd - start), spaces);
            start = plainEnd;
            continue;
        }
        const AttributedText::Run& run = source_.runs[run_];
        const std::size_t pieceEnd = std::min(run.end(), end);
        enter(run.style.marks);
        if (run.style.object.empty()) {
            writePiece(text.substr(start, pieceEnd - start), spaces);
        } else {
            output_.storedForm(run.style.object);
            isAfterSpace_ = false;
        }
        start = pieceEnd;
    }
}

std::size_t InlineWriter::runAt(std::size_t offset) {
    while (run_ < source_.runs.size() && source_.runs[run_].end() <= offset) {
        ++run_;
    }
    return run_;
}

void InlineWriter::finish() {
    enter({});
    isAfterSpace_ = false;
}

/// Closes and opens elements until just `marks` are open.
void InlineWriter::enter(const std::vector<InlineMark>& marks) {
    const auto [differs, wanted] =
        std::mismatch(open_.begin(), open_.end(), marks.begin(), marks.end());
    if (differs != open_.end() || wanted != marks.end()) isAfterSpace_ = false;
    for (auto closing = open_.end(); closing != differs; --closing) {
        output_.close();
    }
    open_.erase(differs, open_.end());
    for (auto opening = wanted; opening != marks.end(); ++opening) {
        openElement(output_, opening->element, opening->attributes);
        open_.push_back(*opening);
    }
}

void InlineWriter::writePiece(std::u16string_view text, Spaces spaces) {
    const bool isKept = spaces == Spaces::asTheyAre || isPreformatted();
    while (!text.empty()) {
        const std::u16string_view line = text.substr(0, text.find(AttributedText::lineBreak));
        const std::string bytes = text::fromUTF16(line);
        output_.text(isKept ? bytes : withVisibleSpaces(bytes, isAfterSpace_));
        text.remove_prefix(line.size());
        if (text.empty()) return;
        writeLineBreak();
        text.remove_prefix(1);
    }
}

void InlineWriter::writeLineBreak() {
    openElement(output_, HTMLElement::br);
    output_.close();
    isAfterSpace_ = false;
}

bool InlineWriter::isPreformatted() const {
    return std::ranges::find(open_, HTMLElement::code, &InlineMark::element) != open_.end();
}

}  // namespace tesserine
