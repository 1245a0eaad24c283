#include "base/Uuid.h"

#include "base/Random.h"
#include "tests/support/SeededRandom.h"

#include <gtest/gtest.h>

#include <array>
#include <set>

namespace tesserine {
namespace {

TEST(Uuid, IsWrittenInUpperCaseAndReadInEither) {
    const auto uuid = Uuid::parse("6f9619ff-8B86-D011-b42d-00CF4FC964FF");
    ASSERT_TRUE(uuid);
    EXPECT_EQ(uuid->text(), "6F9619FF-8B86-D011-B42D-00CF4FC964FF");
    EXPECT_EQ(uuid->wireText(), "6f9619ff-8b86-d011-b42d-00cf4fc964ff");
    EXPECT_EQ(Uuid::parse(uuid->text()), Uuid::parse(uuid->wireText()));
    EXPECT_EQ(Uuid::fromBytes(uuid->bytes()), uuid);
}

TEST(Uuid, ReadsNothingElse) {
    for (const char* text : {
             "",
             "6F9619FF8B86D011B42D00CF4FC964FF",
             "{6F9619FF-8B86-D011-B42D-00CF4FC964FF}",
             "6F9619FF-8B86-D011-B42D-00CF4FC964F",
             "6F9619FF-8B86-D011-B42D-00CF4FC964FF ",
             "6F9619FF-8B86-D011-B42D-00CF4FC964FG",
             "6F9619FF8-B86-D011-B42D-00CF4FC964FF",
             "6F9619FF-8B86-D011-B42D--0CF4FC964FF",
         }) {
        EXPECT_FALSE(Uuid::parse(text)) << text;
    }
    EXPECT_FALSE(Uuid::fromBytes(std::array<std::uint8_t, 15>{}));
    EXPECT_TRUE(Uuid().isNil());
}

TEST(Uuid, RandomOnesAreOfVersionFourAndDiffer) {
    SecureRandom random;
    std::set<Uuid> seen;
    for (int i = 0; i < 1000; ++i) {
        const Uuid uuid = Uuid::random(random);
        const std::string text = uuid.text();
        EXPECT_EQ(text[14], '4') << text;
        EXPECT_NE(std::string("89AB").find(text[19]), std::string::npos) << text;
        EXPECT_TRUE(seen.insert(uuid).second) << text;
    }
}

TEST(Uuid, CountedOnesSpreadOverTheHashTable) {
    // Identifiers of test data and of some imports count upwards in their last bytes.
    std::set<std::size_t> buckets;
    for (std::uint8_t i = 0; i < 128; ++i) {
        std::array<std::uint8_t, Uuid::byteCount> bytes{};
        bytes.back() = i;
        buckets.insert(std::hash<Uuid>()(Uuid(bytes)) % 1024);
    }
    EXPECT_GT(buckets.size(), 100U);
}

TEST(Random, NumbersBelowABoundReachAllOfItEvenly) {
    test::SeededRandom random(7);
    std::array<int, 6> counts{};
    for (int i = 0; i < 6000; ++i) {
        ++counts.at(random.below(counts.size()));
    }
    for (const int count : counts) {
        EXPECT_GT(count, 850);
        EXPECT_LT(count, 1150);
    }
    EXPECT_EQ(random.below(1), 0U);
}

}  // namespace
}  // namespace tesserine
