#pragma once

#include "core/body/HTMLNode.h"
#include "core/export/MarkdownEscapes.h"
#include "core/export/MarkdownOptions.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine::markdown {

/// Writes a stretch of inline nodes as one paragraph, heading or cell of Markdown.
///
/// Marks such as "**" only work where the characters around them allow it (CommonMark,
/// section 6.2): elsewhere the HTML element is written. So the marks are collected first and chosen
/// when all their surroundings are known.
class InlineMarkdown {
public:
    enum class Place : std::uint8_t {
        paragraph,
        heading,  ///< on one line
        cell,     ///< on one line, with vertical bars escaped
    };

    /// `options` must outlive it.
    InlineMarkdown(const MarkdownOptions& options, Place place)
        : options_(options), place_(place), texts_(1) {}

    void add(const HTMLNode& node);
    /// The Markdown; empty for white space. To be called once.
    std::string take();

private:
    /// Something between two texts.
    struct Mark {
        enum class Kind : std::uint8_t { verbatim, open, close, lineBreak };

        Kind kind = Kind::verbatim;
        HTMLElement element = HTMLElement::other;  // of what opens and closes
        std::size_t partner = 0;
        std::string written;  // of an open or close mark, once it is chosen
        bool isChosen = false;
    };

    void addElement(const HTMLNode& node);
    void addChildren(const HTMLNode& node);
    void addMarked(const HTMLNode& node);
    void addVerbatim(std::string written);
    void addTagged(const HTMLNode& node);
    void addCode(const HTMLNode& node);
    void addLink(const HTMLNode& node);
    void addFile(const HTMLNode& node, std::string_view attachment);
    void addImage(const HTMLNode& node);
    void addMark(Mark mark);

    void moveSpacesOut();
    void dropEmptyMarks();
    bool isEmpty(std::size_t open) const;
    void chooseMarks();
    void choose(std::size_t open);
    bool works(std::size_t open, std::string_view mark) const;
    char32_t before(std::size_t mark) const;
    char32_t after(std::size_t mark) const;
    bool isBesideMark(std::size_t mark, char character) const;

    std::size_t shownMarks() const;
    std::string written();
    std::string withoutOuterSpaces(const std::string& output) const;
    void writeText(std::string& output, std::size_t index) const;
    void writeMark(std::string& output, std::size_t index) const;
    bool isCell() const { return place_ == Place::cell; }

    const MarkdownOptions& options_;
    const Place place_;
    /// Text i stands before mark i; the last one behind all marks.
    std::vector<std::string> texts_;
    std::vector<Mark> marks_;
    bool hasTildes_ = false;  // more than one
    bool hasLinks_ = false;
    std::size_t shownMarks_ = 0;
};

/// The text of all nodes below `node`.
std::string textOf(const HTMLNode& node);

}  // namespace tesserine::markdown
