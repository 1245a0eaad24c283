#include "core/import/ENMLDocument.h"

#include "base/Text.h"

#include <string>

namespace tesserine {
namespace {

/// Where the tag that begins at `begin` ends: behind its ">", which may stand in quotation marks
/// before that.
std::size_t endOfTag(std::string_view html, std::size_t begin) {
    if (html.substr(begin).starts_with("<!--")) {
        const std::size_t end = html.find("-->", begin);
        return end == std::string_view::npos ? html.size() : end + 3;
    }
    char quote = 0;
    for (std::size_t i = begin; i < html.size(); ++i) {
        const char c = html[i];
        if (quote != 0) {
            if (c == quote) quote = 0;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '>') {
            return i + 1;
        }
    }
    return html.size();
}

/// XML lets any element be written as "<name/>"; HTML does not.
std::string withEndTags(std::string_view enml) {
    std::string html;
    html.reserve(enml.size() + enml.size() / 16);
    std::size_t done = 0;
    for (std::size_t at = enml.find('<'); at != std::string_view::npos; at = enml.find('<', done)) {
        const std::size_t end = endOfTag(enml, at);
        const std::string_view tag = enml.substr(at, end - at);
        html += enml.substr(done, end - done);
        done = end;
        if (!tag.ends_with("/>")) continue;
        const std::string_view inside = tag.substr(1, tag.size() - 3);
        const std::string name =
            text::asciiLowercased(inside.substr(0, inside.find_first_of(" \t\r\n")));
        const HTMLElement element = html::elementNamed(name);
        if (element == HTMLElement::other || html::has(element, html::isVoid)) continue;
        html.resize(html.size() - 2);
        html += "></" + name + ">";
    }
    html += enml.substr(done);
    return html;
}

}  // namespace

HTMLDocument parsedENML(std::string_view enml) {
    // What a document type declares is of no use here, and may be long.
    const std::size_t root = enml.find("<en-note");
    if (root != std::string_view::npos) enml.remove_prefix(root);
    return HTMLDocument::parse(withEndTags(enml));
}

}  // namespace tesserine
