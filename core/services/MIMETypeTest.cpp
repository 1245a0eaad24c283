#include "core/services/MIMEType.h"

#include "base/Encoding.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace tesserine::mime {
namespace {

using namespace std::string_literals;

TEST(MIMEType, DeclaredTypesAreCleanedOrGivenUp) {
    struct Case {
        std::optional<std::string> declared;
        const char* type;
    };
    for (const auto& [declared, type] : {
             Case{"Image/PNG", "image/png"},
             Case{" \n text/html\t", "text/html"},
             Case{"text/html; charset=utf-8", "text/html"},
             Case{"text/html ; charset=utf-8", "application/octet-stream"},  // the space stays
             Case{"text/html;", "text/html"},
             Case{"; charset=utf-8", "application/octet-stream"},
             Case{std::nullopt, "application/octet-stream"},
             Case{"", "application/octet-stream"},
             Case{" \u00A0 ", "application/octet-stream"},
             Case{"imäge/png", "application/octet-stream"},
             Case{"image/\u212A", "application/octet-stream"},  // a sign that folds to "k"
             Case{"x_y/z", "application/octet-stream"},
             Case{"image/svg+xml", "image/svg+xml"},
             Case{"png", "png"},  // no slash is asked for
         }) {
        EXPECT_EQ(normalised(declared), type) << declared.value_or("(none)");
    }
}

TEST(MIMEType, ContentShowsItsTypeWhereItIsLongEnough) {
    const std::string box = "\0\0\0\x18"s;
    struct Case {
        std::string content;
        const char* type;
    };
    for (const auto& [content, type] : {
             Case{"", "none"},
             Case{"\x89PNG", "image/png"},
             Case{"\x89PN", "none"},
             Case{"\xFF\xD8\xFF", "image/jpeg"},
             Case{"\xFF\xD8", "none"},
             Case{"GIF8", "image/gif"},
             Case{"%PDF-1.7", "application/pdf"},
             Case{"RIFF....WEBP", "image/webp"},
             Case{"RIFF....WAVE", "none"},
             Case{"RIFF", "none"},
             Case{"BM", "image/bmp"},
             Case{"II*\0"s, "image/tiff"},
             Case{"MM\0*"s, "image/tiff"},
             Case{"II*\1", "none"},
             Case{"ID3", "audio/mpeg"},
             Case{"PK\3\4", "application/zip"},
             Case{"PK\5\6", "none"},
             Case{"\x1F\x8B", "application/gzip"},
             Case{"\0\0\1\0"s, "image/x-icon"},
             Case{box + "ftypM4A ", "audio/mp4"},
             Case{box + "ftypqt  ", "video/quicktime"},
             Case{box + "ftypmsf1", "image/heic"},
             Case{box + "ftypavis", "image/avif"},
             Case{box + "ftypisom", "video/mp4"},
             Case{box + "ftypm4a ", "video/mp4"},  // brands know case
             Case{box + "ftyp", "none"},
             Case{"hello", "none"},
         }) {
        EXPECT_EQ(sniffed(bytesOf(content)).value_or("none"), type) << content;
    }
}

TEST(MIMEType, ContentWinsExceptWhereItSaysLittle) {
    struct Case {
        const char* declared;
        const char* sniffed;
        const char* ofExtension;
        const char* type;
    };
    const char* const unknown = "application/octet-stream";
    const char* const word =
        "application/vnd.openxmlformats-officedocument.wordprocessingml.document";
    for (const auto& [declared, found, named, type] : {
             Case{unknown, "", "text/csv", "text/csv"},
             Case{"text/plain", "", "text/csv", "text/plain"},
             Case{unknown, "", unknown, unknown},
             Case{"text/plain", "image/png", "text/plain", "image/png"},
             Case{unknown, "application/zip", word, word},
             Case{"application/zip", "application/zip", word, word},
             Case{"application/epub+zip", "application/zip", word, "application/epub+zip"},
             Case{unknown, "application/gzip", "application/zip", "application/gzip"},
             Case{unknown, "image/bmp", "text/plain", "text/plain"},
             Case{"text/markdown", "image/bmp", unknown, "text/markdown"},
             Case{"image/png", "image/bmp", "image/png", "image/bmp"},
             Case{unknown, "image/bmp", unknown, "image/bmp"},
             Case{"audio/mp4", "video/mp4", unknown, "audio/mp4"},
             Case{"video/3gpp", "video/mp4", unknown, "video/3gpp"},
             Case{"text/plain", "video/mp4", "audio/mp4", "video/mp4"},
         }) {
        const std::string shown(found);
        const Evidence evidence{
            .declared = declared,
            .sniffed = shown.empty() ? std::nullopt : std::optional(shown),
            .ofExtension = named};
        EXPECT_EQ(chosen(evidence), type) << declared << " " << found << " " << named;
    }
}

/// A database with the oddities of the real one.
class TypeRegistryTest : public ::testing::Test {
public:
    TypeRegistryTest() {
        std::filesystem::create_directories(folder / "mime/image");
        test::putContent(
            folder / "mime/globs2",
            "# made by a tool\n"
            "80:text/html:*.htm\n"
            "50:application/xhtml+xml:*.htm\n"
            "50:video/mp2t:*.ts\n"
            "50:text/vnd.trolltech.linguist:*.ts\n"
            "50:image/heif:*.heic\n"
            "50:audio/AMR:*.amr\n"
            "50:image/vnd.microsoft.icon:*.ico\n"
            "50:audio/x-wav:*.wav\n"
            "50:application/epub+zip:*.epub\n"
            "50:image/x-odd:*.odd2\n"
            "50:image/x-odd:*.odd1\n"
            "50:text/x-csrc:*.PQR:cs\n"
            "60:text/x-makefile:makefile\n"
            "x\n");
        test::putContent(folder / "mime/aliases", "image/x-icon image/vnd.microsoft.icon\n");
        test::putContent(
            folder / "mime/image/x-odd.xml",
            R"(<mime-type><glob pattern="odd*"/><glob pattern="*.odd1"/></mime-type>)");
        registry = TypeRegistry::find("relative:/nowhere:" + folder.path().string());
    }

