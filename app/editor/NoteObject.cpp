#include "app/editor/NoteObject.h"

#include "core/body/HTMLNode.h"
#include "core/body/HTMLSerializer.h"
#include "core/body/InlineStyle.h"
#include "core/body/InlineWriter.h"
#include "core/body/PlainText.h"
#include "core/services/AttachmentReferences.h"

#include <charconv>

namespace tesserine::app {
namespace {

int number(std::optional<std::string_view> digits) {
    int value = 0;
    if (digits) std::from_chars(digits->data(), digits->data() + digits->size(), value);
    return value;
}

NoteObject picture(const HTMLNode& image) {
    NoteObject object{.kind = NoteObject::Kind::picture};
    object.source = image.attribute("src").value_or("");
    object.label = image.attribute("alt").value_or("");
    object.width = number(image.attribute("width"));
    object.height = number(image.attribute("height"));
    if (object.source.starts_with(attachmentScheme)) {
        object.attachment = Uuid::parse(object.source.substr(attachmentScheme.size()));
    }
    return object;
}

bool isBlock(const HTMLNode& node) {
    const HTMLElement element = node.element();
    return element != HTMLElement::span && element != HTMLElement::br && element != HTMLElement::a
           && node.kind() == HTMLNode::Kind::element && node.firstChild() != nullptr;
}

}  // namespace

NoteObject NoteObject::of(std::string_view html) {
    const HTMLDocument document = HTMLDocument::parse(html);
    const HTMLNode* const node = document.root().firstChild();
    if (node == nullptr || node->kind() != HTMLNode::Kind::element) return {};
    if (node->element() == HTMLElement::img) return picture(*node);
    if (const auto blob = node->attribute("data-ts-cipher")) {
        return {.kind = Kind::locked, .source = std::string(*blob)};
    }
    NoteObject object{.label = PlainText::fromNode(*node)};
    if (const auto id = node->attribute("data-ts-attachment")) {
        object.kind = Kind::file;
        object.attachment = Uuid::parse(*id);
    } else if (isBlock(*node)) {
        object.kind = Kind::block;
    }
    return object;
}

std::string withPictureWidth(std::string_view html, int width) {
    const HTMLDocument document = HTMLDocument::parse(html);
    const HTMLNode* const image = document.root().firstChild();
    if (image == nullptr || image->element() != HTMLElement::img) return std::string(html);
    OwnedAttributes attributes = owned(image->attributes());
    std::erase_if(attributes, [](const OwnedAttribute& attribute) {
        return attribute.name == "width" || attribute.name == "height";
    });
    attributes.push_back({"width", std::to_string(width)});
    HTMLSerializer output;
    openElement(output, HTMLElement::img, attributes);
    output.close();
    return output.html();
}

}  // namespace tesserine::app
