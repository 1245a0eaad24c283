#include "core/export/NotePage.h"

#include "base/Text.h"
#include "core/body/HTMLNode.h"
#include "core/body/HTMLSerializer.h"
#include "core/export/BodyHTML.h"
#include "core/export/PageStyle.h"

#include <array>

namespace tesserine {
namespace {

/// No script, and nothing from the network.
constexpr std::string_view contentPolicy =
    "default-src 'none'; img-src 'self' file: data:; style-src 'unsafe-inline'";

std::string escaped(std::string_view text) {
    std::string html;
    html::appendEscapedText(html, text);
    return html;
}

std::string link(std::string_view address, std::string_view text) {
    std::string html = "<a href=\"";
    html::appendEscapedAttribute(html, address);
    return html + "\">" + escaped(text) + "</a>";
}

bool isWebAddress(std::string_view address) {
    const std::string begin = text::asciiLowercased(address.substr(0, 8));
    return begin.starts_with("http://") || begin.starts_with("https://");
}

std::string metaLine(const std::vector<PageFact>& facts) {
    std::string line;
    for (const PageFact& fact : facts) {
        if (!line.empty()) line += " · ";
        const bool isLink = fact.isAddress && isWebAddress(fact.text);
        line += isLink ? link(fact.text, fact.text) : escaped(fact.text);
    }
    return line;
}

std::string fileList(const std::vector<ListedFile>& files) {
    std::string html;
    for (const ListedFile& file : files) {
        html +=
            "<li>" + (file.address.empty() ? escaped(file.name) : link(file.address, file.name));
        html += " <span class=\"ts-size\">" + sizeText(file.byteCount) + "</span></li>";
    }
    return html.empty() ? html : "<ul class=\"ts-attachments\">" + html + "</ul>\n";
}

/// The body with its addresses as the page writes them. Most have none to change.
std::string bodyFor(const std::string& stored, const AddressMap& addressOf) {
    const auto has = [&stored](std::string_view part) { return stored.find(part) != stored.npos; };
    const bool mayHaveAddress = has("tesserine") || has("<img") || has("data-ts-attachment");
    return mayHaveAddress ? htmlOf(HTMLDocument::parse(stored).root(), addressOf) : stored;
}

}  // namespace

std::string htmlPage(const NotePage& page, const AddressMap& addressOf) {
    return htmlDocument(
        page.title,
        "<article class=\"ts-note\">\n<h1 class=\"ts-title\">" + escaped(page.title)
            + "</h1>\n<p class=\"ts-meta\">" + metaLine(page.facts)
            + "</p>\n<div class=\"ts-body\">" + bodyFor(page.body, addressOf) + "</div>\n"
            + fileList(page.files) + "</article>");
}

std::string htmlDocument(std::string_view title, std::string_view body) {
    std::string html = "<!doctype html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                       "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
                       "<meta http-equiv=\"Content-Security-Policy\" content=\"";
    html.append(contentPolicy).append("\">\n<title>").append(escaped(title));
    html.append("</title>\n<style>").append(pageStyle).append("</style>\n</head>\n<body>\n");
    return html.append(body).append("\n</body>\n</html>\n");
}

std::string sizeText(std::uint64_t bytes) {
    if (bytes < 1'000) return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
    constexpr std::array<std::string_view, 4> units{" kB", " MB", " GB", " TB"};
    std::size_t unit = 0;
    std::uint64_t tenths = bytes / 100;
    for (; tenths >= 10'000 && unit + 1 < units.size(); ++unit) {
        tenths /= 1'000;
    }
    const std::string whole = std::to_string(tenths / 10);
    const bool isSmall = tenths < 100;
    return whole + (isSmall ? "." + std::to_string(tenths % 10) : "") + std::string(units[unit]);
}

}  // namespace tesserine
