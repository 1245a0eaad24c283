#include "app/editor/ForeignHTML.h"

#include "base/Text.h"
#include "core/body/CSSColor.h"
#include "core/body/HTMLSerializer.h"
#include "core/body/HTMLTreeBuilder.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tesserine::app::paste {
namespace {

using Element = HTMLElement;
using Attributes = std::span<const HTMLAttribute>;

constexpr int boldWeight = 600;

std::string_view attribute(Attributes attributes, std::string_view name) {
    const auto found = std::ranges::find(attributes, name, &HTMLAttribute::name);
    return found == attributes.end() ? std::string_view() : found->value;
}

/// What an inline style declares for one property, in lower case; empty when nothing.
std::string declared(std::string_view style, std::string_view property) {
    while (!style.empty()) {
        const std::string_view declaration = style.substr(0, style.find(';'));
        style.remove_prefix(std::min(declaration.size() + 1, style.size()));
        const std::size_t colon = declaration.find(':');
        if (colon == std::string_view::npos) continue;
        const auto name = text::asciiLowercased(text::trimmed(declaration.substr(0, colon)));
        if (name != property) continue;
        return text::asciiLowercased(text::trimmed(declaration.substr(colon + 1)));
    }
    return {};
}

std::optional<int> number(std::string_view digits) {
    int value = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (read.ptr == digits.data()) return {};
    return value;
}

bool isBold(const std::string& weight) {
    return weight == "bold" || weight == "bolder" || number(weight).value_or(0) >= boldWeight;
}

bool isUsualWeight(const std::string& weight) {
    return weight == "normal" || weight == "lighter"
           || number(weight).value_or(boldWeight) < boldWeight;
}

/// Whether a ground was chosen to mark words: a colour, and not the white or grey of a page.
bool marksWords(const std::string& background) {
    const auto hex = css::opaqueColor(background);
    if (!hex || hex->size() != 7) return false;
    constexpr int leastChroma = 60;
    int least = 255;
    int most = 0;
    for (std::size_t place = 1; place < hex->size(); place += 2) {
        int value = 0;
        std::from_chars(hex->data() + place, hex->data() + place + 2, value, 16);
        least = std::min(least, value);
        most = std::max(most, value);
    }
    return most - least >= leastChroma;
}

/// The elements that say what an inline style says.
std::vector<Element> elementsOf(std::string_view style) {
    std::vector<Element> elements;
    const auto add = [&](bool isMeant, Element element) {
        if (isMeant) elements.push_back(element);
    };
    const std::string slant = declared(style, "font-style");
    std::string line = declared(style, "text-decoration");
    line += declared(style, "text-decoration-line");
    const std::string height = declared(style, "vertical-align");
    std::string ground = declared(style, "background-color");
    if (ground.empty()) ground = declared(style, "background");
    add(isBold(declared(style, "font-weight")), Element::strong);
    add(slant == "italic" || slant == "oblique", Element::em);
    add(line.find("underline") != std::string::npos, Element::u);
    add(line.find("line-through") != std::string::npos, Element::s);
    add(height == "sub", Element::sub);
    add(height == "super", Element::sup);
    add(marksWords(ground), Element::mark);
    return elements;
}

/// Whether a style takes back what the element would say.
bool isTakenBack(Element element, std::string_view style) {
    switch (element) {
    case Element::b:
    case Element::strong: return isUsualWeight(declared(style, "font-weight"));
    case Element::i:
    case Element::em: return declared(style, "font-style") == "normal";
    case Element::u: return declared(style, "text-decoration") == "none";
    default: return false;
    }
}

bool leadsAnywhere(std::string_view address) {
    const std::size_t colon = address.find(':');
    return colon != std::string_view::npos && colon < address.find_first_of("/?#");
}

/// A picture that is not meant to be seen.
bool isPixel(Attributes attributes) {
    const auto side = [&](std::string_view name) { return number(attribute(attributes, name)); };
    return side("width").value_or(2) <= 1 && side("height").value_or(2) <= 1;
}

/// Whether the element holds lines in a note, where other programs put paragraphs.
bool holdsLines(Element element) {
    return element == Element::td || element == Element::th || element == Element::li;
}

bool isCell(Element element) { return element == Element::td || element == Element::th; }

/// Whether an attribute only says how the other program lays out its page.
bool isLayout(const HTMLAttribute& attribute) {
    const bool isUsualDirection = attribute.name == "dir" && attribute.value == "ltr";
    return isUsualDirection || attribute.name == "style" || attribute.name == "align"
           || attribute.name == "lang";
}

/// Rewrites a tree while it is read.
class Rewriter final : public HTMLSink {
public:
    void open(Element element, std::string_view name, Attributes attributes) override;
    void close() override;
    void text(std::string_view text) override;
    void comment(std::string_view /*text*/) override {}

