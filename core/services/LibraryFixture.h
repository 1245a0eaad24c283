#pragma once

#include "base/Clock.h"
#include "base/Random.h"
#include "core/model/NoteEntities.h"
#include "core/store/StoreContext.h"
#include "core/store/TesserineStore.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace tesserine::test {

inline Instant at(const char* text) { return *Instant::parseISO(text); }

/// A fresh library in memory on the morning of 14 March 2026.
class LibraryFixture : public ::testing::Test {
public:
    void advance(std::chrono::seconds by) { clock.advance(by); }
    static constexpr std::chrono::seconds days(int count) { return std::chrono::hours(24 * count); }

    CDTag& insertTag(const std::string& name) {
        auto& tag = context.insert<CDTag>();
        tag.name = name;
        tag.createdAt = clock.now();
        return tag;
    }
    CDNotebook& insertNotebook(const std::string& name, CDNotebook* parent = nullptr) {
        auto& notebook = context.insert<CDNotebook>();
        notebook.name = name;
        notebook.createdAt = clock.now();
        notebook.parent = parent;
        return notebook;
    }

    FixedClock clock{at("2026-03-14T09:00:00Z")};
    SecureRandom random;
    TesserineStore store{{.inMemory = true}, {.clock = clock, .random = random}};
    StoreContext& context{store.viewContext()};
};

}  // namespace tesserine::test
