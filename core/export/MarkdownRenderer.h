#pragma once

#include "core/export/MarkdownOptions.h"

#include <string>
#include <string_view>

namespace tesserine {

/// The stored body `html` as Markdown: CommonMark with GitHub's tables, task lists and
/// strikethrough, lines ending in "\n". What Markdown has no form for (definition lists, figures,
/// locked passages, tables with joined cells, colours, …) stays HTML, which its readers let
/// through. Time linear in the body, times that of `readBack`. Any thread.
std::string markdownOf(std::string_view html, const MarkdownOptions& options = {});

}  // namespace tesserine
