#include "core/export/BodyHTML.h"

#include "core/body/HTMLSerializer.h"

#include <deque>
#include <vector>

namespace tesserine {
namespace {

bool isAddress(const HTMLAttribute& attribute) {
    return attribute.name == "href" || attribute.name == "src";
}

/// Tells the nodes of a tree to a serializer.
class NodeWriter {
public:
    explicit NodeWriter(const AddressMap& addressOf) : addressOf_(addressOf) {}

    void enter(const HTMLNode& node) {
        if (node.kind() == HTMLNode::Kind::text) serializer_.text(node.text());
        if (node.kind() == HTMLNode::Kind::element) open(node);
    }
    void leave(const HTMLNode& node) {
        if (node.kind() == HTMLNode::Kind::element) serializer_.close();
    }

    void open(const HTMLNode& node) {
        if (!addressOf_) return serializer_.open(node.element(), node.name(), node.attributes());
        std::vector<HTMLAttribute> attributes(node.attributes().begin(), node.attributes().end());
        std::deque<std::string> addresses;  // keeps its elements where they are
        for (HTMLAttribute& attribute : attributes) {
            if (!isAddress(attribute)) continue;
            attribute.value = addresses.emplace_back(addressOf_(attribute.value));
        }
        serializer_.open(node.element(), node.name(), attributes);
    }
    const std::string& html() const { return serializer_.html(); }

private:
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
