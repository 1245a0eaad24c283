#include "core/import/ReferenceRewriter.h"

#include "base/Text.h"
#include "core/body/HTMLNode.h"
#include "core/body/HTMLSerializer.h"

#include <algorithm>
#include <array>
#include <vector>

namespace tesserine {
namespace {

using Attributes = std::vector<HTMLAttribute>;

bool isItemOrCell(const HTMLNode* node) {
    if (node == nullptr) return false;
    const HTMLElement element = node->element();
    return element == HTMLElement::li || element == HTMLElement::td || element == HTMLElement::th;
}

/// Whether only white space and comments, and not many, stand before `node`.
bool isFirstInParent(const HTMLNode& node) {
    constexpr int mostBefore = 8;
    int before = 0;
    for (const HTMLNode& sibling : node.parent()->children()) {
        if (&sibling == &node) return true;
        const bool isBlank =
            sibling.kind() == HTMLNode::Kind::text && text::isBlank(sibling.text());
        const bool isNothing = isBlank || sibling.kind() == HTMLNode::Kind::comment;
        if (!isNothing || ++before == mostBefore) return false;
    }
    return false;
}

class Rewriter {
public:
    Rewriter(ReferenceResolver& resolver, BodyOrigin origin)
        : resolver_(resolver), isForeign_(origin == BodyOrigin::source) {}

    void enter(const HTMLNode& node);
    void leave(const HTMLNode& node);
    const std::string& html() const { return written_.html(); }

private:
    /// What was written for an element that is open.
    enum class Open {
        element,
        nothing,         ///< its tags are left out
        leadingNothing,  ///< the same, at the beginning of an item
        dropped,         ///< so is what it holds
    };

    Open open(const HTMLNode& node);
    Open openAsIs(const HTMLNode& node);
    Open openLink(const HTMLNode& link);
    void openSpan(std::string_view attribute, std::string_view value);
    void writePicture(const HTMLNode& picture);
    void writeElement(const std::string& html, const Attributes& more, bool hasOwnText);
    bool isLeadingBlock(const HTMLNode& node) const;
    bool isLeadingSpace(const HTMLNode& text) const;
    bool isInItem(const HTMLNode& node) const;

