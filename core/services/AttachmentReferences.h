#pragma once

#include "base/Uuid.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

/// How bodies refer to attachments: a picture by the address in its `src`, other files by a
/// `data-ts-attachment`. Bodies are read as trees; a text that looks like a reference is none.
namespace tesserine {

/// The address of a picture that is an attachment begins with this; its identifier follows.
inline constexpr std::string_view attachmentScheme = "tesserine-attachment://";

/// The attachments that a body refers to, in the order of their first mention, each once.
std::vector<Uuid> attachmentReferences(std::string_view html);
/// The body with every reference to a key of `replacements` pointing to its value.
std::string withReplacedReferences(std::string_view html, const std::map<Uuid, Uuid>& replacements);
/// The body without the elements that refer to `attachment`.
std::string withoutReferences(std::string_view html, const Uuid& attachment);

}  // namespace tesserine
