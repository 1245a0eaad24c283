#include "core/import/ReferenceRewriter.h"

#include "core/body/HTMLNode.h"

#include <gtest/gtest.h>

namespace tesserine {
namespace {

/// Does what the address says.
class Scripted final : public ReferenceResolver {
public:
    ReferenceChange picture(std::string_view address) override { return change(address); }
    ReferenceChange link(std::string_view address) override { return change(address); }

private:
    static ReferenceChange change(std::string_view address) {
        using Kind = ReferenceChange::Kind;
        if (address == "address") return {Kind::address, "tesserine://note/X"};
        if (address == "text") return {Kind::text};
        if (address == "unsupported") return {Kind::unsupported};
        if (address == "picture") return {Kind::element, R"(<img src="p" width="1" height="2">)"};
        if (address == "file") {
            return {Kind::element, R"(<div data-ts-attachment="F" data-ts-kind="pdf">f.pdf</div>)"};
        }
        return {};
    }
};

TEST(ReferenceRewriter, PicturesAndLinksBecomeWhatTheResolverSays) {
    struct Case {
        const char* before;
        const char* after;
    };
    Scripted resolver;
    for (const auto& [before, after] : {
             Case{R"(<a href="k" title="t">x</a>)", R"(<a href="k" title="t">x</a>)"},
             Case{R"(<a href="address" title="t">x</a>)", R"(<a href="tesserine://note/X">x</a>)"},
             Case{R"(<a href="text">x <b>y</b></a>)", "x <b>y</b>"},
             Case{R"(<a href="unsupported">x</a>)", R"(<span class="ts-unsupported">x</span>)"},
             Case{
                 R"(<a href="file"><b>x</b></a>)",
                 R"(<span data-ts-attachment="F" data-ts-kind="pdf"><b>x</b></span>)"},
             Case{R"(<a href="picture">x</a>y)", R"(<img src="p" width="1" height="2">y)"},
             Case{"<a name=\"n\">x</a>", "<a name=\"n\">x</a>"},
             Case{R"(<img src="k" alt="a">)", R"(<img src="k" alt="a">)"},
             Case{
                 R"(<img src="picture" alt="a" style="s">)",
                 R"(<img src="p" width="1" height="2" alt="a">)"},
             Case{R"(<img src="picture" width="9">)", R"(<img src="p" width="9">)"},
             Case{
                 R"(<img src="file" alt="a">)",
                 R"(<span data-ts-attachment="F" data-ts-kind="pdf">f.pdf</span>)"},
             Case{R"(<img src="address">)", R"(<a href="tesserine://note/X">Image</a>)"},
             Case{R"(<a href="k"><img src="address" alt="a"></a>)", R"(<a href="k">a</a>)"},
             Case{
                 R"(<img src="unsupported" alt=" ">)",
                 R"(<span class="ts-unsupported">Image</span>)"},
             // Items and cells begin with their text.
             Case{"<ul><li> <p>x</p><p>y</p></li></ul>", "<ul><li>x<p>y</p></li></ul>"},
             Case{"<ul><li><div><p>x</p></div></li></ul>", "<ul><li>x</li></ul>"},
             Case{"<ul><li>z<p>x</p></li></ul>", "<ul><li>z<p>x</p></li></ul>"},
             Case{
                 R"(<ul><li><div class="c">x</div></li></ul>)",
                 R"(<ul><li><div class="c">x</div></li></ul>)"},
             // Nobody else's attachments.
             Case{R"(<div data-ts-attachment="X">x</div>)", "<div>x</div>"},
         }) {
        SCOPED_TRACE(before);
        EXPECT_EQ(withResolvedReferences(HTMLDocument::parse(before), resolver), after);
    }
    const char* own = R"(<ul><li><p>x</p></li></ul><div data-ts-attachment="X">x</div>)";
    EXPECT_EQ(withResolvedReferences(HTMLDocument::parse(own), resolver, BodyOrigin::library), own);
}

}  // namespace
}  // namespace tesserine
