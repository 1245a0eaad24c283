#pragma once

#include "core/body/HTMLNode.h"
#include "core/export/MarkdownOptions.h"

#include <optional>
#include <string>

namespace tesserine::markdown {

/// A table as rows between vertical bars, its first row as the head; none for one that has no such
/// form: cells over several rows or columns, rows of different lengths, blocks in cells, a caption.
std::optional<std::string> tableOf(const HTMLNode& table, const MarkdownOptions& options);

}  // namespace tesserine::markdown
