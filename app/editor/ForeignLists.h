#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {
class HTMLSerializer;
}

namespace tesserine::app::paste {

/// What a word processor says of a paragraph that it means as an item of a list.
struct ItemMark {
    std::string list{};  ///< which one
    int level = 1;
};
/// Of the inline style of a paragraph; none when it is no item.
std::optional<ItemMark> itemMark(std::string_view style);
/// Whether a style marks the number or bullet that stands before the words of an item.
bool isItemLabel(std::string_view style);

/// How a list is counted, as the label of an item shows: "3." is, "·" and "o" are not.
struct Numbering {
    bool isNumbered = false;
    std::optional<int> number{};
    friend bool operator==(const Numbering&, const Numbering&) = default;
};
Numbering numberingOf(std::string_view label);

/// Makes lists of items that come one after another with their levels.
class ForeignLists {
public:
    /// `output` outlives it, and is not written to by others in between but for the words of items.
    explicit ForeignLists(HTMLSerializer& output) : output_(output) {}

    bool isOpen() const { return !lists_.empty(); }
    /// Ends the item before, and begins one that shows this label.
    void beginItem(const ItemMark& mark, std::string_view label);
    void end();

private:
    struct List {
        ItemMark mark;
        bool isNumbered = false;
    };
    void open(const ItemMark& mark, const Numbering& numbering);
    void closeLast();

    HTMLSerializer& output_;
    std::vector<List> lists_;  // each in an item of the one before
};

}  // namespace tesserine::app::paste
