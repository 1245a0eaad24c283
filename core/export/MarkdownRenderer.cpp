#include "core/export/MarkdownRenderer.h"

#include "core/body/HTMLNode.h"
#include "core/export/BodyHTML.h"
#include "core/export/InlineMarkdown.h"
#include "core/export/MarkdownEscapes.h"
#include "core/export/MarkdownTable.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>
#include <vector>

namespace tesserine {
namespace {

using Element = HTMLElement;
using markdown::InlineMarkdown;
using Nodes = std::vector<const HTMLNode*>;

/// Other readers want four spaces where this one counts.
constexpr std::size_t leastIndent = 4;

bool isBlock(const HTMLNode& node) { return html::has(node.element(), html::isBlock); }
bool isList(const HTMLNode& node) {
    return node.element() == Element::ul || node.element() == Element::ol;
}

/// One block, or inline nodes that follow one another.
struct Piece {
    const HTMLNode* block = nullptr;
    Nodes line;
};

/// The children of `parent` as blocks and what stands between them.
std::vector<Piece> piecesOf(const HTMLNode& parent) {
    std::vector<Piece> pieces;
    for (const HTMLNode& child : parent.children()) {
        if (isBlock(child)) {
            pieces.push_back({&child, {}});
            continue;
        }
        if (pieces.empty() || pieces.back().block != nullptr) pieces.emplace_back();
        pieces.back().line.push_back(&child);
    }
    return pieces;
}

Nodes childrenOf(const HTMLNode& node) {
    Nodes children;
    for (const HTMLNode& child : node.children()) {
        children.push_back(&child);
    }
    return children;
}

/// The number of a list's first item; none when Markdown cannot count so.
std::optional<int> firstNumber(const HTMLNode& list, std::size_t itemCount) {
    constexpr int largest = 999'999'999;
    const std::string_view start = list.attribute("start").value_or("1");
    int number = 0;
    const auto [end, error] = std::from_chars(start.data(), start.data() + start.size(), number);
    const bool isNumber = error == std::errc{} && number >= 0 && number <= largest;
    if (!isNumber || std::cmp_greater(itemCount, largest - number)) return std::nullopt;
    return number;
}

/// `lines` with `prefix` before every line but the first, which has `first`. Empty lines get none
/// of its spaces.
std::string prefixed(std::string_view lines, std::string_view first, std::string_view prefix) {
    const std::string_view bare = prefix.substr(0, prefix.find(' '));
    std::string output(first);
    for (std::size_t end = lines.find('\n'); end != std::string_view::npos;
         end = lines.find('\n')) {
        output += lines.substr(0, end + 1);
        lines.remove_prefix(end + 1);
        output += lines.starts_with('\n') ? bare : prefix;
    }
    return output.append(lines);
}

/// Tells lists that follow a list of their kind: two in a row are one, unless their marks differ.
class ListTurns {
public:
    /// Whether `block`, the next one, takes the other mark.
    bool takesOther(const HTMLNode& block) {
        isOther_ = isList(block) && block.element() == previous_ && !isOther_;
        previous_ = block.element();
        return isOther_;
    }
    /// Text stands between.
    void interrupt() { previous_ = Element::other; }

private:
    Element previous_ = Element::other;
    bool isOther_ = false;
};

/// Writes the blocks of a body. Calls itself for what stands in a block: stored bodies are at most
/// 64 elements deep.
class Renderer {
public:
    explicit Renderer(const MarkdownOptions& options) : options_(options) {}

    /// The blocks of `parent`, a line left empty between them.
    std::string blocks(const HTMLNode& parent) const;

private:
    std::string block(const HTMLNode& node, bool isOtherList) const;
    std::string faithful(const HTMLNode& node, bool isOtherList) const;
    std::string line(const Nodes& nodes, InlineMarkdown::Place place) const;
    std::string heading(const HTMLNode& node) const;
    std::string quote(const HTMLNode& node) const;
    std::string fenced(const HTMLNode& node) const;
    std::string list(const HTMLNode& node, bool isOtherList) const;
    std::string item(const HTMLNode& node) const;
    std::string division(const HTMLNode& node) const;
    std::string raw(const HTMLNode& node) const;

