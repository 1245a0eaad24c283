#pragma once

#include "core/body/HTMLNode.h"
#include "core/export/AddressMap.h"

#include <string>

namespace tesserine {

/// The HTML of `node`, a part of a stored body, with `addressOf` in place of its links and
/// pictures.
std::string htmlOf(const HTMLNode& node, const AddressMap& addressOf);

/// The start tag alone; `node` is an element.
std::string startTagOf(const HTMLNode& node, const AddressMap& addressOf);

}  // namespace tesserine