    test::TemporaryFolder folder;
    TypeRegistry registry;
};

TEST_F(TypeRegistryTest, AnExtensionsTypeIsTheRegistrysElseTheTables) {
    struct Case {
        const char* extension;
        const char* type;
    };
    for (const auto& [extension, type] : {
             Case{"HTM", "text/html"},                   // the weightier claim
             Case{"ts", "text/vnd.trolltech.linguist"},  // equal claims: by name
             Case{"heic", "image/heic"},
             Case{"amr", "audio/amr"},
             Case{"ico", "image/x-icon"},
             Case{"wav", "audio/x-wav"},
             Case{"ink", "application/vnd.evernote.ink"},
             Case{"Png", "image/png"},
             Case{"xyz", "application/octet-stream"},
             Case{"pqr", "application/octet-stream"},  // asks for capitals
             Case{"", "application/octet-stream"},
         }) {
        EXPECT_EQ(ofExtension(extension, registry), type) << extension;
    }
    EXPECT_EQ(ofExtension("wav", TypeRegistry{}), "audio/wav");
    EXPECT_EQ(ofExtension("epub", TypeRegistry{}), "application/octet-stream");
}

TEST_F(TypeRegistryTest, ATypesExtensionIsTheTablesElseTheRegistrys) {
    struct Case {
        const char* type;
        const char* extension;
    };
    for (const auto& [type, extension] : {
             Case{"image/jpeg", "jpg"},
             Case{"audio/x-wav", "wav"},
             Case{"image/x-icon", "ico"},
             Case{"application/epub+zip", "epub"},
             Case{"image/x-odd", "odd1"},  // as its description orders them
             Case{"text/x-makefile", "bin"},
             Case{"../../etc/passwd", "bin"},
             Case{"application/octet-stream", "bin"},
         }) {
        EXPECT_EQ(extensionOf(type, registry), extension) << type;
    }
}

TEST(MIMEType, PicturesAndPDFFilesWaitForRecognition) {
    EXPECT_EQ(ocrStatus("image/x-anything"), "pending");
    EXPECT_EQ(ocrStatus("application/pdf"), "pending");
    EXPECT_EQ(ocrStatus("application/pdfx"), "notApplicable");
    EXPECT_EQ(ocrStatus("video/mp4"), "notApplicable");
}

}  // namespace
}  // namespace tesserine::mime
