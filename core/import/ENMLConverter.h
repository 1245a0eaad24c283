#pragma once

#include "core/body/HTMLNode.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// Knows what the text of a note refers to.
class ENMLReferences {
public:
    ENMLReferences() = default;
    ENMLReferences(const ENMLReferences&) = delete;
    ENMLReferences& operator=(const ENMLReferences&) = delete;
    virtual ~ENMLReferences() = default;

    /// The element, in stored form, that shows the file with this MD5 digest (hexadecimal digits,
    /// in lower case); none when the note has no such file.
    virtual std::optional<std::string> file(std::string_view md5) = 0;
    /// The address of the note that a link with this text leads to; none when it is not known.
    virtual std::optional<std::string> noteAddress(std::string_view linkText) = 0;
    /// What stands in the place of a group of tasks, as HTML; may be nothing.
    virtual std::string taskGroup(std::string_view id) = 0;
};

/// Evernote's markup as HTML that `canonicalBody` takes; see `docs/formats/enex-import.md`. Adds a
/// sentence to `warnings` for each kind of thing that was lost. Linear; no recursion.
std::string htmlFromENML(
    const HTMLDocument& enml,
    ENMLReferences& references,
    bool keepsRemoteImages,
    std::vector<std::string>& warnings);

}  // namespace tesserine
