#include "core/import/ENMLTodos.h"

#include "base/Text.h"

namespace tesserine {
namespace {

bool isCell(const HTMLNode& node) {
    return node.element() == HTMLElement::td || node.element() == HTMLElement::th;
}

bool isPlainBlock(const HTMLNode& node) {
    return node.element() == HTMLElement::div || node.element() == HTMLElement::p;
}

bool isAligned(const HTMLNode& node) {
    return node.attribute("style").value_or("").find("text-align") != std::string_view::npos;
}

}  // namespace

ENMLTodos::ENMLTodos(const HTMLDocument& enml) {
    struct Finder {
        void enter(const HTMLNode& node) {
            if (node.element() == HTMLElement::li || isCell(node)) todos.findWrapper(node);
            if (isBox(node)) todos.takeBox(node);
        }
        void leave(const HTMLNode&) {}

        ENMLTodos& todos;
    };
    Finder finder{*this};
    walk(enml.root(), finder);
}

const bool* ENMLTodos::item(const HTMLNode& block) const {
    const auto found = items_.find(&block);
    return found == items_.end() ? nullptr : &found->second;
}

void ENMLTodos::findWrapper(const HTMLNode& itemOrCell) {
    const HTMLNode* first = nullptr;
    std::size_t blocks = 0;
    for (const HTMLNode& child : itemOrCell.children()) {
        const bool isNothing =
            child.kind() == HTMLNode::Kind::comment
            || (child.kind() == HTMLNode::Kind::text && text::isBlank(child.text()));
        if (isNothing) continue;
        if (first == nullptr) first = &child;
        if (isPlainBlock(child)) ++blocks;
    }
    const bool isOnly = first != nullptr && isPlainBlock(*first) && blocks == 1;
    if (isOnly && !isAligned(*first)) wrappers_.insert(first);
}

void ENMLTodos::takeBox(const HTMLNode& box) {
    const HTMLNode* block = box.parent();
    while (block != nullptr && block->element() != HTMLElement::li && !isPlainBlock(*block)) {
        if (isCell(*block)) return;
        block = block->parent();
    }
    if (block == nullptr) return;
    if (isWrapper(*block) && !isCell(*block->parent())) block = block->parent();
    wrappers_.erase(block);
    if (items_.emplace(block, isChecked(box)).second) taken_.insert(&box);
}

}  // namespace tesserine
