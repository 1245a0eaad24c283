#include "core/import/Reconciliation.h"

#include "core/import/ImportFixture.h"

namespace tesserine {
namespace {

class ReconciliationTest : public test::ImportFixture {
public:
    ReconciliationTest() {
        put("a.md", "![](x.bin) ![](y.bin)");
        put("x.bin", "xx");
        put("y.bin", "yy");
        run();
        reconciliation_.expect(note("a").id.get(), {digestOf("xx"), digestOf("yy")});
    }
    static SHA256Digest digestOf(std::string_view text) { return sha256(bytesOf(text)); }
    std::string found() {
        context().save();
        return reconciliation_.run(context(), {})->sentence();
    }
    CDAttachment& file(std::size_t number) { return *note("a").attachments.all().at(number); }

    Reconciliation reconciliation_;
};

TEST_F(ReconciliationTest, NothingIsTakenOnTrust) {
    EXPECT_EQ(found(), "1 of 1 note and 2 of 2 files are in the library, every byte equal.");
    // The row still says the digest of the bytes that were there before.
    file(0).fileData = Bytes{'x', 'y'};
    EXPECT_EQ(found(), "1 of 1 note and 1 of 2 files are in the library, every byte equal.");
    context().remove(file(1));
    EXPECT_EQ(found(), "1 of 1 note and 0 of 2 files are in the library, every byte equal.");
    context().remove(note("a"));
    EXPECT_EQ(found(), "0 of 1 note and 0 of 2 files are in the library, every byte equal.");
}

TEST_F(ReconciliationTest, NotesThatAreNowhereCountAsMissing) {
    reconciliation_.expect(std::nullopt, {digestOf("z")});
    reconciliation_.expect(Uuid::random(random), {});
    EXPECT_EQ(found(), "1 of 3 notes and 2 of 3 files are in the library, every byte equal.");
    std::stop_source stop;
    stop.request_stop();
    EXPECT_FALSE(reconciliation_.run(context(), stop.get_token()));
}

}  // namespace
}  // namespace tesserine
