#include "app/editor/ParagraphChange.h"

#include "app/editor/NoteDocument.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <span>
#include <vector>

namespace tesserine::app {
namespace {

/// Every paragraph as a text of its own.
std::vector<AttributedText> paragraphsOf(const AttributedText& text) {
    std::vector<AttributedText> result;
    std::size_t begin = 0;
    auto run = text.runs.begin();
    for (const AttributedText::Paragraph& paragraph : text.paragraphs) {
        const std::size_t end = begin + paragraph.length;
        AttributedText alone{
            .text = text.text.substr(begin, paragraph.length), .paragraphs = {paragraph}};
        for (; run != text.runs.end() && run->start < end; ++run) {
            const std::size_t from = std::max(run->start, begin);
            const std::size_t to = std::min(run->end(), end);
            alone.runs.push_back({.start = from - begin, .length = to - from, .style = run->style});
            if (run->end() > end) break;  // it goes on in the next one
        }
        result.push_back(std::move(alone));
        begin = end;
    }
    return result;
}

AttributedText joined(std::span<const AttributedText> paragraphs) {
    AttributedText result;
    for (const AttributedText& alone : paragraphs) {
        for (AttributedText::Run run : alone.runs) {
            run.start += result.text.size();
            result.runs.push_back(std::move(run));
        }
        result.text += alone.text;
        result.paragraphs.push_back(alone.paragraphs.front());
    }
    return result;
}

}  // namespace

void changeInto(NoteDocument& document, const AttributedText& text) {
    const auto before = paragraphsOf(document.content());
    const auto after = paragraphsOf(text);
    if (before == after) return;
    if (before.empty()) return document.replaceParagraphs(0, 1, text);
    if (after.empty()) {
        AttributedText blank;
        blank.append("\n", BlockStyle{});
        return document.replaceParagraphs(0, static_cast<int>(before.size()), blank);
    }
    const std::size_t most = std::min(before.size(), after.size()) - 1;  // one is replaced at least
    const auto alikeUpTo = [](auto from, auto end, auto other) {
        return static_cast<std::size_t>(std::mismatch(from, end, other).first - from);
    };
    const auto limit = static_cast<std::ptrdiff_t>(most);
    const std::size_t head = alikeUpTo(before.begin(), before.begin() + limit, after.begin());
    const auto rest = static_cast<std::ptrdiff_t>(most - head);
    const std::size_t tail = alikeUpTo(before.rbegin(), before.rbegin() + rest, after.rbegin());
    const std::span<const AttributedText> changed(after);
    document.replaceParagraphs(
        static_cast<int>(head),
        static_cast<int>(before.size() - tail - head),
        joined(changed.subspan(head, after.size() - tail - head)));
}

}  // namespace tesserine::app
