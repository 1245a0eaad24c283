#pragma once

#include "core/body/HTMLNode.h"
#include "core/body/HTMLSink.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// Writes a tree as HTML in one regular form: lower-case names, attributes in the order given and
/// always in double quotation marks, nothing added between tags, no comments. Text of any element,
/// script included, is escaped as text. A body written so is read back as the same tree if it is in
/// stored form; see `docs/formats/note-body.md`.
class HTMLSerializer final : public HTMLSink {
public:
    void open(HTMLElement element, std::string_view name, std::span<const HTMLAttribute> attributes)
        override;
    void close() override;
    void text(std::string_view text) override;
    void comment(std::string_view text) override;

    /// Adds a piece that is in stored form already.
    void storedForm(std::string_view html);

    /// What was written so far.
    const std::string& html() const noexcept { return html_; }

    /// The tree below `root`, and `root` itself unless it is a fragment.
    static std::string serialize(const HTMLNode& root);

private:
    struct Open {
        HTMLElement element;
        std::string name;
    };

    std::string html_;
    std::vector<Open> open_;
    bool isAfterPre_ = false;
};

namespace html {

/// Appends `text` as text: "&", "<", ">" and U+00A0 become references.
void appendEscapedText(std::string& output, std::string_view text);
/// Appends `value` as it stands between double quotation marks: "&", the mark, "<" and U+00A0
/// become references.
void appendEscapedAttribute(std::string& output, std::string_view value);

}  // namespace html
}  // namespace tesserine
