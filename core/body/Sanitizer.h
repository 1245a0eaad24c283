#pragma once

#include "core/body/HTMLNode.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace tesserine {

/// What a body may keep. The defaults are the library's own.
struct SanitizerOptions {
    /// Whether images with remote addresses are kept.
    bool allowRemoteImages = true;
    /// Whether images whose address holds the data itself ("data:") are kept.
    bool allowDataURIImages = true;
    /// The deepest element that is kept, the root's children being 1. Below it only text stays.
    int maximumDepth = 64;
};

/// What was removed from a body. Names are in lower case.
struct SanitizationReport {
    using Counts = std::map<std::string, std::size_t, std::less<>>;

    Counts droppedElements;    ///< left out with their content
    Counts unwrappedElements;  ///< removed while their children stayed
    Counts droppedAttributes;
    /// Remote image addresses in order of appearance, kept or not.
    std::vector<std::string> externalImageURLs;
    /// Placeholders written for what could not be kept.
    std::size_t unsupportedPlaceholders = 0;
};

struct SanitizationResult {
    /// Elements, attributes and text as `docs/formats/note-body.md` says.
    std::string html;
    /// The text of what `html` holds.
    std::string plainText;
    SanitizationReport report;
};

/// Writes what a body may hold of the tree below `root`, every element where the tree has it. Never
/// fails; time linear in the tree, no recursion.
///
/// A tree may nest what HTML cannot (a paragraph in a paragraph), and so read back as another one:
/// the library stores what `canonicalBody` makes of a text, which is stable.
SanitizationResult sanitize(const HTMLNode& root, const SanitizerOptions& options = {});

}  // namespace tesserine
