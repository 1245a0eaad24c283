#include "core/body/AttributePolicy.h"
#include "core/body/CanonicalBody.h"
#include "core/body/HTMLNode.h"
#include "core/body/HTMLSerializer.h"
#include "core/body/PlainText.h"
#include "core/body/RandomBodyFixture.h"
#include "core/body/Sanitizer.h"
#include "core/body/SanitizerTables.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {
namespace {

using namespace std::string_literals;
using test::BodyMaker;

/// Reads the regular language of stored bodies; what does not belong to it is the result.
class Grammar {
public:
    static std::string fault(std::string_view html) { return Grammar(html).read(); }

private:
    explicit Grammar(std::string_view html) : rest_(html) {}

    std::string read() {
        std::string fault;
        while (!rest_.empty() && fault.empty()) {
            fault = rest_.starts_with('<') ? readTag() : readText("<");
        }
        if (fault.empty() && !open_.empty()) fault = "unclosed " + open_.back();
        return fault;
    }

    std::string readTag() {
        const std::size_t size = rest_.find('>');
        if (rest_.starts_with("</")) {
            const std::string name(rest_.substr(2, size - 2));
            if (open_.empty() || open_.back() != name) return "stray end of " + name;
            open_.pop_back();
            rest_.remove_prefix(size + 1);
            return {};
        }
        const std::string name(rest_.substr(1, rest_.find_first_of(" >") - 1));
        static const std::set<std::string_view> keepSet(html::keepSet.begin(), html::keepSet.end());
        if (!keepSet.contains(name)) return "element " + name;
        rest_.remove_prefix(1 + name.size());
        while (rest_.starts_with(' ')) {
            const std::string attribute(rest_.substr(1, rest_.find('=') - 1));
            static const std::set<std::string_view> names(
                KeptAttributes::names.begin(), KeptAttributes::names.end());
            if (!names.contains(attribute)) return "attribute " + attribute;
            rest_.remove_prefix(attribute.size() + 2);
            if (!rest_.starts_with('"')) return "unquoted " + attribute;
            rest_.remove_prefix(1);
            std::string fault = readText("\"");
            if (!fault.empty()) return fault;
            if (!rest_.starts_with('"')) return "unended " + attribute;
            rest_.remove_prefix(1);
        }
        if (!rest_.starts_with('>')) return "unended tag of " + name;
        rest_.remove_prefix(1);
        if (name != "br" && name != "hr" && name != "img") open_.push_back(name);
        return {};
    }

    /// Reads up to `end`, which a value or a text cannot hold.
    std::string readText(std::string_view end) {
        const std::string_view text = rest_.substr(0, rest_.find(end));
        rest_.remove_prefix(text.size());
        if (text.find('<') != std::string_view::npos) return "raw <";
        if (end == "<" && text.find('>') != std::string_view::npos) return "raw >";
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (static_cast<unsigned char>(text[i]) < 0x20 && text[i] != '\t' && text[i] != '\n') {
                return "control character";
            }
            if (text[i] != '&') continue;
            const std::string_view tail = text.substr(i);
            const auto begins = [&](std::string_view word) { return tail.starts_with(word); };
            if (!begins("&amp;") && !begins("&lt;") && !begins("&gt;") && !begins("&nbsp;")
                && !begins("&quot;")) {
                return "raw &";
            }
        }
        return {};
    }

    std::string_view rest_;
    std::vector<std::string> open_;
};

/// Everything that holds of a stored form; `source` is what it was made of.
void expectStored(
    const std::string& html, const std::string& plainText, const std::string& source) {
    const CanonicalBody again = canonicalBody(html);
    ASSERT_EQ(again.html, html) << "made of " << source;
    ASSERT_EQ(again.plainText, plainText) << "made of " << source;
    ASSERT_TRUE(again.report.droppedElements.empty() && again.report.unwrappedElements.empty())
        << html;
    ASSERT_TRUE(again.report.droppedAttributes.empty()) << html;
    const HTMLDocument document = HTMLDocument::parse(html);
    ASSERT_EQ(HTMLSerializer::serialize(document.root()), html) << "made of " << source;
    ASSERT_EQ(PlainText::fromNode(document.root()), plainText) << html;
    ASSERT_EQ(Grammar::fault(html), "") << html;
}

