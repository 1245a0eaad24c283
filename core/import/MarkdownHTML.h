#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// Addresses of links in the HTML that `markdownToHTML` makes from `[[…]]` and `![[…]]`, followed
/// by the target as written. Importers replace them; the sanitizer removes those that are left.
inline constexpr std::string_view wikiLinkScheme = "tesserine-wiki:";
inline constexpr std::string_view wikiEmbedScheme = "tesserine-embed:";

/// How Markdown is read.
struct MarkdownReading {
    bool recognisesTags = false;  ///< collect `#tag` words
    /// For texts that nobody wrote as HTML: line breaks are kept, and "<" begins no element.
    bool isPlainText = false;
};

/// Note-body HTML made from Markdown; not sanitised yet.
struct MarkdownHTML {
    std::string html;
    /// Where the first heading of level 1 stands in `html`, with its tags, unless it is empty or
    /// stands inside another block; `headingBegin == headingEnd` when there is none.
    std::size_t headingBegin = 0;
    std::size_t headingEnd = 0;
    std::vector<std::string> tags;  ///< `#tag` words without "#", in order
    /// Whether there is anything that must be looked at as a tree: raw HTML, pictures, or links
    /// that do not begin with http, https or mailto.
    bool hasReferences = false;

    bool hasHeading() const { return headingEnd > headingBegin; }
    /// The heading's own HTML, between its tags.
    std::string_view heading() const;
    void removeHeading();
};

/// Converts CommonMark with tables, task lists, strikethrough, bare addresses, `[[wiki links]]` and
/// `==marked==` text. `markdown` is clean UTF-8 with lines ending in "\n".
///
/// Task items become checklists; a list of both kinds becomes a list for each run of one kind. A
/// list item begins with its text, not with a paragraph. Raw HTML goes in as it is, except for
/// elements whose end is missing where it would swallow what follows: those become text. Throws
/// `BodyError::tooLarge` when the result is far beyond what a note holds. Any thread.
MarkdownHTML markdownToHTML(std::string_view markdown, const MarkdownReading& reading = {});

}  // namespace tesserine
