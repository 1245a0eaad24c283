#pragma once

#include "base/Instant.h"
#include "core/export/ManifestRecords.h"

#include <boost/json/array.hpp>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

namespace tesserine {

/// Writes `manifest.json`, one record a line. The records of notes go to a temporary file first,
/// because what counts them stands before them: memory does not grow with their number.
class ManifestWriter {
public:
    /// Everything of a manifest but its notes.
    struct Content {
        std::string appVersion;
        Instant exportedAt;
        manifest::Counts counts;
        boost::json::array notebooks;
        boost::json::array tags;
        boost::json::array projects;
        boost::json::array tasks;
        boost::json::array taskTemplates;
    };

    /// Throws `FileError`.
    ManifestWriter();
    void addNote(const boost::json::object& record);
    /// Writes the new file `path` whole, and syncs it. Throws `FileError`.
    void write(const std::filesystem::path& path, const Content& content);

private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    using File = std::unique_ptr<std::FILE, Closer>;

    File notes_;
    bool hasNotes_ = false;
};

}  // namespace tesserine