    ReferenceResolver& resolver_;
    const bool isForeign_;
    HTMLSerializer written_;
    std::vector<Open> open_;
    std::size_t dropped_ = 0;
    std::size_t links_ = 0;  // how many written links are open
};

void Rewriter::enter(const HTMLNode& node) {
    if (node.kind() == HTMLNode::Kind::text && dropped_ == 0 && !isLeadingSpace(node)) {
        written_.text(node.text());
    }
    if (node.kind() != HTMLNode::Kind::element) return;
    const Open opened = dropped_ > 0 ? Open::dropped : open(node);
    if (opened == Open::dropped) ++dropped_;
    open_.push_back(opened);
}

void Rewriter::leave(const HTMLNode& node) {
    if (node.kind() != HTMLNode::Kind::element) return;
    const Open opened = open_.back();
    open_.pop_back();
    if (opened == Open::dropped) --dropped_;
    if (opened != Open::element) return;
    if (node.element() == HTMLElement::a) --links_;
    written_.close();
}

Rewriter::Open Rewriter::open(const HTMLNode& node) {
    if (node.element() == HTMLElement::img) {
        writePicture(node);
        return Open::dropped;
    }
    if (node.element() == HTMLElement::a) return openLink(node);
    return isLeadingBlock(node) ? Open::leadingNothing : openAsIs(node);
}

Rewriter::Open Rewriter::openAsIs(const HTMLNode& node) {
    Attributes attributes(node.attributes().begin(), node.attributes().end());
    std::erase_if(attributes, [&](const HTMLAttribute& attribute) {
        return isForeign_ && attribute.name == "data-ts-attachment";
    });
    written_.open(node.element(), node.name(), attributes);
    return Open::element;
}

Rewriter::Open Rewriter::openLink(const HTMLNode& link) {
    const auto address = link.attribute("href");
    const ReferenceChange change = address ? resolver_.link(*address) : ReferenceChange{};
    switch (change.kind) {
    case ReferenceChange::Kind::keep: openAsIs(link); break;
    case ReferenceChange::Kind::text: return Open::nothing;
    case ReferenceChange::Kind::unsupported: openSpan("class", "ts-unsupported"); break;
    case ReferenceChange::Kind::address: {
        const std::array<HTMLAttribute, 1> attributes{{{"href", change.value}}};
        written_.open(HTMLElement::a, "a", attributes);
        break;
    }
    case ReferenceChange::Kind::element: {
        writeElement(change.value, {}, false);
        if (!change.value.starts_with("<img")) break;
        written_.close();
        return Open::dropped;
    }
    }
    ++links_;
    return Open::element;
}

void Rewriter::openSpan(std::string_view attribute, std::string_view value) {
    const std::array<HTMLAttribute, 1> attributes{{{attribute, value}}};
    written_.open(HTMLElement::span, "span", attributes);
}

void Rewriter::writePicture(const HTMLNode& picture) {
    const std::string_view text = picture.attribute("alt").value_or("");
    const std::string_view shown = text::isBlank(text) ? "Image" : text;
    const ReferenceChange change = resolver_.picture(picture.attribute("src").value_or(""));
    switch (change.kind) {
    case ReferenceChange::Kind::keep:
        openAsIs(picture);
        written_.close();
        break;
    case ReferenceChange::Kind::unsupported:
        openSpan("class", "ts-unsupported");
        written_.text(shown);
        written_.close();
        break;
    case ReferenceChange::Kind::address:
        if (links_ == 0) {
            const std::array<HTMLAttribute, 1> attributes{{{"href", change.value}}};
            written_.open(HTMLElement::a, "a", attributes);
            written_.text(shown);
            written_.close();
            break;
        }
        [[fallthrough]];  // a link cannot stand in a link
    case ReferenceChange::Kind::text: written_.text(shown); break;
    case ReferenceChange::Kind::element: {
        Attributes more(picture.attributes().begin(), picture.attributes().end());
        writeElement(change.value, more, true);
        written_.close();
        break;
    }
    }
}

/// Opens the one element that `html` holds. A picture keeps text, title and size of the one that it
/// replaces; a file is a block by itself and becomes part of its line here.
void Rewriter::writeElement(const std::string& html, const Attributes& more, bool hasOwnText) {
    const HTMLDocument document = HTMLDocument::parse(html);
    const HTMLNode& element = *document.root().firstChild();
    if (element.element() != HTMLElement::img) {
        written_.open(HTMLElement::span, "span", element.attributes());
        if (hasOwnText && element.firstChild() != nullptr) {
            written_.text(element.firstChild()->text());
        }
        return;
    }
    Attributes attributes(element.attributes().begin(), element.attributes().end());
    const bool isSized = std::ranges::any_of(more, [](const HTMLAttribute& attribute) {
        return attribute.name == "width" || attribute.name == "height";
    });
    if (isSized) {
        std::erase_if(attributes, [](const HTMLAttribute& attribute) {
            return attribute.name == "width" || attribute.name == "height";
        });
    }
    for (const HTMLAttribute& attribute : more) {
        const bool isTaken = attribute.name == "alt" || attribute.name == "title"
                             || attribute.name == "width" || attribute.name == "height";
        if (isTaken && !attribute.value.empty()) attributes.push_back(attribute);
    }
    written_.open(HTMLElement::img, "img", attributes);
}

bool Rewriter::isLeadingBlock(const HTMLNode& node) const {
    const bool isBlock = node.element() == HTMLElement::p || node.element() == HTMLElement::div;
    if (!isForeign_ || !isBlock || !node.attributes().empty()) return false;
    return isInItem(node) && isFirstInParent(node);
}

/// White space of the source that would follow the bullet.
bool Rewriter::isLeadingSpace(const HTMLNode& text) const {
    return isForeign_ && isInItem(text) && text::isBlank(text.text()) && isFirstInParent(text);
}

bool Rewriter::isInItem(const HTMLNode& node) const {
    if (!open_.empty() && open_.back() == Open::leadingNothing) return true;
    return isItemOrCell(node.parent());
}

}  // namespace

std::string withResolvedReferences(
    const HTMLDocument& body, ReferenceResolver& resolver, BodyOrigin origin) {
    Rewriter rewriter(resolver, origin);
    walk(body.root(), rewriter);
    return rewriter.html();
}

}  // namespace tesserine
