#pragma once

#include "core/body/HTMLNode.h"

#include <unordered_map>
#include <unordered_set>

namespace tesserine {

/// Finds the blocks of a note that are items of a checklist because a check box, `en-todo`, stands
/// in them, and the blocks that only wrap the content of a list item or cell.
class ENMLTodos {
public:
    explicit ENMLTodos(const HTMLDocument& enml);

    /// Whether the block is an item, and checked; none when it is no item.
    const bool* item(const HTMLNode& block) const;
    /// Whether this check box is the one that made its block an item.
    bool isTaken(const HTMLNode& box) const { return taken_.contains(&box); }
    /// Whether the block is all that its list item or cell begins with, and says nothing itself.
    bool isWrapper(const HTMLNode& block) const { return wrappers_.contains(&block); }

    static bool isBox(const HTMLNode& node) { return node.name() == "en-todo"; }
    static bool isChecked(const HTMLNode& box) { return box.attribute("checked") == "true"; }

private:
    void findWrapper(const HTMLNode& itemOrCell);
    void takeBox(const HTMLNode& box);

    std::unordered_map<const HTMLNode*, bool> items_;
    std::unordered_set<const HTMLNode*> taken_;
    std::unordered_set<const HTMLNode*> wrappers_;
};

}  // namespace tesserine
