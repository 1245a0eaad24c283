#include "app/editor/TableContent.h"

#include "core/body/HTMLNode.h"
#include "core/body/HTMLSerializer.h"
#include "core/body/InlineReader.h"
#include "core/body/InlineWriter.h"
#include "core/body/PlainText.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tesserine::app {
namespace {

using Row = std::vector<TableContent::Cell>;

bool isSection(const HTMLNode& node) {
    return node.element() == HTMLElement::thead || node.element() == HTMLElement::tbody;
}

std::optional<TableContent::Cell> cellOf(const HTMLNode& node) {
    const bool isHeader = node.element() == HTMLElement::th;
    const bool spans = node.attribute("colspan") || node.attribute("rowspan");
    if ((!isHeader && node.element() != HTMLElement::td) || spans || !holdsLinesOnly(node)) {
        return {};
    }
    TableContent::Cell cell{.isHeader = isHeader, .attributes = owned(node.attributes())};
    for (const HTMLNode& child : node.children()) {
        cell.html += HTMLSerializer::serialize(child);
    }
    cell.text = PlainText::fromHTML(cell.html);
    cell.readText = cell.text;
    return cell;
}

/// Adds the rows of a table or of a section of it; false when one is not simple.
bool readRows(const HTMLNode& parent, std::vector<Row>& rows) {
    for (const HTMLNode& node : parent.children()) {
        if (isSection(node)) {
            if (!readRows(node, rows)) return false;
            continue;
        }
        if (node.element() != HTMLElement::tr) return false;
        Row row;
        for (const HTMLNode& child : node.children()) {
            auto cell = cellOf(child);
            if (!cell) return false;
            row.push_back(std::move(*cell));
        }
        rows.push_back(std::move(row));
    }
    return true;
}

void writeCell(HTMLSerializer& output, const TableContent::Cell& cell) {
    openElement(output, cell.isHeader ? HTMLElement::th : HTMLElement::td, cell.attributes);
    if (cell.text == cell.readText) {
        output.storedForm(cell.html);
    } else {
        std::string_view rest(cell.text);
        for (bool isFirst = true; isFirst || !rest.empty(); isFirst = false) {
            if (!isFirst) {
                openElement(output, HTMLElement::br);
                output.close();
            }
            const std::string_view line = rest.substr(0, rest.find('\n'));
            output.text(line);
            rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        }
    }
    output.close();
}

}  // namespace

TableContent::TableContent(std::size_t rows, std::size_t columns) : rows_(rows, Row(columns)) {
    for (std::size_t i = 0; rows > 0 && i < columns; ++i) {
        rows_.front()[i].isHeader = true;
    }
}

std::optional<TableContent> TableContent::of(std::string_view html) {
    const HTMLDocument document = HTMLDocument::parse(html);
    const HTMLNode* const table = document.root().firstChild();
    TableContent content;
    const bool isSimple = table != nullptr && table->element() == HTMLElement::table
                          && table->attributes().empty() && readRows(*table, content.rows_);
    if (!isSimple || content.rows_.empty()) return {};
    std::size_t widest = 0;
    for (const Row& row : content.rows_) {
        widest = std::max(widest, row.size());
    }
    if (widest == 0) return {};
    for (Row& row : content.rows_) {
        row.resize(widest);
    }
    return content;
}

void TableContent::setText(std::size_t row, std::size_t column, std::string text) {
    rows_[row][column].text = std::move(text);
}

void TableContent::insertRow(std::size_t row) {
    const auto place = static_cast<std::ptrdiff_t>(std::min(row, rows_.size()));
    rows_.insert(rows_.begin() + place, Row(columnCount()));
}

void TableContent::insertColumn(std::size_t column) {
    for (Row& row : rows_) {
        const bool isHeader = !row.empty() && row.front().isHeader;
        const auto place = static_cast<std::ptrdiff_t>(std::min(column, row.size()));
        row.insert(row.begin() + place, Cell{.isHeader = isHeader});
    }
}

void TableContent::removeRow(std::size_t row) {
    if (row >= rows_.size() || rows_.size() == 1) return;
    rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(row));
}

void TableContent::removeColumn(std::size_t column) {
    if (column >= columnCount() || columnCount() == 1) return;
    for (Row& row : rows_) {
        row.erase(row.begin() + static_cast<std::ptrdiff_t>(column));
    }
}

std::string TableContent::html() const {
    HTMLSerializer output;
    openElement(output, HTMLElement::table);
    for (const Row& row : rows_) {
        openElement(output, HTMLElement::tr);
        for (const Cell& cell : row) {
            writeCell(output, cell);
        }
        output.close();
    }
    output.close();
    return output.html();
}

}  // namespace tesserine::app
