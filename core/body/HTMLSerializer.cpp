#include "core/body/HTMLSerializer.h"

namespace tesserine {
namespace {

constexpr std::string_view noBreakSpace = "\u00A0";

/// Appends `text` with each of `special`, single bytes or the first byte of U+00A0, as a reference.
void appendEscaped(std::string& output, std::string_view text, std::string_view special) {
    std::size_t start = 0;
    for (;;) {
        const std::size_t found = text.find_first_of(special, start);
        if (found == std::string_view::npos) break;
        output += text.substr(start, found - start);
        start = found + 1;
        switch (text[found]) {
        case '&': output += "&amp;"; break;
        case '<': output += "&lt;"; break;
        case '>': output += "&gt;"; break;
        case '"': output += "&quot;"; break;
        default:
            if (text.substr(found).starts_with(noBreakSpace)) {
                output += "&nbsp;";
                ++start;
            } else {
                output += text[found];
            }
        }
    }
    output += text.substr(start);
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

std::string HTMLSerializer::serialize(const HTMLNode& root) {
    NodeWriter writer;
    walk(root, writer);
    return writer.serializer.html();
}

namespace html {

void appendEscapedText(std::string& output, std::string_view text) {
    appendEscaped(output, text, "&<>\xC2");
}

void appendEscapedAttribute(std::string& output, std::string_view value) {
    appendEscaped(output, value, "&\"<\xC2");
}

}  // namespace html
}  // namespace tesserine
