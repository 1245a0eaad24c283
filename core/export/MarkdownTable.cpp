#include "core/export/MarkdownTable.h"

#include "core/export/InlineMarkdown.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace tesserine::markdown {
namespace {

using Element = HTMLElement;
using Row = std::vector<const HTMLNode*>;

struct BlockFinder {
    void enter(const HTMLNode& node) {
        isFound = isFound || html::has(node.element(), html::isBlock);
    }
    void leave(const HTMLNode& /*node*/) {}

    bool isFound = false;
};

bool isPlainCell(const HTMLNode& cell) {
    if (cell.element() != Element::td && cell.element() != Element::th) return false;
    if (cell.attribute("colspan") || cell.attribute("rowspan")) return false;
    BlockFinder blocks;
    for (const HTMLNode& child : cell.children()) {
        walk(child, blocks);
    }
    return !blocks.isFound;
}

/// Adds the cells of `row`; false when there is anything else.
bool addRow(std::vector<Row>& rows, const HTMLNode& row) {
    Row& cells = rows.emplace_back();
    for (const HTMLNode& cell : row.children()) {
        if (!isPlainCell(cell)) return false;
        cells.push_back(&cell);
    }
    return cells.size() == rows.front().size() && !cells.empty();
}

/// The rows of a plain table, none for another one.
std::vector<Row> rowsOf(const HTMLNode& table) {
    std::vector<Row> rows;
    for (const HTMLNode& part : table.children()) {
        if (part.element() == Element::tr) {
            if (!addRow(rows, part)) return {};
            continue;
        }
        const bool isGroup = part.element() == Element::thead || part.element() == Element::tbody
                             || part.element() == Element::tfoot;
        if (!isGroup) return {};
        for (const HTMLNode& row : part.children()) {
            if (row.element() != Element::tr || !addRow(rows, row)) return {};
        }
    }
    return rows;
}

std::string lineOf(const Row& row, const MarkdownOptions& options) {
    std::string line = "|";
    for (const HTMLNode* const cell : row) {
        InlineMarkdown text(options, InlineMarkdown::Place::cell);
        for (const HTMLNode& child : cell->children()) {
            text.add(child);
        }
        const std::string written = text.take();
        line.append(" ").append(written).append(written.empty() ? "|" : " |");
    }
    return line;
}

std::string_view ruleUnder(const HTMLNode& headCell) {
    const std::string_view style = headCell.attribute("style").value_or("");
    if (style.ends_with("left")) return " :-- |";
    if (style.ends_with("center")) return " :-: |";
    if (style.ends_with("right")) return " --: |";
    return " --- |";
}

}  // namespace

std::optional<std::string> tableOf(const HTMLNode& table, const MarkdownOptions& options) {
    const std::vector<Row> rows = rowsOf(table);
    if (rows.empty()) return std::nullopt;
    std::string lines = lineOf(rows.front(), options) + "\n|";
    for (const HTMLNode* const cell : rows.front()) {
        lines += ruleUnder(*cell);
    }
    for (auto row = rows.begin() + 1; row != rows.end(); ++row) {
        lines += "\n" + lineOf(*row, options);
    }
    return lines;
}

}  // namespace tesserine::markdown
