#include "core/export/ReadMe.h"

#include "base/Product.h"
#include "core/export/ExportTypes.h"
#include "core/export/NotePage.h"

namespace tesserine {
namespace {

constexpr std::string_view contentsOfFolder =
    R"(index.html          Browse every note. Open this first.
notes/              One folder per notebook. Each note is an .html file (and a .md file).
attachments/        Every attachment, byte-for-byte as Tesserine stored it.
original-source/    For notes imported from Evernote: the untouched source XML.
tasks.md            Every task, grouped by project.
manifest.json       Machine-readable record of everything above.
)";

constexpr std::string_view farewell =
    "\n\nThis export is yours. It needs no account, no subscription, and no network\n"
    "connection to read — the HTML files open in any browser and the attachments are\n"
    "ordinary files. manifest.json is documented at\n";

}  // namespace

std::string readMeOf(
    const manifest::Counts& counts, const std::string& date, const std::string& appVersion) {
    std::string text = "Tesserine export\n================\n\nExported " + date + " by Tesserine "
                       + appVersion + ".\nExport format version "
                       + std::to_string(exportFormatVersion)
                       + ".\n\nWhat is in here\n---------------\n";
    text += contentsOfFolder;
    text += "\nContents\n--------\n";
    text += "Notes:        " + std::to_string(counts.notes) + "\n";
    text += "Notebooks:    " + std::to_string(counts.notebooks) + "\n";
    text += "Tags:         " + std::to_string(counts.tags) + "\n";
    text += "Attachments:  " + std::to_string(counts.attachments) + " ("
            + sizeText(counts.attachmentBytes) + ")\n";
    text += "Tasks:        " + std::to_string(counts.tasks);
    return text.append(farewell).append(product::exportFormatURL);
}

}  // namespace tesserine
