#include "core/body/Sanitizer.h"

#include "core/body/BodySanitizer.h"

#include <limits>

namespace tesserine {
namespace {

/// Tells the nodes of a tree to a sink.
struct NodeTeller {
    void enter(const HTMLNode& node) {
        switch (node.kind()) {
        case HTMLNode::Kind::fragment:
        case HTMLNode::Kind::comment: return;
        case HTMLNode::Kind::element:
            sink.open(node.element(), node.name(), node.attributes());
            return;
        case HTMLNode::Kind::text: sink.text(node.text()); return;
        }
    }
    void leave(const HTMLNode& node) {
        if (node.kind() == HTMLNode::Kind::element) sink.close();
    }

    HTMLSink& sink;
};

}  // namespace

SanitizationResult sanitize(const HTMLNode& root, const SanitizerOptions& options) {
    BodySanitizer sanitizer(
        options, std::numeric_limits<std::size_t>::max(), BodyWriter::Nesting::asTold);
    NodeTeller teller{sanitizer};
    walk(root, teller);
    return sanitizer.finish();
}

}  // namespace tesserine
