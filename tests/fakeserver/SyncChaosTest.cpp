#include "base/FailPoint.h"
#include "core/services/NotebookService.h"
#include "core/services/TagService.h"
#include "tests/fakeserver/SyncFixture.h"

#include <gtest/gtest.h>

#include <array>
#include <iostream>
#include <map>
#include <set>

namespace tesserine::test {
namespace {

using Dump = std::map<std::string, std::string>;

/// The records in which two libraries differ; empty when they are equal.
std::string difference(const Dump& a, const Dump& b) {
    std::string text;
    const auto lineIn = [](const Dump& dump, const std::string& id) {
        const auto found = dump.find(id);
        return found == dump.end() ? std::string("nothing") : found->second;
    };
    Dump all = a;
    all.insert(b.begin(), b.end());
    for (const auto& [id, line] : all) {
        if (lineIn(a, id) == lineIn(b, id)) continue;
        text += id + "\n  " + lineIn(a, id) + "\n  " + lineIn(b, id) + "\n";
    }
    return text;
}

/// Three devices that do what comes to their mind, over a bad network, with clocks that disagree,
/// and are killed now and then. Everything follows from the seed.
class Chaos {
public:
    explicit Chaos(std::uint64_t seed) : random_(seed) {
        service_.stale =
            dice(2) == 0 ? FakeSyncServer::Stale::superseded : FakeSyncServer::Stale::laterWins;
        for (std::uint64_t i = 0; i < 3; ++i) {
            devices_.push_back(std::make_unique<SyncDevice>(service_, seed * 10 + i));
            devices_.back()->network.faultPercent = 20;
        }
        devices_[1]->clock.advance(std::chrono::hours(24));
        devices_[2]->clock.advance(std::chrono::hours(-24));
    }

    void run(int operations) {
        for (int i = 0; i < operations; ++i) {
            SyncDevice& device = *devices_[dice(3)];
            device.clock.advance(std::chrono::seconds(dice(400)));
            operate(device);
        }
        failpoint::disarmAll();
    }

    /// Synchronises without faults until nothing moves; tells whether all libraries are equal then.
    void expectConvergence() {
        for (const auto& device : devices_) {
            device->network.faultPercent = 0;
        }
        for (int round = 0; round < 5; ++round) {
            for (const auto& device : devices_) {
                EXPECT_EQ(device->sync({.manyDeletions = true}), "");
            }
        }
        const auto dump = devices_[0]->dump();
        EXPECT_EQ(difference(dump, devices_[1]->dump()), "");
        EXPECT_EQ(difference(dump, devices_[2]->dump()), "");
        const std::size_t pushed = service_.pushedCount();
        for (const auto& device : devices_) {
            EXPECT_EQ(device->sync(), "");
            EXPECT_EQ(device->context().count<CDAttachment>({"fileData == nil"}), 0U);
        }
        EXPECT_EQ(service_.pushedCount(), pushed) << "a further sync sends something";
    }

    /// Whatever was typed is in some body or some revision, unless somebody who saw it deleted it.
    void expectNothingLost() {
        std::string all;
        for (const auto& device : devices_) {
            all += device->allBodies();
        }
        for (const std::string& token : typed_) {
            const bool isThere = all.find(token) != std::string::npos;
            EXPECT_TRUE(isThere || deleted_.contains(token)) << token << " was lost";
        }
    }

private:
    unsigned dice(unsigned bound) { return static_cast<unsigned>(random_.below(bound)); }

    template <class Entity>
    Entity* any(StoreContext& context) {
        const auto count = static_cast<unsigned>(context.count<Entity>());
        if (count == 0) return nullptr;
        const auto found = context.fetch<Entity>({.limit = 1, .offset = dice(count)});
        return found.empty() ? nullptr : found.front();
    }

    std::string newToken() {
        typed_.push_back("token" + std::to_string(typed_.size()) + "x");
        return typed_.back();
    }

    void operate(SyncDevice& device) {
        const unsigned what = dice(100);
        if (what < 35) return synchronise(device);
        StoreContext& context = device.context();
        if (what < 50) {
            device.notes.createNote(
                context,
                {.title = "Note " + std::to_string(dice(100)),
                 .html = "<p>" + newToken() + "</p>",
                 .notebook = any<CDNotebook>(context)});
        } else if (what < 75) {
            edit(device, context);
        } else if (what < 80) {
            tag(device, context);
        } else if (what < 85) {
            arrange(device, context);
        } else if (what < 92) {
            plan(context);
        } else if (what < 96) {
            attach(device, context);
        } else {
            destroy(context);
        }
        device.save();
    }

