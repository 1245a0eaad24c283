#pragma once

#include "core/body/HTMLElements.h"
#include "core/body/HTMLNode.h"
#include "core/body/SanitizerTables.h"
#include "tests/support/SeededRandom.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine::test {

inline constexpr std::array<std::string_view, 40> bodyTexts{"x",         " ",
                                                            "\n",        "a b",
                                                            " a ",       "\t\n ",
                                                            "a\n\nb",    "&amp;",
                                                            "&lt;p&gt;", "&nbsp;",
                                                            "\u00A0 é",  "a&",
                                                            "&#0;",      "&#13;",
                                                            "&#10;",     "&#x80;",
                                                            "&ampx",     "&notin;",
                                                            "<",         "< b",
                                                            "<<p",       "</",
                                                            "<!",        "]]>",
                                                            "🔒",         "\x01",
                                                            "\x0C",      "\r\n",
                                                            "\r",        "--",
                                                            "-->",       "\"",
                                                            "'",         "&NotEqualTilde;",
                                                            "=",         "  two  ",
                                                            "&#1;",      "\u200B",
                                                            "\u2028",    "&#xD;&#xA;"};

inline constexpr std::array<std::string_view, 46> bodyAttributes{
    "class=ts-checklist",
    "class='ts-encrypted'",
    "class=\"x ts-unsupported ts-checklist\"",
    "class='ts-encrypted a'",
    "data-ts-cipher='QUJD'",
    "data-ts-cipher='\"><b>'",
    "data-checked",
    "data-checked=true",
    "data-checked=TRUE",
    "href='https://e.org/?a=1&b=2'",
    "href=' HTTP://E '",
    "href='java&#10;script:x'",
    "href='\x01javascript:x'",
    "href=mailto:a@b",
    "href='tel:'",
    "href='TESSERINE://note/0a1b2c3d-0000-4000-8000-00000000000f'",
    "href='#top'",
    "title='a \"b\" <c>'",
    "title='&#9;&#13;&#10;&nbsp;'",
    "src='http://e.org/a.png'",
    "src='data:image/PNG;base64,QUJD'",
    "src='data:image/png;base64, QU JD'",
    "src='data:text/html,x'",
    "src='tesserine-attachment://0a1b2c3d-0000-4000-8000-00000000000f'",
    "alt='  an  image '",
    "alt",
    "width=10",
    "width='010'",
    "height=10001",
    "start=-3",
    "type=a",
    "type=x",
    "colspan=2",
    "rowspan=0",
    "dir=RTL",
    "lang=en-GB",
    "lang='e n'",
    "style='color:RED;background-color:#ABC'",
    "style='text-align: Center !important'",
    "style='color:url(javascript:x)'",
    "onclick=alert(1)",
    "data-ts-attachment='0a1b2c3d-0000-4000-8000-00000000000f'",
    "data-ts-kind=pdf",
    "data-ts-kind=exe",
    "/",
    "=x"};

/// Makes bodies of every kind, well-formed or not.
class BodyMaker {
public:
    explicit BodyMaker(std::uint64_t seed) : random_(seed) {}

    std::string soup() {
        std::string html;
        for (std::size_t i = 0, count = 1 + below(50); i < count; ++i) {
            html += piece();
        }
        return html;
    }

    /// Lines of code, with marks that begin and end anywhere in them.
    std::string code() {
        constexpr std::array<std::string_view, 10> pieces{
            "a", "\n", "\n", " ", "<code>", "</code>", "<em>", "</em>", "<mark>", "</mark>"};
        std::string html = "<pre>";
        for (std::size_t i = 0, count = 1 + below(16); i < count; ++i) {
            html += pieces[below(pieces.size())];
        }
        return html + "</pre>";
    }

    /// `html` with some of its bytes changed, removed or doubled.
    std::string mutated(std::string html) {
        constexpr std::string_view bytes = "<>/&;\"'= \n!-abp\x01";
        for (std::size_t i = 0, count = 1 + below(6); i < count && !html.empty(); ++i) {
            const std::size_t place = below(html.size());
            switch (below(3)) {
            case 0: html[place] = bytes[below(bytes.size())]; break;
            case 1: html.erase(place, 1 + below(4)); break;
            default: html.insert(place, html.substr(below(html.size()), below(20))); break;
            }
        }
        return html;
    }

    /// A tree in which anything stands in anything.
    HTMLDocument tree() {
        HTMLDocument document;
        std::vector<HTMLNode*> path{&document.root()};
        for (std::size_t i = 0, count = 1 + below(120); i < count; ++i) {
            const std::size_t kind = below(8);
            if (kind < 2) {
                document.appendText(*path.back(), bodyTexts[below(bodyTexts.size())]);
            } else if (kind < 6) {
                path.push_back(&document.appendElement(*path.back(), name(), attributeList()));
            } else if (path.size() > 1) {
                path.pop_back();
            }
        }
        return document;
    }

private:
    std::size_t below(std::size_t bound) { return static_cast<std::size_t>(random_.below(bound)); }

    /// Mostly elements that are kept: they meet one another more often.
    std::string_view name() {
        if (below(10) == 0) return "x-unknown";
        if (below(4) == 0) return html::elementNames[1 + below(html::elementCount - 1)];
        return html::keepSet[below(html::keepSet.size())];
    }

    std::string piece() {
        switch (below(10)) {
        case 0:
        case 1:
        case 2: return std::string(bodyTexts[below(bodyTexts.size())]);
        case 3:
        case 4:
        case 5: return "</" + std::string(name()) + ">";
        case 6:
            return below(4) == 0 ? "<!--" + std::string(bodyTexts[below(bodyTexts.size())]) + "-->"
                                 : "";
        default: return startTag();
        }
    }

    std::string startTag() {
        std::string tag = "<" + std::string(name());
        while (below(3) == 0) {
            tag.append(" ").append(bodyAttributes[below(bodyAttributes.size())]);
        }
        return tag + ">";
    }

    std::vector<HTMLAttribute> attributeList() {
        std::vector<HTMLAttribute> list;
        if (below(3) > 0) return list;
        const std::string_view written = bodyAttributes[below(bodyAttributes.size())];
        const std::size_t equals = written.find('=');
        if (equals == 0 || equals == std::string_view::npos) return list;
        std::string_view value = written.substr(equals + 1);
        if (value.starts_with('\'')) value = value.substr(1, value.size() - 2);
        list.push_back({written.substr(0, equals), value});
        return list;
    }

    test::SeededRandom random_;
};

}  // namespace tesserine::test
