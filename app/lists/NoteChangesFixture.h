#pragma once

#include "app/state/AppEnvironment.h"
#include "base/Clock.h"
#include "core/model/NoteEntities.h"
#include "core/store/StoreContext.h"

#include <chrono>
#include <cstddef>
#include <random>
#include <string>

namespace tesserine::test {

/// Lets a throw of the dice decide what becomes of the notes: several changes to one save.
class NoteChanges {
public:
    NoteChanges(const app::AppEnvironment& environment, FixedClock& clock)
        : environment_(environment), clock_(clock) {}

    void make(StoreContext& context) {
        for (int left = below(4); left >= 0; --left) {
            if (below(3) > 0) clock_.advance(std::chrono::seconds(1));  // else at the same time
            makeOne(context);
        }
        context.save();
    }

private:
    void makeOne(StoreContext& context) {
        const NoteService& notes = environment_.notes();
        const auto all = context.fetch<CDNote>({.sort = {{"title"}, {"id"}}});
        const int deed = all.size() < 12 ? 0 : below(11);
        if (deed == 0) {
            notes.createNote(context, {.title = name(), .notebook = notebook(context)});
            return;
        }
        CDNote& note = *all[static_cast<std::size_t>(below(static_cast<int>(all.size())))];
        CDTag& tag = *environment_.tags().findOrCreate(context, "red");
        switch (deed) {
        case 1: return notes.deleteNote(context, note);
        case 2: return notes.moveToTrash(note);
        case 3: return notes.restoreFromTrash(note);
        case 4: return notes.addTag(note, tag);
        case 5: return notes.removeTag(note, tag);
        case 6: return notes.pin(note);
        case 7: return notes.unpin(note);
        case 8: note.notebook = notebook(context); return;
        default: notes.updateNote(context, note, {.title = name()});
        }
    }
    CDNotebook* notebook(StoreContext& context) {
        return below(2) == 0 ? nullptr : environment_.notebooks().find(context, "Work", nullptr);
    }
    /// Often one that is there already.
    std::string name() { return std::string(1, static_cast<char>('a' + below(8))); }
    int below(int end) { return static_cast<int>(dice_() % static_cast<unsigned>(end)); }

    const app::AppEnvironment& environment_;
    FixedClock& clock_;
    std::mt19937 dice_{7};  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same throws every time
};

}  // namespace tesserine::test