    void synchronise(SyncDevice& device) {
        constexpr std::array points = {"sync.recordApplied", "sync.pageSaved", "sync.pushAnswered"};
        failpoint::disarmAll();
        const bool isKilled = dice(8) == 0;
        if (isKilled) {
            failpoint::arm(points[dice(points.size())], 1 + static_cast<int>(dice(4)), [] {
                throw std::runtime_error("killed");
            });
        }
        device.sync({.manyDeletions = true});
        if (isKilled) device.restart();
    }

    void edit(SyncDevice& device, StoreContext& context) {
        CDNote* const note = any<CDNote>(context);
        if (note == nullptr) return;
        const std::string body = note->html.valueOr("");
        const std::string paragraph = "<p>" + newToken() + "</p>";
        const bool isAtStart = dice(2) == 0;
        device.notes.updateNote(
            context, *note, {.html = isAtStart ? paragraph + body : body + paragraph});
        if (dice(4) == 0) device.notes.togglePin(*note);
    }

    void tag(SyncDevice& device, StoreContext& context) {
        const TagService tags(device.clock);
        CDTag* const one = tags.findOrCreate(context, "tag" + std::to_string(dice(4)));
        if (CDNote* const note = any<CDNote>(context)) device.notes.addTag(*note, *one);
        if (CDTag* const other = any<CDTag>(context)) tags.move(*one, other);
    }

    void arrange(SyncDevice& device, StoreContext& context) {
        const NotebookService notebooks(device.clock);
        CDNotebook& made =
            *notebooks.findOrCreatePath(context, {"Book " + std::to_string(dice(5))});
        CDNotebook* const other = any<CDNotebook>(context);
        if (dice(2) == 0 && other != nullptr) notebooks.move(made, other);
        if (CDNote* const note = any<CDNote>(context)) device.notes.moveToNotebook(*note, other);
    }

    void plan(StoreContext& context) {
        auto& task = context.insert<CDTask>();
        task.title = "Task " + std::to_string(dice(100));
        task.createdAt = context.now();
        task.updatedAt = context.now();
        CDTask* const other = any<CDTask>(context);
        if (other == nullptr || other == &task) return;
        if (dice(2) == 0) task.parent = other;
        other->completedAt = context.now();
        other->updatedAt = context.now();
    }

    void attach(SyncDevice& device, StoreContext& context) {
        CDNote* const note = any<CDNote>(context);
        if (note == nullptr) return;
        const std::string data = "file " + std::to_string(dice(20));
        const auto bytes = bytesOf(data);
        device.attachments.insert(
            context, *note, {.filename = "a.txt", .data = Bytes(bytes.begin(), bytes.end())});
    }

    void destroy(StoreContext& context) {
        switch (dice(4)) {
        case 0:
            if (auto* const tag = any<CDTag>(context)) context.remove(*tag);
            return;
        case 1:
            if (auto* const book = any<CDNotebook>(context)) context.remove(*book);
            return;
        case 2:
            if (auto* const task = any<CDTask>(context)) context.remove(*task);
            return;
        default: break;
        }
        CDNote* const note = any<CDNote>(context);
        if (note == nullptr) return;
        std::string seen = note->html.valueOr("");
        for (CDNoteRevision* const revision : note->revisions.all()) {
            seen += revision->html.valueOr("");
        }
        for (const std::string& token : typed_) {
            if (seen.find(token) != std::string::npos) deleted_.insert(token);
        }
        context.remove(*note);
    }

    SeededRandom random_;
    FakeSyncServer service_;
    std::vector<std::unique_ptr<SyncDevice>> devices_;
    std::vector<std::string> typed_;
    std::set<std::string> deleted_;
};

TEST(SyncChaos, ThreeDevicesOverABadNetworkConvergeAndLoseNothing) {
    const int first = setting("TESSERINE_CHAOS_SEED", 1);
    const int count = setting("TESSERINE_CHAOS_COUNT", 3);
    const int operations = setting("TESSERINE_CHAOS_OPERATIONS", 150);
    for (int seed = first; seed < first + count; ++seed) {
        SCOPED_TRACE("TESSERINE_CHAOS_SEED=" + std::to_string(seed));
        Chaos chaos(static_cast<std::uint64_t>(seed));
        chaos.run(operations);
        chaos.expectConvergence();
        chaos.expectNothingLost();
        std::cout << "seed " << seed << " converged" << std::endl;
        if (testing::Test::HasFailure()) return;
    }
}

}  // namespace
}  // namespace tesserine::test
