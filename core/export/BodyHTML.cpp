#include "core/export/BodyHTML.h"

#include "base/Text.h"
#include "core/body/HTMLSerializer.h"

#include <array>
#include <span>
#include <utility>
#include <vector>

namespace tesserine {
namespace {

using Element = HTMLElement;

/// Tells the nodes of a tree to a serializer.
class NodeWriter {
public:
    explicit NodeWriter(const AddressMap& addressOf) : addressOf_(addressOf) {}

    void enter(const HTMLNode& node) {
        if (node.kind() == HTMLNode::Kind::text) serializer_.text(node.text());
        if (node.kind() == HTMLNode::Kind::element) open(node);
    }
    void leave(const HTMLNode& node) {
        if (node.kind() != HTMLNode::Kind::element) return;
        if (!fileLink(node).empty()) serializer_.close();
        serializer_.close();
    }
    void open(const HTMLNode& node) {
        const bool isLink = node.element() == Element::a && node.attribute("href");
        if (addressOf_ && (isLink || node.element() == Element::img)) return openMapped(node);
        serializer_.open(node.element(), node.name(), node.attributes());
        const std::string link = fileLink(node);
        if (!link.empty()) openLink(link);
    }
    const std::string& html() const { return serializer_.html(); }

private:
    /// The address of the file that an element stands for, if it does.
    std::string fileLink(const HTMLNode& node) const {
        const auto attachment = node.attribute("data-ts-attachment");
        if (!attachment || !addressOf_) return {};
        return addressOf_(std::string(attachmentAddress).append(*attachment));
    }
    void openLink(std::string_view address) {
        const std::array attributes{HTMLAttribute{"href", address}};
        serializer_.open(Element::a, html::nameOf(Element::a), attributes);
    }
    void openMapped(const HTMLNode& node) {
        const bool isImage = node.element() == Element::img;
        const std::string_view name = isImage ? "src" : "href";
        const std::string address = addressOf_(node.attribute(name).value_or(""));
        if (address.empty()) {
            openUnsupported(node);
            const std::string_view alternative = node.attribute("alt").value_or("");
            if (isImage) serializer_.text(text::isBlank(alternative) ? "Image" : alternative);
            return;
        }
        std::vector<HTMLAttribute> attributes(node.attributes().begin(), node.attributes().end());
        for (HTMLAttribute& attribute : attributes) {
            if (attribute.name == name) attribute.value = address;
        }
        serializer_.open(node.element(), node.name(), attributes);
    }
    /// Keeps what stood here, so that an import can put it back.
    void openUnsupported(const HTMLNode& node) {
        HTMLSerializer original;
        original.open(node.element(), node.name(), node.attributes());
        const std::array attributes{
            HTMLAttribute{"class", "ts-unsupported"},
            HTMLAttribute{"data-ts-element", original.html()}};
        serializer_.open(Element::span, html::nameOf(Element::span), attributes);
    }

    const AddressMap& addressOf_;
    HTMLSerializer serializer_;
};

}  // namespace

std::string htmlOf(const HTMLNode& node, const AddressMap& addressOf) {
    NodeWriter writer(addressOf);
    walk(node, writer);
    return writer.html();
}

std::string startTagOf(const HTMLNode& node, const AddressMap& addressOf) {
    NodeWriter writer(addressOf);
    writer.open(node);
    return writer.html();
}

}  // namespace tesserine