TEST(StoredForm, IsReachedInOneStepFromAnyText) {
    BodyMaker maker(1);
    for (int i = 0; i < 6'000 && !testing::Test::HasFatalFailure(); ++i) {
        const std::string source = i % 3 == 0 ? maker.mutated(maker.soup()) : maker.soup();
        const CanonicalBody body = canonicalBody(source);
        expectStored(body.html, body.plainText, source);
    }
}

TEST(StoredForm, LosesNothingMoreOfASanitizedTree) {
    BodyMaker maker(2);
    for (int i = 0; i < 4'000 && !testing::Test::HasFatalFailure(); ++i) {
        const HTMLDocument document = maker.tree();
        const std::string html = sanitize(document.root()).html;
        ASSERT_EQ(Grammar::fault(html), "");
        const auto [stored, plainText, report] = canonicalBody(html);
        ASSERT_TRUE(report.droppedElements.empty() && report.unwrappedElements.empty()) << html;
        ASSERT_TRUE(report.droppedAttributes.empty()) << html;
        expectStored(stored, plainText, html);
    }
}

TEST(StoredForm, StaysReachableAfterDamage) {
    BodyMaker maker(3);
    for (int i = 0; i < 3'000 && !testing::Test::HasFatalFailure(); ++i) {
        const std::string source = maker.mutated(canonicalBody(maker.soup()).html);
        const CanonicalBody body = canonicalBody(source);
        expectStored(body.html, body.plainText, source);
    }
}

TEST(StoredForm, IsTheSameWithAndWithoutATreeInBetween) {
    BodyMaker maker(4);
    int compared = 0;
    for (int i = 0; i < 3'000; ++i) {
        const std::string source = maker.soup();
        const CanonicalBody direct = canonicalBody(source);
        const SanitizationResult overTree = sanitize(HTMLDocument::parse(source).root());
        ASSERT_EQ(direct.report.droppedElements, overTree.report.droppedElements) << source;
        ASSERT_EQ(direct.report.droppedAttributes, overTree.report.droppedAttributes) << source;
        if (!isCanonical(overTree.html)) continue;  // a block that was renamed in a paragraph, …
        ASSERT_EQ(direct.html, overTree.html) << source;
        ASSERT_EQ(direct.plainText, overTree.plainText) << source;
        ++compared;
    }
    EXPECT_GT(compared, 2'000);
}

TEST(StoredForm, OfTheProgramsOwnBodiesIsTheBody) {
    for (const std::string& html : {
             "<h2>Attendees</h2><p></p><h2>Agenda</h2><p></p><h2>Action Items</h2>"
             "<ul class=\"ts-checklist\"><li data-checked=\"false\"></li></ul>"s,
             R"(<ul class="ts-checklist"><li data-checked="false"></li></ul>)"s,
             "<p>a</p><div class=\"ts-encrypted\" data-ts-cipher=\"AXr/+w==\">"
             "🔒 Encrypted text</div><p>b</p>"s,
             "<p><img src=\"tesserine-attachment://0A1B2C3D-0000-4000-8000-00000000000F\" "
             "width=\"640\" height=\"480\"></p>"s,
             "<div data-ts-attachment=\"0A1B2C3D-0000-4000-8000-00000000000F\" "
             "data-ts-kind=\"pdf\">Plan &amp; budget.pdf</div>"s,
             "<pre>\n\n  two line breaks, one of which the reader drops</pre>"s,
             ""s,
         }) {
        SCOPED_TRACE(html);
        const CanonicalBody body = canonicalBody(html);
        EXPECT_EQ(body.html, html);
        EXPECT_TRUE(isCanonical(html));
        expectStored(html, body.plainText, html);
    }
    EXPECT_FALSE(isCanonical("<b>x</b>"));
    EXPECT_FALSE(isCanonical("\xFF"));
}

}  // namespace
}  // namespace tesserine
