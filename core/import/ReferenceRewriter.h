#pragma once

#include <string>
#include <string_view>

namespace tesserine {

class HTMLDocument;

/// What becomes of a picture or a link.
struct ReferenceChange {
    enum class Kind {
        keep,         ///< nothing changes
        address,      ///< a link to `value`, for a picture with its text
        element,      ///< the element `value`, as `AttachmentService::bodyElement` makes it
        text,         ///< only its text stays
        unsupported,  ///< its text stays, marked as something that could not be taken over
    };
    Kind kind = Kind::keep;
    std::string value{};
};

/// Decides about the pictures and links of one body, in the order in which they stand there.
class ReferenceResolver {
public:
    ReferenceResolver() = default;
    ReferenceResolver(const ReferenceResolver&) = delete;
    ReferenceResolver& operator=(const ReferenceResolver&) = delete;
    virtual ~ReferenceResolver() = default;

    virtual ReferenceChange picture(std::string_view address) = 0;
    virtual ReferenceChange link(std::string_view address) = 0;
};

enum class BodyOrigin {
    source,   ///< somebody else's
    library,  ///< in canonical form
};

/// The body with every picture and link as `resolver` decides. In one from a source, a paragraph or
/// `div` at the beginning of a list item or a cell is also replaced by what it holds, so that the
/// item begins with its text, and references to attachments are removed. Linear; no recursion.
std::string withResolvedReferences(
    const HTMLDocument& body, ReferenceResolver& resolver, BodyOrigin origin = BodyOrigin::source);

}  // namespace tesserine
