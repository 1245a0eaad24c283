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

/// Copies a tree; elements that refer to an attachment get what `target` tells in its place, or are
/// left out with all they hold.
class Copier {
public:
    using Target = std::function<std::optional<Uuid>(const Uuid&)>;
    explicit Copier(Target target) : target_(std::move(target)) {}

    void enter(const HTMLNode& node) {
        if (skipped_ > 0) {
            ++skipped_;
            return;
        }
        switch (node.kind()) {
        case HTMLNode::Kind::fragment: open_.push_back(&copy_.root()); return;
        case HTMLNode::Kind::text: copy_.appendText(*open_.back(), node.text()); return;
        case HTMLNode::Kind::comment: copy_.appendComment(*open_.back(), node.text()); return;
        case HTMLNode::Kind::element: copyElement(node); return;
        }
    }
    void leave(const HTMLNode& node) {
        if (skipped_ > 0) {
            --skipped_;
        } else if (node.kind() == HTMLNode::Kind::element) {
            open_.pop_back();
        }
    }
    std::string html() const { return html::serialized(copy_.root()); }

private:
    void copyElement(const HTMLNode& node) {
        const auto id = referenceOf(node);
        const auto target = id ? target_(*id) : std::nullopt;
        if (id && !target) {
            skipped_ = 1;
            return;
        }
        std::vector<HTMLAttribute> attributes(node.attributes().begin(), node.attributes().end());
        std::string written;
        for (HTMLAttribute& attribute : attributes) {
            if (!referenceIn(node, attribute)) continue;
            written = target->text();
            if (attribute.name == "src") written.insert(0, attachmentScheme);
            attribute.value = written;
        }
        open_.push_back(&copy_.appendElement(*open_.back(), node.name(), attributes));
    }

    Target target_;
    HTMLDocument copy_;
    std::vector<HTMLNode*> open_;  // the copies of the elements that are being walked
    std::size_t skipped_ = 0;      // how deep the walk is below an element left out
};

std::string rewritten(std::string_view html, Copier::Target target) {
    const HTMLDocument document = HTMLDocument::parse(std::string(html));
    Copier copier(std::move(target));
    walk(document.root(), copier);
    return copier.html();
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