    const MarkdownOptions& options_;
};

std::string Renderer::blocks(const HTMLNode& parent) const {
    const bool isTop = parent.kind() == HTMLNode::Kind::fragment;
    std::string text;
    ListTurns turns;
    for (const Piece& piece : piecesOf(parent)) {
        std::string written;
        if (piece.block == nullptr) {
            written = line(piece.line, InlineMarkdown::Place::paragraph);
            if (!written.empty()) turns.interrupt();
        } else {
            const bool isOtherList = turns.takesOther(*piece.block);
            written =
                isTop ? faithful(*piece.block, isOtherList) : block(*piece.block, isOtherList);
        }
        if (!written.empty() && !text.empty()) text += "\n\n";
        text += written;
    }
    return text;
}

/// As `block`, or HTML where that would be read back as something else.
std::string Renderer::faithful(const HTMLNode& node, bool isOtherList) const {
    std::string written = block(node, isOtherList);
    if (!options_.readBack || options_.readBack(written) == htmlOf(node, {})) return written;
    return raw(node);
}

std::string Renderer::block(const HTMLNode& node, bool isOtherList) const {
    if (node.attribute("class") && !isList(node)) return raw(node);
    switch (node.element()) {
    case Element::p: return line(childrenOf(node), InlineMarkdown::Place::paragraph);
    case Element::h1:
    case Element::h2:
    case Element::h3:
    case Element::h4:
    case Element::h5:
    case Element::h6: return heading(node);
    case Element::blockquote: return quote(node);
    case Element::pre: return fenced(node);
    case Element::hr: return "---";
    case Element::ul:
    case Element::ol: return list(node, isOtherList);
    case Element::table: {
        const auto table = markdown::tableOf(node, options_);
        return table ? *table : raw(node);
    }
    case Element::div: return division(node);
    default: return raw(node);
    }
}

std::string Renderer::line(const Nodes& nodes, InlineMarkdown::Place place) const {
    InlineMarkdown text(options_, place);
    for (const HTMLNode* const node : nodes) {
        text.add(*node);
    }
    return text.take();
}

std::string Renderer::heading(const HTMLNode& node) const {
    constexpr int deepest = 6;
    const int level = node.name()[1] - '0';
    const int shifted = std::min(level + options_.headingShift, deepest);
    const std::string text = line(childrenOf(node), InlineMarkdown::Place::heading);
    return std::string(static_cast<std::size_t>(shifted), '#') + (text.empty() ? "" : " ") + text;
}

std::string Renderer::quote(const HTMLNode& node) const {
    const std::string text = blocks(node);
    return text.empty() ? ">" : prefixed(text, "> ", "> ");
}

std::string Renderer::fenced(const HTMLNode& node) const {
    constexpr std::size_t shortest = 3;
    const std::string code = markdown::textOf(node);
    const std::string fence(std::max(shortest, markdown::longestRun(code, '`') + 1), '`');
    return fence + "\n" + code + (code.empty() ? "" : "\n") + fence;
}

std::string Renderer::list(const HTMLNode& node, bool isOtherList) const {
    const Nodes items = childrenOf(node);
    auto number = firstNumber(node, items.size());
    const bool isPlain = std::ranges::all_of(
        items, [](const HTMLNode* item) { return item->element() == Element::li; });
    if (!isPlain || !number) return raw(node);

    std::string lines;
    for (const HTMLNode* const child : items) {
        std::string marker = isOtherList ? "*" : "-";
        if (node.element() == Element::ol) {
            marker = std::to_string((*number)++) + (isOtherList ? ")" : ".");
        }
        const std::string indent(std::max(leastIndent, marker.size() + 1), ' ');
        if (const auto checked = child->attribute("data-checked")) {
            marker += *checked == "true" ? " [x]" : " [ ]";
        }
        if (!lines.empty()) lines += '\n';
        const std::string text = item(*child);
        if (!text.empty() && text[0] != '\n') marker += ' ';
        lines += prefixed(text, marker, indent);
    }
    return lines;
}

/// What stands behind the marker of an item: its first line, if it has one, and all blocks below. A
/// list follows its line without a gap.
std::string Renderer::item(const HTMLNode& node) const {
    std::string text;
    bool isTight = true;
    ListTurns turns;
    for (const Piece& piece : piecesOf(node)) {
        const HTMLNode* const nested = piece.block;
        const bool isLine = nested == nullptr || nested->element() == Element::p;
        const std::string written = nested == nullptr
                                        ? line(piece.line, InlineMarkdown::Place::paragraph)
                                        : block(*nested, turns.takesOther(*nested));
        if (written.empty()) continue;
        if (!text.empty() || !isLine) {
            isTight = isTight && (text.empty() || (nested != nullptr && isList(*nested)));
            text += isTight ? "\n" : "\n\n";
        }
        text += written;
    }
    return text;
}

/// A division is there for its content, unless it stands for a file.
std::string Renderer::division(const HTMLNode& node) const {
    if (!node.attribute("data-ts-attachment")) return blocks(node);
    return options_.addressOf ? line({&node}, InlineMarkdown::Place::paragraph) : raw(node);
}

std::string Renderer::raw(const HTMLNode& node) const {
    return markdown::onOneLine(htmlOf(node, options_.addressOf));
}

}  // namespace

std::string markdownOf(std::string_view html, const MarkdownOptions& options) {
    const HTMLDocument document = HTMLDocument::parse(html);
    std::string markdown = Renderer(options).blocks(document.root());
    if (!markdown.empty()) markdown += '\n';
    return markdown;
}

}  // namespace tesserine
