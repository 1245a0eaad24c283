#include "core/export/IndexPage.h"

#include "core/body/HTMLSerializer.h"
#include "core/export/NotePage.h"

namespace tesserine {

void IndexGroup::add(const IndexEntry& entry) {
    lines_ += "<li><a href=\"";
    html::appendEscapedAttribute(lines_, entry.address);
    lines_ += "\">";
    html::appendEscapedText(lines_, entry.title);
    lines_ += "</a> <span class=\"ts-date\">";
    html::appendEscapedText(lines_, entry.date);
    for (const std::string& tag : entry.tags) {
        lines_ += " · ";
        html::appendEscapedText(lines_, tag);
    }
    lines_ += "</span></li>\n";
}

std::string IndexGroup::html() const {
    if (lines_.empty()) return {};
    std::string html = "<h2>";
    html::appendEscapedText(html, heading_);
    return html.append("</h2>\n<ul>\n").append(lines_).append("</ul>\n");
}

std::string indexPage(const std::vector<IndexGroup>& groups) {
    std::string html = "<main class=\"ts-index\">\n<h1 class=\"ts-title\">Tesserine Export</h1>\n";
    for (const IndexGroup& group : groups) {
        html += group.html();
    }
    return htmlDocument("Tesserine Export", html + "</main>");
}

}  // namespace tesserine
