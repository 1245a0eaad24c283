#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Which folder may include from which: the floors of the tree, as a program can check them.
namespace tesserine::layers {

/// The faults of one file, each as "path:line: sentence". `path` is relative to the root of the
/// tree and uses "/"; `text` is what the file holds.
std::vector<std::string> faults(std::string_view path, std::string_view text);

}  // namespace tesserine::layers
