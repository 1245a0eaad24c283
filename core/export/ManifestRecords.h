#pragma once

#include "base/Text.h"
#include "core/model/TaskEntities.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// The records of an export's manifest, keys in their order; absent optional values are left out.
/// The format is described in `docs/formats/export.md`.
namespace tesserine::manifest {

/// How many of each kind an export holds.
struct Counts {
    std::size_t notes = 0;
    std::size_t trashedNotes = 0;
    std::size_t notebooks = 0;
    std::size_t tags = 0;
    std::size_t attachments = 0;  ///< files that were written
    std::uint64_t attachmentBytes = 0;
    std::size_t tasks = 0;
    std::size_t projects = 0;
    std::size_t taskTemplates = 0;

    boost::json::object json() const;
};

/// Where the files of a note lie in the export; empty for what was not written.
struct NoteFiles {
    std::string html{};
    std::string markdown{};
    std::string originalSource{};
    boost::json::array attachments{};
};

boost::json::object record(const CDNotebook& notebook);
boost::json::object record(const CDTag& tag);
/// `tags`: their names.
boost::json::object record(
    const CDNote& note, const std::vector<std::string>& tags, NoteFiles files);
/// `path`: where its file lies, or empty.
boost::json::object record(const CDAttachment& attachment, const std::string& path);
boost::json::object record(const CDProject& project);
boost::json::object record(const CDTask& task, const text::Collator& collator);
boost::json::object record(const CDTaskTemplate& taskTemplate);

}  // namespace tesserine::manifest
