#pragma once

#include "base/MD5.h"
#include "core/import/Base64Decoder.h"
#include "core/import/ENEXReader.h"
#include "core/import/XMLStream.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace tesserine {

/// Makes a note out of the elements in one `<note>`.
class ENEXNoteBuilder {
public:
    explicit ENEXNoteBuilder(ENEXReader::Files files) : files_(files) {}

    void open(std::string_view name, const XMLAttributes& attributes);
    void text(std::string_view text);
    void close();
    /// Whether the text that follows is the data of a file.
    bool isInData() const { return open_.back() == Part::data; }
    /// Makes the note one that could not be read. What follows of it is not kept.
    void fail(std::string sentence);

    ENEXNote& note() { return note_; }

private:
    /// What an open element is.
    enum class Part : std::uint8_t {
        note,
        attributes,
        resource,
        resourceAttributes,
        task,
        reminder,
        data,
        other,
    };

    Part opened(std::string_view name, const XMLAttributes& attributes);
    Part openedInNote(std::string_view name);
    Part openedInResource(std::string_view name);
    Part take(std::string& text);
    void takeData();
    void keep(std::span<const std::uint8_t> bytes);
    void finishData();

    const ENEXReader::Files files_;
    ENEXNote note_;
    std::vector<Part> open_{Part::note};
    std::string* text_ = nullptr;  // what the text of the innermost known element goes into
    std::size_t textDepth_ = 0;    // how many elements are open with that one

    // Of the file whose data is being read.
    Base64Decoder decoder_;
    Bytes decoded_;
    MD5 md5_;
    SHA256 sha256_;
};

}  // namespace tesserine
