#include "core/import/TesserinePage.h"

#include "base/PercentEncoding.h"
#include "core/body/HTMLNode.h"
#include "core/body/HTMLSerializer.h"

#include <vector>

namespace tesserine {
namespace {

using AddressOf = std::function<std::string(const std::string&)>;
using Element = HTMLElement;

/// Stored bodies hold no relative addresses: whatever has no scheme was written by the export.
bool isRelative(std::string_view address) {
    return address.substr(0, address.find('/')).find(':') == std::string_view::npos;
}

/// Finds the element that holds the body.
struct BodyFinder {
    void enter(const HTMLNode& node) {
        if (found == nullptr && node.attribute("class") == "ts-body") found = &node;
    }
    void leave(const HTMLNode& /*node*/) {}

    const HTMLNode* found = nullptr;
};

/// Writes the body again as it was before the export put files in the place of addresses.
class BodyRestorer {
public:
    BodyRestorer(const HTMLNode& body, const AddressOf& addressOf)
        : body_(body), addressOf_(addressOf) {}

    void enter(const HTMLNode& node) {
        if (&node == &body_) return;
        if (node.kind() == HTMLNode::Kind::element) {
            opened_.push_back(open(node));
            if (opened_.back() == Opened::replacement) ++replacements_;
        } else if (node.kind() == HTMLNode::Kind::text && replacements_ == 0) {
            serializer_.text(node.text());
        }
    }
    void leave(const HTMLNode& node) {
        if (&node == &body_ || node.kind() != HTMLNode::Kind::element) return;
        if (opened_.back() == Opened::element) serializer_.close();
        if (opened_.back() == Opened::replacement) --replacements_;
        opened_.pop_back();
    }
    const std::string& html() const { return serializer_.html(); }

private:
    enum class Opened {
        nothing,      ///< what is inside stands for itself
        element,      ///< still open
        replacement,  ///< written whole; what is inside goes
    };

    Opened open(const HTMLNode& node) {
        if (replacements_ > 0) return Opened::nothing;
        if (const auto original = node.attribute("data-ts-element")) return openOriginal(*original);
        const bool isPicture = node.element() == Element::img;
        const auto address = node.attribute(isPicture ? "src" : "href");
        const bool isMapped = address && isRelative(*address);
        const HTMLNode* const parent = node.parent();
        const bool isLinkToFile = isMapped && parent != nullptr && parent != &body_
                                  && parent->attribute("data-ts-attachment").has_value();
        if (isLinkToFile) return Opened::nothing;
        if (!isMapped) return openElement(node, node.attributes());

        const std::string mapped = addressOf_(percentDecoded(*address));
        std::vector<HTMLAttribute> attributes(node.attributes().begin(), node.attributes().end());
        for (HTMLAttribute& attribute : attributes) {
            if (attribute.value == *address) attribute.value = mapped;
        }
        return openElement(node, attributes);
    }
    Opened openElement(const HTMLNode& node, std::span<const HTMLAttribute> attributes) {
        serializer_.open(node.element(), node.name(), attributes);
        return Opened::element;
    }
    /// A link or picture that led nowhere in the export.
    Opened openOriginal(std::string_view tag) {
        const HTMLDocument document = HTMLDocument::parse(tag);
        const HTMLNode* const original = document.root().firstChild();
        if (original == nullptr || original->kind() != HTMLNode::Kind::element) {
            return Opened::nothing;
        }
        openElement(*original, original->attributes());
        if (original->element() != Element::img) return Opened::element;
        serializer_.close();
        return Opened::replacement;
    }

    const HTMLNode& body_;
    const AddressOf& addressOf_;
    HTMLSerializer serializer_;
    std::vector<Opened> opened_;
    std::size_t replacements_ = 0;
};

}  // namespace

std::optional<std::string> bodyOfPage(std::string_view page, const AddressOf& addressOf) {
    const HTMLDocument document = HTMLDocument::parse(page);
    BodyFinder finder;
    walk(document.root(), finder);
    if (finder.found == nullptr) return std::nullopt;
    BodyRestorer restorer(*finder.found, addressOf);
    walk(*finder.found, restorer);
    return restorer.html();
}

}  // namespace tesserine
