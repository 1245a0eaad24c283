#include "app/editor/PasteRules.h"

#include "app/editor/ForeignHTML.h"
#include "base/Text.h"
#include "core/body/AttributedTextReader.h"
#include "core/body/CanonicalBody.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace tesserine::app::paste {
namespace {

using Kind = BlockStyle::Kind;

/// What a person calls elements that were left out. Those without a name nobody misses.
struct Name {
    std::string_view elements;  ///< with a space around each
    const char* words;
};
constexpr std::array names{
    Name{" script noscript template ", "scripts"},
    Name{" iframe object embed frame frameset applet ", "embedded pages"},
    Name{" video audio source track ", "sound and video"},
    Name{" form input button select option textarea fieldset label ", "form fields"},
    Name{" svg canvas math ", "drawings"},
};

bool isClutter(const InlineMark& mark) { return mark.element == HTMLElement::span; }

bool isBlank(const AttributedText& text, std::size_t start, std::size_t length) {
    const std::u16string_view units(text.text);
    return units.substr(start, length).find_first_not_of(u" \u00A0\t\n\u2028")
           == std::u16string_view::npos;
}

/// Takes colours and fonts of the page away: they belong to its ground, not to the note's.
void removeClutter(AttributedText& text) {
    for (AttributedText::Run& run : text.runs) {
        std::erase_if(run.style.marks, isClutter);
    }
    for (AttributedText::Paragraph& paragraph : text.paragraphs) {
        paragraph.container = 0;
        std::erase_if(paragraph.attributes, [](const OwnedAttribute& attribute) {
            return attribute.name != "dir" && attribute.name != "lang";
        });
        // Items hold paragraphs elsewhere, and pages divisions.
        if (kindOf(paragraph) != Kind::codeBlock) paragraph.holder = AttributedText::Holder::usual;
    }
    text.containers.clear();
}

/// The text without the paragraphs for which `isLeftOut` holds, at their places.
AttributedText without(const AttributedText& text, const std::vector<bool>& isLeftOut) {
    AttributedText kept;
    std::size_t start = 0;
    std::size_t run = 0;
    for (std::size_t i = 0; i < text.paragraphs.size(); ++i) {
        const AttributedText::Paragraph& paragraph = text.paragraphs[i];
        const std::size_t end = start + paragraph.length;
        const std::size_t moved = kept.text.size();
        for (; run < text.runs.size() && text.runs[run].start < end; ++run) {
            if (isLeftOut[i]) continue;
            kept.runs.push_back(text.runs[run]);
            kept.runs.back().start = text.runs[run].start - start + moved;
        }
        if (!isLeftOut[i]) {
            kept.text += text.text.substr(start, paragraph.length);
            kept.paragraphs.push_back(paragraph);
        }
        start = end;
    }
    return kept;
}

/// Word processors and pages put empty paragraphs where a note has distances.
AttributedText withoutEmptyParagraphs(const AttributedText& text) {
    std::vector<bool> isEmpty;
    std::size_t start = 0;
    for (const AttributedText::Paragraph& paragraph : text.paragraphs) {
        const bool isPlain = kindOf(paragraph) == Kind::paragraph;
        isEmpty.push_back(isPlain && isBlank(text, start, paragraph.length));
        start += paragraph.length;
    }
    return without(text, isEmpty);
}

}  // namespace

Pasted fromHTML(std::string_view html) {
    const PlainHTML plain = plainHTML(html);
    const CanonicalBody body = canonicalBody(plain.html);
    AttributedText text = attributedText(body.html);
    removeClutter(text);
    return {withoutEmptyParagraphs(text), leftOutSentence(body.report, plain.unreachablePictures)};
}

Pasted fromBody(std::string_view body) { return {attributedText(canonicalBody(body).html), {}}; }

AttributedText fromLines(std::string_view text, BlockStyle::Kind kind) {
    AttributedText lines;
    while (text.ends_with('\n') || text.ends_with('\r')) {
        text.remove_suffix(1);
    }
    while (true) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        if (line.ends_with('\r')) line.remove_suffix(1);
        lines.append(std::string(line) + "\n", BlockStyle{kind});
        if (end == std::string_view::npos) return lines;
        text.remove_prefix(end + 1);
    }
}

std::string leftOutSentence(const SanitizationReport& report, std::size_t unreachablePictures) {
    std::vector<std::string> words;
    for (const Name& name : names) {
        std::size_t count = 0;
        for (const auto* counts : {&report.droppedElements, &report.unwrappedElements}) {
            for (const auto& [element, number] : *counts) {
                const std::string sought = ' ' + element + ' ';
                if (name.elements.find(sought) != std::string_view::npos) count += number;
            }
        }
        if (count > 0) words.emplace_back(name.words);
    }
    if (unreachablePictures > 0) words.emplace_back("pictures of the other program");
    std::string sentence;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (i > 0) sentence += i + 1 == words.size() ? " and " : ", ";
        sentence += words[i];
    }
    if (!sentence.empty()) sentence = "Left out: " + sentence + ".";
    const std::size_t remote = report.externalImageURLs.size();
    if (remote == 0) return sentence;
    if (!sentence.empty()) sentence += ' ';
    return sentence
           + (remote == 1
                  ? "1 picture stays on the web and is not loaded."
                  : std::to_string(remote) + " pictures stay on the web and are not loaded.");
}

void changeObjects(AttributedText& text, const ChangeObject& change) {
    std::vector<bool> isLeftOut(text.paragraphs.size());
    std::size_t paragraph = 0;
    std::size_t end = text.paragraphs.empty() ? 0 : text.paragraphs.front().length;
    for (AttributedText::Run& run : text.runs) {
        while (run.start >= end && paragraph + 1 < text.paragraphs.size()) {
            end += text.paragraphs[++paragraph].length;
        }
        if (run.style.object.empty()) continue;
        const auto changed = change(run.style.object);
        if (!changed) continue;
        run.style.object = *changed;
        const bool isAlone = text.paragraphs[paragraph].length == 2;
        if (changed->empty() && isAlone) isLeftOut[paragraph] = true;
        if (changed->empty()) text.text[run.start] = u' ';
    }
    if (std::ranges::find(isLeftOut, true) != isLeftOut.end()) text = without(text, isLeftOut);
}

}  // namespace tesserine::app::paste
