#pragma once

#include "base/Encoding.h"
#include "core/body/HTMLNode.h"
#include "core/import/ImportTypes.h"
#include "core/import/MarkdownProperties.h"
#include "core/import/SourceFolder.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tesserine {

/// Which program wrote the files of an import.
struct FileDialect {
    const char* format;  ///< as reports name it
    bool (*isNote)(std::string_view filename);
};
/// Markdown and text files.
extern const FileDialect markdownFiles;
/// The same, and HTML files: what Apple Notes exports.
extern const FileDialect appleNotesFiles;

/// One file as a note, before it knows the library.
struct MarkdownNote {
    std::string title;
    Instant createdAt;
    Instant updatedAt;
    MarkdownProperties properties;
    std::string html;  ///< without the heading that became the title; not sanitised
    /// The same as a tree; only when it holds references that must be resolved.
    std::optional<HTMLDocument> body;
    std::string fingerprint;
    Bytes source;  ///< the file as it is
    std::vector<std::string> warnings;
};

/// Reads the file. Throws `FileError` and `BodyError`, whose sentences tell why it is no note.
MarkdownNote readMarkdownNote(
    const FileDialect& dialect,
    const SourceFolder& folder,
    const SourceFile& file,
    const ImportEnvironment& environment,
    const ImportOptions& options);

}  // namespace tesserine
