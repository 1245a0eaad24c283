#include "core/import/ENEXReader.h"

#include "base/Files.h"
#include "core/import/ENEXFixture.h"

#include <gmock/gmock.h>

namespace tesserine {
namespace {

using test::enexFile;
using test::enexNote;
using test::resource;

class ENEXReaderTest : public ::testing::Test {
public:
    /// What is read of a file with this content: "One" for each whole note, "Two: sentence" for
    /// each that failed, each on its line.
    std::string read(const std::string& content) const {
        test::putContent(path(), content);
        ENEXReader reader(path(), ENEXReader::Files::content);
        std::string text;
        while (const auto note = reader.next()) {
            text += note->title + (note->failure ? ": " + *note->failure : "") + "\n";
        }
        return text;
    }
    std::filesystem::path path() const { return folder.path() / "a.enex"; }

    test::TemporaryFolder folder;
};

const std::string threeNotes = enexNote("One", "1") + enexNote("Two", "2") + enexNote("Three", "3");

TEST_F(ENEXReaderTest, OtherFilesAreRefusedByName) {
    const std::string refused = "a.enex: “a.enex” is not an Evernote export file.\n";
    for (const std::string& content :
         {std::string(),
          std::string("# Markdown"),
          std::string("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16),
          std::string("<html><body><note><title>x</title></note></body></html>"),
          std::string("<html><note><title>x</title></note>"),
          std::string("<?xml version=\"1.0\"?>"),
          std::string(200'000, '<')}) {
        SCOPED_TRACE(content.substr(0, 20));
        EXPECT_EQ(read(content), refused);
    }
    EXPECT_THROW(ENEXReader(folder.path() / "none.enex", ENEXReader::Files::content), FileError);
    EXPECT_THROW(ENEXReader(folder.path(), ENEXReader::Files::content), FileError);
}

TEST_F(ENEXReaderTest, DeclaredEntitiesAreRefusedBeforeTheyAreUsed) {
    const std::string refused =
        "a.enex: “a.enex” declares entities of its own, which may be an attack; it was not imported.\n";
    const std::string rest = "]><en-export><note><title>&c;</title></note></en-export>";
    for (const std::string& declarations : {
             std::string(R"(<!ENTITY a "ha"><!ENTITY b "&a;&a;"><!ENTITY c "&b;&b;">)"),
             std::string(R"(<!ENTITY c SYSTEM "file:///etc/passwd">)"),
             std::string(R"(<!ENTITY % c SYSTEM "http://example.org/x.dtd"> %c;)"),
         }) {
        SCOPED_TRACE(declarations);
        EXPECT_EQ(read("<!DOCTYPE en-export [" + declarations + rest), refused);
    }
}

TEST_F(ENEXReaderTest, AFileThatBreaksOffGivesItsWholeNotesAndSaysWhere) {
    const std::string whole = enexFile(threeNotes);
    const std::size_t inThird = whole.find("<title>Three") + 20;
    const std::string after2 = " after 2 whole notes.\n";
    EXPECT_EQ(
        read(whole.substr(0, inThird)),
        "One\nTwo\nThree: “a.enex” breaks off at byte " + std::to_string(inThird) + "," + after2);
    const std::size_t afterSecond = whole.find("<note><title>Three");
    EXPECT_EQ(
        read(whole.substr(0, afterSecond)),
        "One\nTwo\na.enex: “a.enex” breaks off at byte " + std::to_string(afterSecond) + ","
            + after2);
    // Wherever it is cut, no whole note before that place is lost.
    for (std::size_t length = whole.find("<en-export"); length < whole.size(); length += 7) {
        const std::string cut = whole.substr(0, length);
        std::size_t notes = 0;
        for (auto at = cut.find("</note>"); at != std::string::npos;
             at = cut.find("</note>", at + 1)) {
            ++notes;
        }
        const std::string text = read(cut);
        const auto lines = std::ranges::count(text, '\n');
        EXPECT_EQ(static_cast<std::size_t>(lines), notes + 1) << text;
    }
}

TEST_F(ENEXReaderTest, APlaceThatCannotBeReadCostsItsNoteOnly) {
    const std::string deep = [] {
        std::string tags;
        for (int i = 0; i < 200'000; ++i) {
            tags += "<x>";
        }
        return tags;
    }();
    struct Case {
        const char* what;
        std::string damage;  // in the second note
        const char* reason;
    };
    for (const auto& [what, damage, reason] : {
             Case{"a tag that is not closed", "<b>", "mismatched tag"},
             Case{"a bare ampersand", "<source>a & b</source>", "not well-formed (invalid token)"},
             Case{"an undeclared entity", "<source>&nobody;</source>", ""},
             Case{"deep nesting", deep, "elements are nested too deep"},
             Case{
                 "a tag without end",
                 "<x a=\"" + std::string(5'000'000, 'y'),
                 "a part of it is too long"},
         }) {
        SCOPED_TRACE(what);
        const std::string text = read(
            enexFile(enexNote("One", "1") + enexNote("Two", "2", damage) + enexNote("Three", "3")));
        EXPECT_THAT(text, testing::StartsWith("One\nTwo"));
        EXPECT_THAT(text, testing::EndsWith("Three\n"));
        EXPECT_THAT(text, testing::HasSubstr(reason));
    }
    // However many there are, reading ends.
    std::string many;
    for (int i = 0; i < 3'000; ++i) {
        many += "<note><";
    }
    const std::string text = read(enexFile(many));
    EXPECT_EQ(std::ranges::count(text, '\n'), static_cast<int>(ENEXReader::mostFailures));
}

TEST_F(ENEXReaderTest, BytesThatNoXMLMayHoldAreReplacedAndSaid) {
    const std::string bad = "bell \x07 zero " + std::string(1, '\0') + " latin \xE9t\xE9";
    for (std::size_t shift = 0; shift < 4; ++shift) {
        // Pieces of the file end everywhere in what follows.
        const std::string padding = "<!--" + std::string(65'536 - 700 - shift * 3, 'x') + "-->";
        test::putContent(path(), enexFile(padding + enexNote("One", "é") + enexNote("Two", bad)));
        ENEXReader reader(path(), ENEXReader::Files::content);
        const auto one = reader.next();
        EXPECT_FALSE(one->failure);
        EXPECT_THAT(one->content, testing::HasSubstr(">é<"));
        const auto two = reader.next();
        EXPECT_THAT(two->content, testing::HasSubstr("bell   zero   latin ?t?"));
        EXPECT_TRUE(two->wasMended);
        // The source is what the file holds.
        EXPECT_THAT(std::string(textOf(two->source)), testing::HasSubstr(bad));
    }
}

TEST_F(ENEXReaderTest, OtherEncodingsAreRead) {
    const auto in = [](const std::string& encoding, const std::string& title) {
        return "<?xml version='1.0' encoding='" + encoding + "'?><en-export>"
               + "<note><title>cut</titel></note><note><title>" + title
               + "</title></note></en-export>";
    };
    // Also after a place where reading began anew.
    EXPECT_THAT(read(in("ISO-8859-1", "caf\xE9")), testing::EndsWith("\ncafé\n"));
    EXPECT_THAT(read(in("Windows-1252", "\x84\xE9\x93")), testing::EndsWith("\n„é“\n"));
    EXPECT_EQ(
        read(in("KOI8-R", "\xC1")),
        "a.enex: “a.enex” is in an encoding that is not known; save it as UTF-8.\n");
    std::string utf16 = "\xFE\xFF";
    for (const char c : std::string("<en-export><note><title>tea</title></note></en-export>")) {
        utf16 += '\0';
        utf16 += c;
    }
    EXPECT_EQ(read(utf16), "tea\n");
}

TEST_F(ENEXReaderTest, FilesAreDecodedAsTheyStreamBy) {
    struct Case {
        const char* what;
        std::string data;
        ENEXResource::State state;
        std::string bytes;
    };
    using State = ENEXResource::State;
    const std::string large(200'000, 'q');
    for (const auto& [what, data, state, bytes] : {
             Case{"lines", "cGxh\r\nbg\n==", State::whole, "plan"},
             Case{"nothing", "", State::whole, ""},
             Case{"in CDATA", "<![CDATA[cGxhbg==]]>", State::whole, "plan"},
             Case{"line ends as references", "cGxh&#10;bg==", State::whole, "plan"},
             Case{"large", base64(bytesOf(large)), State::whole, large},
             Case{"cut", "cGxhb", State::damaged, ""},
             Case{"no padding", "cGxhbg", State::damaged, ""},
             Case{"goes on after its end", "cGxhbg==cGxhbg==", State::damaged, ""},
             Case{"misplaced padding", "c=xh", State::damaged, ""},
             Case{"another alphabet", "cGxh*bg=", State::damaged, ""},
         }) {
        SCOPED_TRACE(what);
        const std::string rest = "<resource><data encoding=\"base64\">" + data
                                 + "</data></resource>" + resource("next", "next.txt");
        test::putContent(path(), enexFile(enexNote("One", "", rest)));
        ENEXReader reader(path(), ENEXReader::Files::content);
        const auto note = reader.next();
        ASSERT_EQ(note->resources.size(), 2U);
        const ENEXResource& first = note->resources[0];
        EXPECT_EQ(first.state, state);
        if (state == State::whole) {
            EXPECT_EQ(first.byteCount, bytes.size());
            EXPECT_EQ(textOf(note->files.read(first.offset, bytes.size())), bytes);
            EXPECT_EQ(first.md5, test::md5(bytes));
            ENEXReader again(path(), ENEXReader::Files::digests);
            EXPECT_EQ(again.next()->resources[0].digest, sha256(bytesOf(bytes)));
        }
        const ENEXResource& second = note->resources[1];
        EXPECT_EQ(textOf(note->files.read(second.offset, 4)), "next");
    }
}

TEST_F(ENEXReaderTest, LargeNotesAreBounded) {
    const std::string huge(ENEXReader::mostSourceBytes + 1, 'x');
    const std::string text = read(enexFile(enexNote("One", huge) + enexNote("Two", "2")));
    EXPECT_THAT(text, testing::StartsWith("One: This note is larger than 10 MB"));
    EXPECT_THAT(text, testing::EndsWith("\nTwo\n"));
}

TEST(ByteSpool, KeepsWhatIsLargerThanItsMemoryInAFile) {
    ByteSpool spool;
    const Bytes first(ByteSpool::mostInMemory - 10, 1);
    const Bytes second(1'000, 2);
    spool.append(first);
    spool.append(second);
    spool.append(bytesOf("third"));
    EXPECT_EQ(spool.read(0, first.size()), first);
    EXPECT_EQ(spool.read(first.size(), second.size()), second);
    spool.truncate(first.size() + second.size());
    spool.append(bytesOf("other"));
    EXPECT_EQ(textOf(spool.read(first.size() + second.size(), 5)), "other");
}

}  // namespace
}  // namespace tesserine
