#pragma once

#include "core/body/HTMLNode.h"
#include "core/export/AddressMap.h"

#include <string>

namespace tesserine {

/// The HTML of `node`, a part of a stored body. With `addressOf`, links and pictures get its
/// addresses, and elements that stand for files become links. What leads nowhere is text of the
/// class `ts-unsupported`, which names the element it was in `data-ts-element`.
std::string htmlOf(const HTMLNode& node, const AddressMap& addressOf);

/// The start tag alone; `node` is an element.
std::string startTagOf(const HTMLNode& node, const AddressMap& addressOf);

}  // namespace tesserine
