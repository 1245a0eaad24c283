#include "core/body/PlainText.h"

#include "base/Text.h"
#include "core/body/HTMLSink.h"
#include "core/body/HTMLTreeBuilder.h"
#include "core/body/PlainTextWriter.h"

#include <algorithm>
#include <vector>

namespace tesserine {
namespace {

PlainTextWriter::Attributes shown(HTMLElement element, std::span<const HTMLAttribute> attributes) {
    if (element == HTMLElement::li) return {.checked = attributeNamed(attributes, "data-checked")};
    if (element != HTMLElement::img) return {};
    return {.alternative = attributeNamed(attributes, "alt").value_or("")};
}

/// Elements whose children do not show, should they have any.
bool isAlone(HTMLElement element) {
    return element == HTMLElement::br || element == HTMLElement::hr || element == HTMLElement::img;
}

/// Renders what it is told.
class Renderer final : public HTMLSink {
public:
    void open(
        HTMLElement element,
        std::string_view /*name*/,
        std::span<const HTMLAttribute> attributes) override {
        open_.push_back(element);
        if (hidden_ == 0) writer_.open(element, shown(element, attributes));
        if (isAlone(element)) ++hidden_;
    }
    void close() override {
        const HTMLElement element = open_.back();
        open_.pop_back();
        if (isAlone(element)) --hidden_;
        if (hidden_ == 0) writer_.close(element);
    }
    void text(std::string_view text) override {
        if (hidden_ == 0) writer_.text(text);
    }
    void comment(std::string_view /*text*/) override {}

    std::string take() { return writer_.take(); }

private:
    PlainTextWriter writer_;
    std::vector<HTMLElement> open_;
    std::size_t hidden_ = 0;  // open elements whose children do not show
};

struct NodeRenderer {
    void enter(const HTMLNode& node) {
        if (node.kind() == HTMLNode::Kind::text) renderer.text(node.text());
        if (node.kind() != HTMLNode::Kind::element) return;
        renderer.open(node.element(), node.name(), node.attributes());
    }
    void leave(const HTMLNode& node) {
        if (node.kind() == HTMLNode::Kind::element) renderer.close();
    }

    Renderer renderer;
};

bool isSpace(std::string_view character) {
    return character == " " || character == "\n" || character == "\t" || character == "\r"
           || character == "\r\n";
}

}  // namespace

std::string PlainText::fromHTML(std::string_view html) {
    Renderer renderer;
    parseHTML(html, renderer);
    return renderer.take();
}

std::string PlainText::fromNode(const HTMLNode& node) {
    NodeRenderer visitor;
    walk(node, visitor);
    return visitor.renderer.take();
}

std::optional<std::string_view> PlainText::firstLine(std::string_view text, std::size_t limit) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text::trimmed(text.substr(0, end));
        if (!line.empty()) return text::prefix(line, limit);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return std::nullopt;
}

std::string PlainText::snippet(std::string_view text, std::size_t limit) {
    constexpr std::size_t leastConsidered = 512;
    const std::size_t considered = std::max(leastConsidered, 8 * std::min(limit, text.size()));
    std::string output;
    std::size_t read = 0;
    std::size_t written = 0;
    bool isPending = false;
    if (limit == 0) return output;
    text::forEachCharacter(text, [&](std::string_view character) {
        if (read++ == considered) return false;
        if (isSpace(character)) {
            isPending = written > 0;
            return true;
        }
        if (isPending) {
            if (written + 1 >= limit) return false;
            output += ' ';
            ++written;
            isPending = false;
        }
        output += character;
        return ++written < limit;
    });
    return output;
}

std::string displayTitle(std::string_view title, std::string_view plainText) {
    constexpr std::size_t limit = 120;
    const std::string_view own = text::trimmed(title);
    if (!own.empty()) return std::string(own);
    return std::string(PlainText::firstLine(plainText, limit).value_or("Untitled"));
}

}  // namespace tesserine
