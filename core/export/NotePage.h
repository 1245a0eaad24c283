#pragma once

#include "core/export/AddressMap.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tesserine {

/// One file that is listed below a note.
struct ListedFile {
    std::string name;
    std::string address;  ///< empty when it was not exported
    std::uint64_t byteCount = 0;
};

/// One piece of the line under a title.
struct PageFact {
    std::string text;
    bool isAddress = false;  ///< shown as a link, if it leads to a web page
};

/// What stands on the page of a note.
struct NotePage {
    std::string title;
    std::vector<PageFact> facts;
    /// The stored body.
    std::string body;
    std::vector<ListedFile> files;
};

/// The page as a standalone HTML5 document, with `addressOf` in place of the body's addresses.
std::string htmlPage(const NotePage& page, const AddressMap& addressOf);

/// `body`, HTML, as a standalone document with the look of all exported pages.
std::string htmlDocument(std::string_view title, std::string_view body);

/// "912 bytes", "1.2 MB"
std::string sizeText(std::uint64_t bytes);

}  // namespace tesserine
