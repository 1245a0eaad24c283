#include "core/body/HTMLSerializer.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace tesserine {
namespace {

constexpr std::string_view noBreakSpace = "\u00A0";

/// What may have to be written as a reference; U+00A0 is known by its first byte.
enum Special : std::uint8_t { inText = 1, inAttribute = 2 };

constexpr auto specials = [] {
    std::array<std::uint8_t, 256> table{};
    table['&'] = table['<'] = table[0xC2] = inText | inAttribute;
    table['>'] = inText;
    table['"'] = inAttribute;
    return table;
}();

/// The reference for the character at the front of `text`, and the bytes it takes; none for U+0080
/// to U+00BF, which begin like U+00A0.
std::pair<std::string_view, std::size_t> reference(std::string_view text) {
    switch (text.front()) {
    case '&': return {"&amp;", 1};
    case '<': return {"&lt;", 1};
    case '>': return {"&gt;", 1};
    case '"': return {"&quot;", 1};
    default: break;
    }
    if (text.starts_with(noBreakSpace)) return {"&nbsp;", noBreakSpace.size()};
    return {text.substr(0, 1), 1};
}

void appendEscaped(std::string& output, std::string_view text, Special place) {
    const auto isSpecial = [place](char c) {
        return (specials[static_cast<unsigned char>(c)] & place) != 0;
    };
    while (!text.empty()) {
        const auto* const found = std::find_if(text.begin(), text.end(), isSpecial);
        const auto plain = static_cast<std::size_t>(found - text.begin());
        output += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty()) return;
        const auto [written, size] = reference(text);
        output += written;
        text.remove_prefix(size);
    }
}

/// Tells the nodes of a tree to a serializer.
struct NodeWriter {
    void enter(const HTMLNode& node) {
        switch (node.kind()) {
        case HTMLNode::Kind::fragment: return;
        case HTMLNode::Kind::element:
            serializer.open(node.element(), node.name(), node.attributes());
            return;
        case HTMLNode::Kind::text: serializer.text(node.text()); return;
        case HTMLNode::Kind::comment: return;
        }
    }
    void leave(const HTMLNode& node) {
        if (node.kind() == HTMLNode::Kind::element) serializer.close();
    }

    HTMLSerializer serializer;
};

}  // namespace

void HTMLSerializer::open(
    HTMLElement element, std::string_view name, std::span<const HTMLAttribute> attributes) {
    html_ += '<';
    html_ += name;
    for (const HTMLAttribute& attribute : attributes) {
        html_ += ' ';
        html_ += attribute.name;
        html_ += "=\"";
        html::appendEscapedAttribute(html_, attribute.value);
        html_ += '"';
    }
    html_ += '>';
    open_.push_back({element, std::string(name)});
    isAfterPre_ = element == HTMLElement::pre;
}

void HTMLSerializer::close() {
    const Open& innermost = open_.back();
    if (!html::has(innermost.element, html::isVoid)) {
        html_ += "</";
        html_ += innermost.name;
        html_ += '>';
    }
    open_.pop_back();
    isAfterPre_ = false;
}

void HTMLSerializer::text(std::string_view text) {
    if (text.empty()) return;
    // A reader drops one line break there.
    if (isAfterPre_ && text.front() == '\n') html_ += '\n';
    isAfterPre_ = false;
    html::appendEscapedText(html_, text);
}

void HTMLSerializer::comment(std::string_view /*text*/) {}

void HTMLSerializer::storedForm(std::string_view html) {
    isAfterPre_ = false;
    html_ += html;
}

std::string HTMLSerializer::serialize(const HTMLNode& root) {
    NodeWriter writer;
    walk(root, writer);
    return writer.serializer.html();
}

namespace html {

void appendEscapedText(std::string& output, std::string_view text) {
    appendEscaped(output, text, inText);
}

void appendEscapedAttribute(std::string& output, std::string_view value) {
    appendEscaped(output, value, inAttribute);
}

}  // namespace html
}  // namespace tesserine
