#include "core/services/AttachmentReferences.h"

#include "core/body/HTMLNode.h"
#include "core/body/HTMLSerializer.h"

#include <algorithm>
#include <functional>
#include <optional>

namespace tesserine {
namespace {

/// The attachment that an attribute names, if it is one that may.
std::optional<Uuid> referenceIn(const HTMLNode& node, const HTMLAttribute& attribute) {
    if (attribute.name == "data-ts-attachment") return Uuid::parse(attribute.value);
    const bool isAddress = node.element() == HTMLElement::img && attribute.name == "src"
                           && attribute.value.starts_with(attachmentScheme);
    if (!isAddress) return std::nullopt;
    return Uuid::parse(attribute.value.substr(attachmentScheme.size()));
}

std::optional<Uuid> referenceOf(const HTMLNode& node) {
    for (const HTMLAttribute& attribute : node.attributes()) {
        if (const auto id = referenceIn(node, attribute)) return id;
    }
    return std::nullopt;
}

struct Collector {
    void enter(const HTMLNode& node) {
        const auto id = referenceOf(node);
        if (id && std::ranges::find(found, *id) == found.end()) found.push_back(*id);
    }
    void leave(const HTMLNode&) {}

    std::vector<Uuid> found;
};

/// Writes a tree again; elements that refer to an attachment refer to what `target` tells instead,
/// or are left out with all they hold.
class Rewriter {
public:
    using Target = std::function<std::optional<Uuid>(const Uuid&)>;
    explicit Rewriter(Target target) : target_(std::move(target)) {}

    void enter(const HTMLNode& node) {
        if (skipped_ > 0) {
            ++skipped_;
            return;
        }
        if (node.kind() == HTMLNode::Kind::text) written_.text(node.text());
        if (node.kind() == HTMLNode::Kind::element) open(node);
    }
    void leave(const HTMLNode& node) {
        if (skipped_ > 0) {
            --skipped_;
        } else if (node.kind() == HTMLNode::Kind::element) {
            written_.close();
        }
    }
    const std::string& html() const { return written_.html(); }

private:
    void open(const HTMLNode& node) {
        const auto id = referenceOf(node);
        const auto target = id ? target_(*id) : std::nullopt;
        if (id && !target) {
            skipped_ = 1;
            return;
        }
        std::vector<HTMLAttribute> attributes(node.attributes().begin(), node.attributes().end());
        std::string reference;
        for (HTMLAttribute& attribute : attributes) {
            if (!referenceIn(node, attribute)) continue;
            reference = target->text();
            if (attribute.name == "src") reference.insert(0, attachmentScheme);
            attribute.value = reference;
        }
        written_.open(node.element(), node.name(), attributes);
    }

    Target target_;
    HTMLSerializer written_;
    std::size_t skipped_ = 0;  // how deep the walk is below an element left out
};

std::string rewritten(std::string_view html, Rewriter::Target target) {
    const HTMLDocument document = HTMLDocument::parse(std::string(html));
    Rewriter rewriter(std::move(target));
    walk(document.root(), rewriter);
    return rewriter.html();
}

}  // namespace

std::vector<Uuid> attachmentReferences(std::string_view html) {
    const HTMLDocument document = HTMLDocument::parse(std::string(html));
    Collector collector;
    walk(document.root(), collector);
    return std::move(collector.found);
}

std::string withReplacedReferences(
    std::string_view html, const std::map<Uuid, Uuid>& replacements) {
    return rewritten(html, [&](const Uuid& id) -> std::optional<Uuid> {
        const auto found = replacements.find(id);
        return found == replacements.end() ? id : found->second;
    });
}

std::string withoutReferences(std::string_view html, const Uuid& attachment) {
    return rewritten(html, [&](const Uuid& id) -> std::optional<Uuid> {
        if (id == attachment) return std::nullopt;
        return id;
    });
}

}  // namespace tesserine
