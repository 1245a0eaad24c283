#pragma once

#include "base/Digest.h"
#include "base/Encoding.h"
#include "core/import/ByteSpool.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tesserine {

/// Element names with their texts, in the order in which they stood.
class ENEXFields {
public:
    void add(std::string name, std::string text) {
        fields_.emplace_back(std::move(name), std::move(text));
    }
    std::string& last() { return fields_.back().second; }
    /// The first text of this name, trimmed; empty when there is none.
    std::string_view text(std::string_view name) const;
    const std::vector<std::pair<std::string, std::string>>& all() const { return fields_; }

private:
    std::vector<std::pair<std::string, std::string>> fields_;
};

/// A file of a note.
struct ENEXResource {
    enum class State {
        whole,
        damaged,   ///< its text is not base64, or ends too early
        tooLarge,  ///< for the library
    };

    // Of its bytes; which of the two is there depends on what the reader was asked for.
    std::string md5{};  ///< in hexadecimal digits: how the text names the file
    SHA256Digest digest{};
    std::uint64_t byteCount = 0;
    State state = State::whole;
    std::uint64_t offset = 0;  ///< of its bytes among the files of the note
    std::string type{};
    std::string filename{};
    std::string recognition{};  ///< XML: which words the pictures show
};

/// One note of an ENEX file, as it stands there.
struct ENEXNote {
    /// Why it could not be read; then only the title may be there.
    std::optional<std::string> failure{};
    std::string title{};
    std::string content{};  ///< ENML
    std::string created{};
    std::string updated{};
    std::vector<std::string> tags{};
    ENEXFields attributes{};
    std::vector<ENEXFields> tasks{};  ///< a reminder's fields with "reminder." before their names
    std::vector<ENEXResource> resources{};
    ByteSpool files{};  ///< the bytes of all resources, one after the other; empty if not wanted
    Bytes source{};     ///< the bytes of the element without the data of its resources
    bool wasMended = false;  ///< bytes that no XML may hold were replaced
};

}  // namespace tesserine