    PlainHTML finish() { return {output_.html(), unreachable_}; }

private:
    /// One element of the source, and how many stand for it in the result.
    struct Open {
        Element element;
        std::size_t written = 0;
        std::size_t paragraphs = 0;  // that became lines of it
    };

    void openBlock(Element element, std::string_view name, Attributes attributes);
    void openInline(Element element, std::string_view name, Attributes attributes);
    void write(Element element, std::string_view name, Attributes attributes);
    void writeBreaks();
    bool isIn(Element element) const;

    HTMLSerializer output_;
    std::vector<Open> open_;
    std::size_t breaks_ = 0;  // that are written if something follows on their line
    std::size_t unreachable_ = 0;
};

void Rewriter::open(Element element, std::string_view name, Attributes attributes) {
    const bool isLine = element == Element::p && !open_.empty() && holdsLines(open_.back().element);
    if (isLine && open_.back().paragraphs++ > 0) ++breaks_;
    open_.push_back({element});
    if (isLine) return;
    if (element == Element::br) {
        ++breaks_;
    } else if (html::has(element, html::isBlock)) {
        openBlock(element, name, attributes);
    } else {
        openInline(element, name, attributes);
    }
}

void Rewriter::close() {
    const Open closed = open_.back();
    open_.pop_back();
    if (html::has(closed.element, html::isBlock) && closed.written > 0) breaks_ = 0;
    for (std::size_t i = 0; i < closed.written; ++i) {
        output_.close();
    }
}

void Rewriter::text(std::string_view text) {
    // White space behind a paragraph that became a line is layout of the source.
    const bool isBehindLine = !open_.empty() && open_.back().paragraphs > 0;
    if (isBehindLine && html::isSpaceOnly(text)) return;
    const bool isQuotedMail = isIn(Element::blockquote) && isIn(Element::pre);
    if (!isQuotedMail) {
        if (!html::isSpaceOnly(text)) writeBreaks();
        return output_.text(text);
    }
    while (true) {
        const std::string_view line = text.substr(0, text.find('\n'));
        if (!line.empty()) writeBreaks();
        output_.text(line);
        if (line.size() == text.size()) return;
        ++breaks_;
        text.remove_prefix(line.size() + 1);
    }
}

void Rewriter::openBlock(Element element, std::string_view name, Attributes attributes) {
    breaks_ = 0;
    const bool isQuotedMail = element == Element::pre && isIn(Element::blockquote);
    if (isQuotedMail) return write(Element::p, "p", {});
    std::vector<HTMLAttribute> kept;
    std::ranges::remove_copy_if(attributes, std::back_inserter(kept), isLayout);
    std::string alignment = declared(attribute(attributes, "style"), "text-align");
    if (alignment.empty()) alignment = text::asciiLowercased(attribute(attributes, "align"));
    const bool isAligned = (alignment == "center" || alignment == "right") && !isCell(element);
    alignment.insert(0, "text-align: ");
    if (isAligned) kept.push_back({"style", alignment});
    write(element, name, kept);
}

void Rewriter::openInline(Element element, std::string_view name, Attributes attributes) {
    const std::string_view style = attribute(attributes, "style");
    if (element == Element::img) {
        if (isPixel(attributes)) return;
        if (attribute(attributes, "src").starts_with("cid:")) {
            ++unreachable_;
            return;
        }
        writeBreaks();
    }
    const bool isIdle = element == Element::span || element == Element::font
                        || (element == Element::a && !leadsAnywhere(attribute(attributes, "href")))
                        || isTakenBack(element, style);
    if (!isIdle) write(element, name, attributes);
    const bool isInHeading = std::ranges::any_of(
        open_, [](const Open& open) { return html::has(open.element, html::isHeading); });
    for (const Element meant : elementsOf(style)) {
        if (meant == element || (isInHeading && meant == Element::strong)) continue;
        write(meant, html::nameOf(meant), {});
    }
}

void Rewriter::write(Element element, std::string_view name, Attributes attributes) {
    output_.open(element, name, attributes);
    ++open_.back().written;
}

void Rewriter::writeBreaks() {
    for (; breaks_ > 0; --breaks_) {
        output_.open(Element::br, "br", {});
        output_.close();
    }
}

bool Rewriter::isIn(Element element) const {
    return std::ranges::find(open_, element, &Open::element) != open_.end();
}

}  // namespace

PlainHTML plainHTML(std::string_view foreign) {
    Rewriter rewriter;
    parseHTML(foreign, rewriter);
    return rewriter.finish();
}

}  // namespace tesserine::app::paste
