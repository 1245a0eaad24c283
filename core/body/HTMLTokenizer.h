#pragma once

#include "core/body/HTMLElements.h"
#include "core/body/HTMLNode.h"

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// One piece of HTML source. Its texts lie in the source or in the tokenizer's memory and stay
/// valid as long as both; `attributes` only until the next token.
struct HTMLToken {
    enum class Kind : std::uint8_t { text, startTag, endTag, comment, doctype };

    Kind kind = Kind::text;
    /// The decoded text, the lower-case tag name, or what a comment or doctype says.
    std::string_view text;
    /// What a tag's name stands for.
    HTMLElement element = HTMLElement::other;
    /// Of a start tag: the first `HTMLTokenizer::maximumAttributes` that are not repeated.
    std::span<const HTMLAttribute> attributes;
    /// Whether a start tag ended in "/>".
    bool isSelfClosing = false;
};

/// Cuts HTML source into tokens as browsers do (WHATWG HTML, section 13.2.5). Nothing is an error;
/// the whole takes linear time. Not synchronised.
class HTMLTokenizer {
public:
    static constexpr std::size_t maximumAttributes = 64;

    /// `html` must outlive the tokenizer, without U+0000 and with LF only (`normalizeNewlines`).
    explicit HTMLTokenizer(std::string_view html) : html_(html) {}

    /// Reads the next token into `token` and tells whether there was one.
    bool next(HTMLToken& token);
    /// From here to the end tag of `element` all is text. For the reader of tokens to say, after a
    /// start tag, because it knows what the tag stands in.
    void readRawText(HTMLElement element) { rawText_ = element; }

private:
    bool readText(HTMLToken& token);
    bool readRawTextInto(HTMLToken& token);
    bool readMarkup(HTMLToken& token);
    bool readTag(HTMLToken& token);
    bool readAttributes(HTMLToken& token);
    bool readAttribute(bool isKept);
    void readComment(HTMLToken& token);
    void readBogusComment(HTMLToken& token);
    bool readDeclaration(HTMLToken& token);
    void skipSpaces();
    std::string_view decoded(std::string_view raw, bool isAttribute);
    std::string_view lowercased(std::string_view name);
    std::string_view kept(std::string_view text);

    std::string_view html_;
    std::size_t position_ = 0;
    HTMLElement rawText_ = HTMLElement::other;
    std::vector<HTMLAttribute> attributes_;
    std::string scratch_;
    std::pmr::monotonic_buffer_resource memory_;
};

/// Turns CR LF and CR into LF and removes U+0000, as the tokenizer wants it.
void normalizeNewlines(std::string& html);

}  // namespace tesserine
