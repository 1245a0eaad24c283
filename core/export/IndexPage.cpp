#include "core/export/IndexPage.h"

#include "core/body/HTMLSerializer.h"
#include "core/export/NotePage.h"

namespace tesserine {
namespace {

void appendEntry(std::string& html, const IndexEntry& entry) {
    html += "<li><a href=\"";
    html::appendEscapedAttribute(html, entry.address);
    html += "\">";
    html::appendEscapedText(html, entry.title);
    html += "</a> <span class=\"ts-date\">";
    html::appendEscapedText(html, entry.date);
    for (const std::string& tag : entry.tags) {
        html += " · ";
        html::appendEscapedText(html, tag);
    }
    html += "</span></li>\n";
}

}  // namespace

std::string indexPage(const std::vector<IndexGroup>& groups) {
    std::string html = "<main class=\"ts-index\">\n<h1 class=\"ts-title\">Tesserine Export</h1>\n";
    for (const IndexGroup& group : groups) {
        if (group.entries.empty()) continue;
        html += "<h2>";
        html::appendEscapedText(html, group.heading);
        html += "</h2>\n<ul>\n";
        for (const IndexEntry& entry : group.entries) {
            appendEntry(html, entry);
        }
        html += "</ul>\n";
    }
    return htmlDocument("Tesserine Export", html + "</main>");
}

}  // namespace tesserine
