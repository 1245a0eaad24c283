#include "core/body/SelectiveEncryption.h"

#include "base/Encoding.h"
#include "core/body/CanonicalBody.h"
#include "core/body/PlainText.h"
#include "tests/support/SeededRandom.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace tesserine {
namespace {

using namespace std::string_literals;
using ErrorKind = SelectiveEncryptionError::Kind;

// These blobs were made with Python's hashlib and its package "cryptography".
const std::string emptyBlob = "AQABAgMEBQYHCAkKCwwNDg9kZWZnaGlqa2xtbm+yLZppYVPHYza48MIfXHaj";
const std::string millBlob =
    "AQABAgMEBQYHCAkKCwwNDg9kZWZnaGlqa2xtbm9sE/2ULEpT4nldUFCYm2aJvuMV+lZTqbAJpkNrAroPZAv6HhSHys7Mg"
    "HpNyQ2SOGh852fwcA==";
const std::string composedBlob = "AQABAgMEBQYHCAkKCwwNDg9kZWZnaGlqa2xtbm+G0OC6VNxGNS0ysls69c8JGw==";
const std::string notUTF8Blob = "AQABAgMEBQYHCAkKCwwNDg9kZWZnaGlqa2xtbm8HDO3KZqde3JH/X7EKeM4uI/Y=";
const std::string nulBlob = "AQABAgMEBQYHCAkKCwwNDg9kZWZnaGlqa2xtbm+Z8gd3nhq5X+WYExXKbqJyhF8U";

/// The failure of opening `blob`, none when it opens.
std::optional<ErrorKind> failure(const std::string& blob, const std::string& passphrase = "pass") {
    try {
        SelectiveEncryption::decrypt(blob, passphrase);
        return std::nullopt;
    } catch (const SelectiveEncryptionError& error) {
        return error.kind();
    }
}

std::string withByteChanged(const std::string& blob, std::size_t place) {
    Bytes bytes = *fromBase64(blob);
    bytes[place] ^= 0x80;
    return base64(bytes);
}

TEST(SelectiveEncryption, OpensWhatOtherProgramsLocked) {
    EXPECT_EQ(SelectiveEncryption::decrypt(emptyBlob, "pass").text(), "");
    EXPECT_EQ(
        SelectiveEncryption::decrypt(millBlob, "correct horse").text(),
        "Meet at the old mill.\nBring €5 🔒");
    EXPECT_EQ(SelectiveEncryption::decrypt(nulBlob, "pass").text(), "a\0b"s);
}

TEST(SelectiveEncryption, LocksTheSamePassageDifferentlyEachTime) {
    test::SeededRandom random(1);
    const std::string first = SelectiveEncryption::encrypt("€ 5", "pass", random);
    const std::string second = SelectiveEncryption::encrypt("€ 5", "pass", random);
    EXPECT_NE(first.substr(0, 20), second.substr(0, 20));  // the salts
    EXPECT_EQ(SelectiveEncryption::decrypt(first, "pass").text(), "€ 5");
    EXPECT_EQ(SelectiveEncryption::decrypt(second, "pass").text(), "€ 5");
    EXPECT_EQ(SelectiveEncryption::encrypt("", "pass", random).size(), 60U);
    EXPECT_THROW(SelectiveEncryption::encrypt("x", "", random), SelectiveEncryptionError);
}

TEST(SelectiveEncryption, RefusesEveryChangeOfABlob) {
    EXPECT_EQ(failure(withByteChanged(emptyBlob, 0)), ErrorKind::malformedCipherBlob);
    // First and last byte of salt, nonce and tag.
    for (const std::size_t place : {1U, 16U, 17U, 28U, 29U, 44U}) {
        SCOPED_TRACE(place);
        EXPECT_EQ(failure(withByteChanged(emptyBlob, place)), ErrorKind::wrongPassphrase);
    }
    EXPECT_EQ(failure(withByteChanged(nulBlob, 30)), ErrorKind::wrongPassphrase);  // ciphertext
}

TEST(SelectiveEncryption, TellsBlobsThatAreNoneBeforeLookingAtThePassphrase) {
    const std::string cut = emptyBlob.substr(0, 56) + "XHY=";  // 44 bytes
    for (const std::string& blob :
         {""s,
          "QUJD"s,
          cut,
          emptyBlob + "\n",
          " " + emptyBlob,
          emptyBlob.substr(0, 30) + "\n" + emptyBlob.substr(30),
          millBlob.substr(0, millBlob.size() - 2),            // without padding
          millBlob.substr(0, millBlob.size() - 3) + "B==",    // stray bits
          millBlob.substr(0, millBlob.size() - 4) + "=A=="s,  // padding in the middle
          "🔒"s}) {
        SCOPED_TRACE(blob);
        EXPECT_EQ(failure(blob, ""), ErrorKind::malformedCipherBlob);
        EXPECT_EQ(failure(blob), ErrorKind::malformedCipherBlob);
    }
    EXPECT_EQ(failure(emptyBlob, ""), ErrorKind::emptyPassphrase);
    EXPECT_EQ(failure(notUTF8Blob), ErrorKind::malformedCipherBlob);
}

TEST(SelectiveEncryption, UsesPassphrasesByteForByte) {
    EXPECT_EQ(failure(composedBlob, "p\u00E4ss"), std::nullopt);
    EXPECT_EQ(failure(composedBlob, "pa\u0308ss"), ErrorKind::wrongPassphrase);
    EXPECT_EQ(failure(composedBlob, "p\u00E4ss "), ErrorKind::wrongPassphrase);
}

TEST(SelectiveEncryption, SurvivesEverySaveEvenUnreadable) {
    for (const std::string& cipher : {millBlob, "later format: 2.0"s, "&quot;&amp;"s}) {
        SCOPED_TRACE(cipher);
        const std::string body = R"(<p>a</p><div class="ts-encrypted" data-ts-cipher=")" + cipher
                                 + "\">🔒 Encrypted text</div>";
        EXPECT_EQ(canonicalBody(body).html, body);
        EXPECT_EQ(PlainText::fromHTML(body), "a\n🔒 Encrypted text");
    }
}

}  // namespace
}  // namespace tesserine
