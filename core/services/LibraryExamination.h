#pragma once

#include "core/model/Schema.h"
#include "core/services/LibraryChecker.h"
#include "core/store/StoreChanges.h"
#include "core/store/StoreContext.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tesserine {

/// One run of `LibraryChecker`. Each step reads first and repairs afterwards, so that no repair
/// changes rows that are being read.
class LibraryExamination {
public:
    LibraryExamination(
        TesserineStore& store, const Clock& clock, const LibraryChecker::Options& options);

    LibraryReport run();

private:
    /// A row that something is wrong with.
    struct RowID {
        std::int64_t key = 0;
        std::optional<Uuid> id;
    };

    // LibraryExamination.cpp
    bool isFileSound();
    void countObjects();
    void checkPins();
    bool isStopped();
    void progress(std::string_view step, std::size_t done, std::size_t total) const;
    bool repairs() const { return options_.repairs == LibraryChecker::Repairs::safe; }
    /// Adds "`problem`; `repair`." or, where nothing was repaired, "`problem`.".
    void add(LibraryProblem::Kind kind, const std::string& problem, const std::string& repair = {});
    std::string nameOf(const EntityDescription& entity, const RowID& row) const;
    /// The rows of a statement that selects a key and an identifier.
    std::vector<RowID> rows(const std::string& sql);
    /// Runs `change` for each row in one transaction that the history tells about.
    void changeRows(
        const EntityDescription& entity,
        const std::vector<RowID>& rows,
        const std::string& changedName,
        const std::function<void(SQLiteDatabase&, const RowID&)>& change);

    // StructureCheck.cpp
    void checkReferences();
    void checkReference(
        const EntityDescription& entity, const RelationshipDescription& relationship);
    void checkLinks(const EntityDescription& entity, const RelationshipDescription& link);
    void checkIdentities(const EntityDescription& entity);
    void checkTree(EntityKind kind);

    // ContentCheck.cpp
    void checkFiles();
    void checkFilesOf(
        const EntityDescription& entity,
        const AttributeDescription& attribute,
        std::set<std::string>& used);
    void checkDigests();
    void checkDigestsOf(const EntityDescription& entity, const AttributeDescription& attribute);
    void checkBodies();
    bool rewriteBody(const RowID& row);

    TesserineStore& store_;
    const Clock& clock_;
    const LibraryChecker::Options& options_;
    std::unique_ptr<StoreContext> context_;
    LibraryReport report_;
    /// Notes whose body is not what was written: rewriting it would hide the damage.
    std::set<std::int64_t> damagedNotes_;
};

}  // namespace tesserine
