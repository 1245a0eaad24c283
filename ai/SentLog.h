#pragma once

#include "base/Instant.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace tesserine {

/// One request that left the device.
struct SentRequest {
    Instant sentAt;
    std::string destination;          ///< a host
    std::string purpose;              ///< "ask", or the name of a note action
    std::vector<std::string> titles;  ///< of the notes of which something was sent
    std::size_t characterCount = 0;   ///< of the whole request
};

/// What was sent to a language model, and when: for the user alone, in a private file on this
/// device that they may delete. Holds titles and sizes, never texts.
class SentLog {
public:
    /// Of the file, in the folder for the state of programs.
    static constexpr const char* fileName = "assistant-requests.jsonl";
    /// Older entries go.
    static constexpr std::size_t mostEntries = 1'000;

    explicit SentLog(std::filesystem::path file) : file_(std::move(file)) {}

    /// Written before the request goes. Throws `FileError`.
    void add(const SentRequest& request);
    /// Newest first; lines that cannot be read are left out.
    std::vector<SentRequest> all() const;
    void clear();

private:
    std::filesystem::path file_;
};

}  // namespace tesserine
