#pragma once

#include "core/body/HTMLElements.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tesserine {

/// One attribute: its name in lower case, its value with character references decoded.
struct HTMLAttribute {
    std::string_view name;
    std::string_view value;

    friend bool operator==(const HTMLAttribute&, const HTMLAttribute&) = default;
};

/// The value of the attribute `name`, if there is one.
std::optional<std::string_view> attributeNamed(
    std::span<const HTMLAttribute> attributes, std::string_view name);

/// One node of a body. Nodes and their texts belong to an `HTMLDocument` and live as long as it.
/// The parent is known but not owned.
class HTMLNode {
public:
    enum class Kind : std::uint8_t {
        fragment,  ///< holds a whole body
        element,
        text,
        comment,
    };

    /// The children of a node, in document order.
    class Children {
    public:
        class Iterator {
        public:
            explicit Iterator(const HTMLNode* node) : node_(node) {}
            const HTMLNode& operator*() const { return *node_; }
            const HTMLNode* operator->() const { return node_; }
            Iterator& operator++() {
                node_ = node_->nextSibling();
                return *this;
            }
            friend bool operator==(const Iterator&, const Iterator&) = default;

        private:
            const HTMLNode* node_;
        };

        explicit Children(const HTMLNode* first) : first_(first) {}
        Iterator begin() const { return Iterator(first_); }
        Iterator end() const { return Iterator(nullptr); }

    private:
        const HTMLNode* first_;
    };

    Kind kind() const noexcept { return kind_; }
    /// `other` for an element without a rule of its own and for what is no element.
    HTMLElement element() const noexcept { return element_; }
    /// The lower-case name of an element; empty for other kinds.
    std::string_view name() const noexcept { return kind_ == Kind::element ? value_ : ""; }
    /// What a text node (references decoded) or a comment says; empty for other kinds.
    std::string_view text() const noexcept {
        return kind_ == Kind::text || kind_ == Kind::comment ? value_ : "";
    }
    std::span<const HTMLAttribute> attributes() const noexcept {
        return {attributes_, attributeCount_};
    }
    std::optional<std::string_view> attribute(std::string_view name) const {
        return attributeNamed(attributes(), name);
    }

    const HTMLNode* parent() const noexcept { return parent_; }
    const HTMLNode* firstChild() const noexcept { return firstChild_; }
    const HTMLNode* nextSibling() const noexcept { return nextSibling_; }
    Children children() const noexcept { return Children(firstChild_); }

private:
    friend class HTMLDocument;

    Kind kind_ = Kind::fragment;
    HTMLElement element_ = HTMLElement::other;
    std::uint32_t attributeCount_ = 0;
    std::string_view value_;
    const HTMLAttribute* attributes_ = nullptr;
    HTMLNode* parent_ = nullptr;
    HTMLNode* firstChild_ = nullptr;
    HTMLNode* lastChild_ = nullptr;
    HTMLNode* nextSibling_ = nullptr;
};

/// Owns a tree of nodes in one arena, which goes away at once whatever the depth. Not synchronised;
/// a document that nobody changes may be read from several threads.
class HTMLDocument {
public:
    /// An empty fragment.
    HTMLDocument();
    /// Reads `source` (UTF-8; anything goes) as the fragment of a note body. Never fails; time and
    /// memory are linear in the size.
    static HTMLDocument parse(std::string_view source);

    HTMLDocument(const HTMLDocument&) = delete;
    HTMLDocument& operator=(const HTMLDocument&) = delete;
    HTMLDocument(HTMLDocument&&) noexcept;
    HTMLDocument& operator=(HTMLDocument&&) noexcept;
    ~HTMLDocument();

    const HTMLNode& root() const noexcept;
    HTMLNode& root() noexcept;

    /// Adds a last child to `parent`, a node of this document. Names are made lower-case; all texts
    /// are copied.
    HTMLNode& appendElement(
        HTMLNode& parent, std::string_view name, std::span<const HTMLAttribute> attributes = {});
    HTMLNode& appendText(HTMLNode& parent, std::string_view text);
    HTMLNode& appendComment(HTMLNode& parent, std::string_view text);

private:
    struct Storage;
    class Builder;

    HTMLNode& append(HTMLNode& parent, HTMLNode::Kind kind, std::string_view value);

    std::unique_ptr<Storage> storage_;
};

/// Walks `root` and everything below it in document order without recursion: `visitor.enter(node)`
/// before the children, `visitor.leave(node)` after them.
template <class Visitor>
void walk(const HTMLNode& root, Visitor& visitor) {
    const HTMLNode* node = &root;
    for (;;) {
        visitor.enter(*node);
        if (node->firstChild() != nullptr) {
            node = node->firstChild();
            continue;
        }
        visitor.leave(*node);
        while (node != &root && node->nextSibling() == nullptr) {
            node = node->parent();
            visitor.leave(*node);
        }
        if (node == &root) return;
        node = node->nextSibling();
    }
}

}  // namespace tesserine
