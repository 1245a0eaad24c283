#include "tests/fakeserver/SyncFixture.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <chrono>
#include <fstream>
#include <iostream>

namespace tesserine::test {
namespace {

/// A value of the kernel's account of this process, in kilobytes.
long processKilobytes(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(name + ":")) return std::stol(line.substr(name.size() + 1));
    }
    return 0;
}

/// From here on "VmHWM" is the peak of what is used.
void forgetPeak() {
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";
}

/// Two devices that were apart for a month.
class SyncDivergence : public Sync {
protected:
    /// Changes what both have, then makes new notes, `changes` in all.
    void diverge(SyncDevice& device, const std::vector<Uuid>& shared, const std::string& html) {
        StoreContext& context = device.context();
        for (const Uuid& id : shared) {
            device.notes.updateNote(context, *context.find<CDNote>(id), {.html = html});
        }
        for (int i = static_cast<int>(shared.size()); i < changes; ++i) {
            device.notes.createNote(context, {.title = "New", .html = html});
        }
        device.save();
        device.clock.advance(std::chrono::hours(24 * 30));
    }

    const int changes = setting("TESSERINE_DIVERGENCE", 200);
};

TEST_F(SyncDivergence, AMonthOfChangesOnBothSidesMeetsRecordByRecord) {
    const std::string middle = "<p>and</p><p>" + std::string(1'000, 'x') + "</p>";
    std::vector<Uuid> shared;
    StoreContext& context = a.context();
    for (int i = 0; i < changes / 4; ++i) {
        shared.push_back(
            *a.notes.createNote(context, {.html = "<p>1</p>" + middle + "<p>2</p>"}).id);
    }
    a.save();
    settle();
    service.pageLimit = 1;
    diverge(a, shared, "<p>one</p>" + middle + "<p>2</p>");
    diverge(b, shared, "<p>1</p>" + middle + "<p>two</p>");
    EXPECT_EQ(a.sync(), "");

    a.context();  // lets go of everything
    b.context();
    forgetPeak();
    const long before = processKilobytes("VmRSS");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(b.sync(), "");
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    std::cout << changes << " changes on each side met in " << time.count() << " s, "
              << (processKilobytes("VmHWM") - before) / 1024 << " MB\n";

    settle();
    const auto all = shared.size() + 2 * (static_cast<std::size_t>(changes) - shared.size());
    EXPECT_EQ(a.context().count<CDNote>(), all);
    EXPECT_EQ(a.context().count<CDNote>({"hasConflict == YES"}), 0U);
    EXPECT_EQ(a.note(shared.front())->html, "<p>one</p>" + middle + "<p>two</p>");
}

}  // namespace
}  // namespace tesserine::test
