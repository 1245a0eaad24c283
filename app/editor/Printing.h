#pragma once

#include <QString>

#include <filesystem>
#include <string>

class QPrinter;

namespace tesserine::app {

class Pictures;

/// A note on paper.
struct PrintedNote {
    QString title;
    std::string html;
};

/// Draws the note on the pages of `printer`, in light colours, with page numbers. Pictures that are
/// not read yet are drawn as their names. False when the printer cannot be drawn on.
bool print(const PrintedNote& note, Pictures& pictures, QPrinter& printer);

/// The same as a file, which takes the place of one that is there once it is whole. False when it
/// could not be written.
bool writePDF(const PrintedNote& note, Pictures& pictures, const std::filesystem::path& file);

}  // namespace tesserine::app
