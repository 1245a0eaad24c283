#include "base/Cipher.h"

#include <gtest/gtest.h>

#include <string>

namespace tesserine {
namespace {

SecretBytes countingKey() {
    SecretBytes key(cipher::keySize);
    for (std::size_t i = 0; i < key.size(); ++i) {
        key.bytes()[i] = static_cast<std::uint8_t>(i);
    }
    return key;
}

const Bytes nonce{100, 101, 102, 103, 104, 105, 106, 107, 108, 109, 110, 111};

// The expected values were made with Python's hashlib and its package "cryptography".

TEST(Cipher, DerivesTheKeyThatOthersDerive) {
    const SecretBytes key = cipher::deriveKey("password", bytesOf("salt"), 4096);
    EXPECT_EQ(hex(key.bytes()), "c5e478d59288c841aa530db6845c4c8d962893a001ce4e11a4963873aa98134a");
    EXPECT_NE(hex(cipher::deriveKey("", bytesOf("salt"), 1).bytes()), hex(key.bytes()));
}

TEST(Cipher, SealsWhatOthersOpen) {
    for (const auto& [plain, sealed] : {
             std::pair{"", "609bd50f6ad76df665f048ba8c5fd706"},
             std::pair{
                 "attack at dawn", "296faa071a8276ff4a423b89ad0b5537a90cc7db07314a46d350158ee5c0"},
         }) {
        SCOPED_TRACE(plain);
        const Bytes made = cipher::seal(countingKey(), nonce, bytesOf(plain));
        EXPECT_EQ(hex(made), hex(nonce) + sealed);
        const auto opened = cipher::open(countingKey(), made);
        ASSERT_TRUE(opened.has_value());
        EXPECT_EQ(opened->text(), plain);
    }
}

TEST(Cipher, OpensNothingThatWasChangedOrCut) {
    const Bytes sealed = cipher::seal(countingKey(), nonce, bytesOf("attack at dawn"));
    for (std::size_t i = 0; i < sealed.size(); ++i) {
        SCOPED_TRACE(i);
        Bytes changed = sealed;
        changed[i] ^= 0x01;
        EXPECT_FALSE(cipher::open(countingKey(), changed).has_value());
        EXPECT_FALSE(cipher::open(countingKey(), std::span(sealed).first(i)).has_value());
    }
    EXPECT_FALSE(cipher::open(SecretBytes(cipher::keySize), sealed).has_value());
}

TEST(SecretBytes, GrowsAndShrinksWithoutLosingWhatItHolds) {
    SecretBytes secret;
    std::string expected;
    for (int i = 0; i < 2'000; ++i) {
        const std::string piece = std::to_string(i);
        secret.append(piece);
        expected += piece;
    }
    EXPECT_EQ(secret.text(), expected);
    secret.shrink(10);
    EXPECT_EQ(secret.text(), "0123456789");

    SecretBytes moved = std::move(secret);
    EXPECT_EQ(moved.text(), "0123456789");
    moved = SecretBytes::copyOf("other");
    EXPECT_EQ(moved.text(), "other");
}

TEST(SecretBytes, WipesATextBeyondItsLength) {
    std::string text(100, 'x');
    text.resize(3);
    const char* const memory = text.data();
    wipe(text);
    EXPECT_TRUE(text.empty());
    EXPECT_EQ(std::string(memory, 50).find('x'), std::string::npos);
}

}  // namespace
}  // namespace tesserine
