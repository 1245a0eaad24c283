#include "base/Encoding.h"

#include "base/Digest.h"
#include "tests/support/SeededRandom.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace tesserine {
namespace {

TEST(Base64, AgreesWithTheTestVectorsOfItsStandard) {
    struct Case {
        const char* plain;
        const char* encoded;
    };
    for (const auto& [plain, encoded] : {
             Case{"", ""},
             Case{"f", "Zg=="},
             Case{"fo", "Zm8="},
             Case{"foo", "Zm9v"},
             Case{"foob", "Zm9vYg=="},
             Case{"fooba", "Zm9vYmE="},
             Case{"foobar", "Zm9vYmFy"},
             Case{"\xFB\xFF\xBF", "+/+/"},
         }) {
        EXPECT_EQ(base64(bytesOf(plain)), encoded);
        const auto decoded = fromBase64(encoded);
        ASSERT_TRUE(decoded) << encoded;
        EXPECT_EQ(textOf(*decoded), plain);
    }
}

TEST(Base64, IsReadStrictly) {
    for (const char* text : {
             "Zg=",
             "Zg",
             "Z===",
             "====",
             "=Zg=",
             "Zg==Zg==",
             "Zh==",
             "Zm9=",
             "Zm 9",
             "Zm9v\n",
             "Zm9_",
             "Zm9-",
             "Zg=A",
         }) {
        EXPECT_FALSE(fromBase64(text)) << text;
    }
}

TEST(Hex, IsReadInEitherCaseAndWrittenSmall) {
    EXPECT_EQ(hex(Bytes{0x00, 0xAF, 0xFF}), "00afff");
    EXPECT_EQ(fromHex("00aFFf"), (Bytes{0x00, 0xAF, 0xFF}));
    for (const char* text : {"0", "0g", " 0", "0x00", "é"}) {
        EXPECT_FALSE(fromHex(text)) << text;
    }
}

TEST(Encodings, KeepBytesOfEveryLength) {
    test::SeededRandom random(4);
    for (std::size_t length = 0; length < 200; ++length) {
        Bytes bytes(length);
        random.fill(bytes);
        ASSERT_EQ(fromBase64(base64(bytes)), bytes);
        ASSERT_EQ(fromHex(hex(bytes)), bytes);
    }
}

TEST(SHA256, AgreesWithItsStandardInPiecesAndFromAFile) {
    constexpr const char* ofABC =
        "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
    constexpr const char* ofMillion =
        "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0";
    EXPECT_EQ(sha256Hex({}), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(sha256Hex(bytesOf("abc")), ofABC);

    const std::string million(1'000'000, 'a');
    SHA256 digest;
    for (int i = 0; i < 1000; ++i) {
        digest.update(bytesOf(million).first(1000));
    }
    EXPECT_EQ(hex(digest.finish()), ofMillion);
    digest.update(bytesOf("abc"));  // starts afresh
    EXPECT_EQ(hex(digest.finish()), ofABC);

    const test::TemporaryFolder folder;
    test::putContent(folder / "a", million);
    EXPECT_EQ(sha256HexOfFile(folder / "a"), ofMillion);
}

}  // namespace
}  // namespace tesserine
