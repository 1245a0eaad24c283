#pragma once

#include <string>
#include <string_view>

/// Raw HTML inside Markdown, before any parser sees it.
namespace tesserine::rawhtml {

/// `block`, a whole piece of HTML, made harmless to what follows it: from the first tag, comment or
/// raw-text element (such as `title`) on whose end is missing, "<" becomes "&lt;". Linear.
std::string closed(std::string_view block);

/// The name of a raw-text element, inside which a parser sees no tags, that the tag `tag` begins;
/// empty for other tags.
std::string rawTextElement(std::string_view tag);
/// Whether `tag` ends the element `name`.
bool isEndTag(std::string_view tag, std::string_view name);

/// Appends `text` with "&", "<" and ">" as references.
void appendEscaped(std::string& html, std::string_view text);
/// Appends `text` fit to stand between double quotation marks.
void appendAttributeEscaped(std::string& html, std::string_view text);

}  // namespace tesserine::rawhtml
