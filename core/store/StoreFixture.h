#pragma once

#include "base/Clock.h"
#include "base/Random.h"
#include "core/model/NoteEntities.h"
#include "core/model/TaskEntities.h"
#include "core/store/StoreContext.h"
#include "core/store/TesserineStore.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace tesserine::test {

/// A library in a fresh folder, opened as often as a test likes: each opening is a process of its
/// own as far as the library can tell.
class StoreFixture : public ::testing::Test {
public:
    StoreEnvironment environment(const std::string& author = "test") {
        return {.clock = clock, .random = random, .author = author};
    }
    std::unique_ptr<TesserineStore> open(const std::string& author = "test") {
        return open(environment(author));
    }
    std::unique_ptr<TesserineStore> open(const StoreEnvironment& with) {
        return std::make_unique<TesserineStore>(StoreConfiguration{.directory = library}, with);
    }
    /// The sentence with which opening is refused; empty when the library opens.
    std::string refusal(const StoreEnvironment& with) {
        try {
            open(with);
            return {};
        } catch (const StoreError& error) {
            return error.what();
        }
    }
    std::string refusal() { return refusal(environment()); }

    CDNote& addNote(
        StoreContext& context, const std::string& title, const std::string& html) const {
        auto& note = context.insert<CDNote>();
        note.title = title;
        note.html = html;
        note.createdAt = clock.now();
        note.updatedAt = clock.now();
        return note;
    }

    static std::string titles(const std::vector<CDNote*>& notes) {
        std::string text;
        for (CDNote* note : notes) {
            text += note->title.valueOr("-") + " ";
        }
        return text;
    }
    /// The titles of all notes in the order in which they were saved.
    static std::string titles(StoreContext& context) { return titles(context.fetch<CDNote>()); }

    static std::string revisions(CDNote& note) {
        std::string text;
        for (CDNoteRevision* revision : note.revisions.all()) {
            text += revision->reason.valueOr("") + ":" + revision->html.valueOr("") + " ";
        }
        return text;
    }

    TemporaryFolder folder;
    std::filesystem::path library = folder.path() / "Library";
    std::filesystem::path libraryFile = library / TesserineStore::fileName;
    FixedClock clock{*Instant::parseISO("2026-03-14T09:15:00Z")};
    SecureRandom random;  // children must not repeat each other
};

}  // namespace tesserine::test
