#include "core/body/PlainTextWriter.h"

#include <algorithm>
#include <utility>

namespace tesserine {
namespace {

using Element = HTMLElement;

constexpr std::string_view noBreakSpaceText = "\u00A0";

constexpr std::size_t blockCount = [] {
    std::size_t count = 0;
    for (std::size_t i = 0; i < html::elementCount; ++i) {
        count += html::has(static_cast<HTMLElement>(i), html::isBlock) ? 1 : 0;
    }
    return count;
}();
static_assert(blockCount == 27);

/// Whether the element begins and ends a line: parts of a table only frame their rows, and a cell
/// ends in a tab.
constexpr bool breaksLine(Element element) {
    switch (element) {
    case Element::table:
    case Element::thead:
    case Element::tbody:
    case Element::tfoot:
    case Element::td:
    case Element::th: return false;
    default: return html::has(element, html::isBlock);
    }
}

void replaceAll(std::string& text, std::string_view what, std::string_view with) {
    std::size_t from = text.find(what);
    if (from == std::string::npos) return;
    std::string replaced;
    replaced.reserve(text.size());
    std::size_t start = 0;
    for (; from != std::string::npos; from = text.find(what, start)) {
        replaced.append(text, start, from - start).append(with);
        start = from + what.size();
    }
    text = replaced.append(text, start);
}

std::string_view trimmedLine(std::string_view line) {
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    while (line.ends_with(' ') || line.ends_with('\t')) {
        line.remove_suffix(1);
    }
    return line;
}

/// Trims the lines of `text` and leaves one empty line of each run of them, none at the end.
void normalizeLines(std::string& text) {
    std::size_t written = 0;
    std::size_t end = 0;  // of the last line that is not empty
    bool isAfterEmpty = false;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t stop = std::min(text.find('\n', start), text.size());
        const std::string_view line =
            trimmedLine(std::string_view(text).substr(start, stop - start));
        start = stop + 1;
        if (line.empty() && std::exchange(isAfterEmpty, true)) continue;
        // The lines move to the front only, so none is overwritten before it is read.
        std::copy(line.begin(), line.end(), text.begin() + static_cast<std::ptrdiff_t>(written));
        written += line.size();
        if (!line.empty()) {
            isAfterEmpty = false;
            end = written;
        }
        if (written < text.size()) text[written] = '\n';
        ++written;
    }
    text.resize(end);
}

}  // namespace

void PlainTextWriter::open(HTMLElement element, const Attributes& attributes) {
    if (breaksLine(element)) ensureLineBreak();
    switch (element) {
    case Element::br: output_ += '\n'; return;
    case Element::hr:
        output_ += "———";
        ensureLineBreak();
        return;
    case Element::img: output_ += attributes.alternative; return;
    case Element::li:
        if (attributes.checked) {
            output_ += *attributes.checked == "true" ? "[x] " : "[ ] ";
        } else {
            output_ += "• ";
        }
        return;
    default: return;
    }
}

void PlainTextWriter::close(HTMLElement element) {
    if (element == Element::td || element == Element::th) {
        output_ += '\t';
    } else if (breaksLine(element)) {
        ensureLineBreak();
    }
}

std::string PlainTextWriter::take() {
    replaceAll(output_, "\r\n", "\n");
    replaceAll(output_, noBreakSpaceText, " ");
    normalizeLines(output_);
    return std::exchange(output_, {});
}

void PlainTextWriter::ensureLineBreak() {
    if (!output_.empty() && output_.back() != '\n') output_ += '\n';
}

}  // namespace tesserine
