#pragma once

#include "core/body/HTMLElements.h"
#include "core/body/HTMLNode.h"

#include <span>
#include <string_view>

namespace tesserine {

/// Takes a tree as a properly nested series of events, so that a body can be rewritten without ever
/// being held as nodes. What is passed is valid during the call only, unless the sender says more.
class HTMLSink {
public:
    HTMLSink() = default;
    HTMLSink(const HTMLSink&) = delete;
    HTMLSink& operator=(const HTMLSink&) = delete;
    virtual ~HTMLSink() = default;

    /// An element begins. `name` is in lower case; `element` is what it stands for.
    virtual void open(
        HTMLElement element, std::string_view name, std::span<const HTMLAttribute> attributes) = 0;
    /// The innermost open element ends. Void elements end as well.
    virtual void close() = 0;
    virtual void text(std::string_view text) = 0;
    virtual void comment(std::string_view text) = 0;
};

}  // namespace tesserine
