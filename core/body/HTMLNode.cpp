#include "core/body/HTMLNode.h"

#include "base/Text.h"
#include "core/body/HTMLSink.h"
#include "core/body/HTMLTreeBuilder.h"

#include <algorithm>
#include <cstring>
#include <memory_resource>
#include <utility>

namespace tesserine {

std::optional<std::string_view> attributeNamed(
    std::span<const HTMLAttribute> attributes, std::string_view name) {
    const auto found = std::ranges::find(attributes, name, &HTMLAttribute::name);
    return found == attributes.end() ? std::nullopt : std::optional(found->value);
}

struct HTMLDocument::Storage {
    /// A copy that lives as long as the document.
    std::string_view keep(std::string_view text) {
        if (text.empty()) return {};
        auto* const copy = static_cast<char*>(memory.allocate(text.size(), 1));
        std::memcpy(copy, text.data(), text.size());
        return {copy, text.size()};
    }

    std::pmr::monotonic_buffer_resource memory;
    HTMLNode root;
};

/// Makes nodes of what the tree builder tells.
class HTMLDocument::Builder final : public HTMLSink {
public:
    explicit Builder(HTMLDocument& document) : document_(document), current_(&document.root()) {}

    void open(
        HTMLElement /*element*/,
        std::string_view name,
        std::span<const HTMLAttribute> attributes) override {
        current_ = &document_.appendElement(*current_, name, attributes);
    }
    void close() override { current_ = current_->parent_; }
    void text(std::string_view text) override { document_.appendText(*current_, text); }
    void comment(std::string_view text) override { document_.appendComment(*current_, text); }

private:
    HTMLDocument& document_;
    HTMLNode* current_;
};

HTMLDocument::HTMLDocument() : storage_(std::make_unique<Storage>()) {}
HTMLDocument::HTMLDocument(HTMLDocument&&) noexcept = default;
HTMLDocument& HTMLDocument::operator=(HTMLDocument&&) noexcept = default;
HTMLDocument::~HTMLDocument() = default;

HTMLDocument HTMLDocument::parse(std::string_view source) {
    HTMLDocument document;
    Builder builder(document);
    parseHTML(source, builder);
    return document;
}

const HTMLNode& HTMLDocument::root() const noexcept { return storage_->root; }
HTMLNode& HTMLDocument::root() noexcept { return storage_->root; }

HTMLNode& HTMLDocument::appendElement(
    HTMLNode& parent, std::string_view name, std::span<const HTMLAttribute> attributes) {
    HTMLNode& node = append(parent, HTMLNode::Kind::element, text::asciiLowercased(name));
    node.element_ = html::elementNamed(node.value_);
    node.attributeCount_ = static_cast<std::uint32_t>(attributes.size());
    if (attributes.empty()) return node;
    void* const memory = storage_->memory.allocate(attributes.size_bytes(), alignof(HTMLAttribute));
    auto* const copies = static_cast<HTMLAttribute*>(memory);
    for (std::size_t i = 0; i < attributes.size(); ++i) {
        std::construct_at(
            copies + i,
            HTMLAttribute{
                storage_->keep(text::asciiLowercased(attributes[i].name)),
                storage_->keep(attributes[i].value)});
    }
    node.attributes_ = copies;
    return node;
}

HTMLNode& HTMLDocument::appendText(HTMLNode& parent, std::string_view text) {
    return append(parent, HTMLNode::Kind::text, text);
}

HTMLNode& HTMLDocument::appendComment(HTMLNode& parent, std::string_view text) {
    return append(parent, HTMLNode::Kind::comment, text);
}

HTMLNode& HTMLDocument::append(HTMLNode& parent, HTMLNode::Kind kind, std::string_view value) {
    void* const memory = storage_->memory.allocate(sizeof(HTMLNode), alignof(HTMLNode));
    HTMLNode& node = *std::construct_at(static_cast<HTMLNode*>(memory));
    node.kind_ = kind;
    node.value_ = storage_->keep(value);
    node.parent_ = &parent;
    (parent.lastChild_ != nullptr ? parent.lastChild_->nextSibling_ : parent.firstChild_) = &node;
    parent.lastChild_ = &node;
    return node;
}

}  // namespace tesserine
