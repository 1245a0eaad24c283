#include "core/services/AttachmentService.h"

#include "base/Digest.h"
#include "base/Files.h"
#include "core/services/LibraryFixture.h"
#include "core/services/Limits.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace tesserine {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

/// The beginning of a PNG of 640 by 400.
const std::string picture{textOf(*fromHex("89504e470d0a1a0a0000000d494844520000028000000190"))};

Bytes bytes(const std::string& text) {
    const auto span = bytesOf(text);
    return {span.begin(), span.end()};
}

class AttachmentServiceTest : public test::LibraryFixture {
public:
    CDAttachment& attach(CDNote& to, const std::string& filename, const std::string& content) {
        return service.insert(context, to, {.filename = filename, .data = bytes(content)});
    }
    std::string refusal(AttachmentDraft draft) {
        try {
            service.insert(context, note, std::move(draft));
        } catch (const AttachmentError& error) {
            return error.what();
        }
        return "attached";
    }

    mime::TypeRegistry registry;
    NoteService notes{clock};
    AttachmentService service{clock, registry};
    CDNote& note{notes.createNote(context, {.title = "Plan", .html = "<p>x</p>"})};
};

TEST_F(AttachmentServiceTest, ARowTellsWhatTheFileIs) {
    const CDAttachment& made = service.insert(
        context,
        note,
        {.filename = "/home/me/Holiday.jpeg",
         .declaredType = "Image/JPEG; q=1",
         .data = bytes(picture),
         .sourceKind = "paste"});
    EXPECT_EQ(made.filename, "Holiday.png") << "its content is a PNG";
    EXPECT_EQ(made.mimeType, "image/png");
    EXPECT_EQ(made.byteCount, 24);
    EXPECT_EQ(made.sha256, sha256Hex(bytes(picture)));
    EXPECT_EQ(made.ocrStatus, "pending");
    EXPECT_EQ(made.sourceKind, "paste");
    EXPECT_EQ(made.width, 640);
    EXPECT_EQ(made.height, 400);
    EXPECT_EQ(made.createdAt, clock.now());
    EXPECT_EQ(made.note, &note);
    EXPECT_EQ(note.html, "<p>x</p>") << "the body is the caller's";
}

TEST_F(AttachmentServiceTest, NamesKeepAnExtensionThatIsRight) {
    struct Case {
        const char* filename;
        const char* type;
        const char* stored;
    };
    for (const auto& [filename, type, stored] : {
             Case{"photo.png", "image/png", "photo.png"},
             Case{"photo.PNG", "image/png", "photo.PNG"},
             Case{"photo.gif", "image/png", "photo.png"},
             Case{"photo", "image/png", "photo.png"},
             Case{"Report 1.2", "application/pdf", "Report 1.2.pdf"},
             Case{"v0.5 draft", "application/pdf", "v0.5 draft.pdf"},
             Case{"data.xyz", "application/octet-stream", "data.xyz"},
             Case{"a/b\\c.txt", "text/plain", "c.txt"},
             Case{"", "image/png", "Image.png"},
             Case{"  ", "application/pdf", "Attachment.pdf"},
             Case{"", "application/octet-stream", "Attachment.bin"},
         }) {
        EXPECT_EQ(service.storedFilename(filename, type), stored) << filename;
    }
}

TEST_F(AttachmentServiceTest, EmptyOversizedAndTooManyFilesAreRefusedWithASentence) {
    EXPECT_EQ(
        refusal({.filename = "in/empty.txt"}),
        "empty.txt is empty, so there was nothing to attach.");
    AttachmentDraft huge{.filename = "Huge.mov"};
    huge.data.resize(limits::attachmentBytes + 1);
    EXPECT_EQ(
        refusal(std::move(huge)),
        "Huge.mov — larger than the 100 MB limit, so it was not attached.");
    EXPECT_TRUE(note.attachments.empty());

    const test::TemporaryFolder folder;
    test::putContent(folder / "empty.txt", "");
    EXPECT_THROW(service.insertFile(context, note, folder / "empty.txt"), AttachmentError);
    EXPECT_THROW(service.insertFile(context, note, folder / "none.txt"), FileError);
    test::putContent(folder / "plan.csv", "a,b");
    EXPECT_EQ(service.insertFile(context, note, folder / "plan.csv").mimeType, "text/csv");
}

TEST_F(AttachmentServiceTest, TheSameBytesTwiceInOneNoteAreOneAttachment) {
    CDAttachment& first = attach(note, "a.txt", "same");
    EXPECT_EQ(&attach(note, "b.txt", "same"), &first);
    CDNote& other = notes.createNote(context, {.title = "Other"});
    EXPECT_NE(&attach(other, "a.txt", "same"), &first);
    EXPECT_EQ(context.count<CDAttachment>(), 2U);
}

TEST_F(AttachmentServiceTest, AFileIsShownInTheBodyByItsKindAndTheBodyStaysCanonical) {
    const auto block = [](const std::string& kind, const std::string& name) {
        return R"(<div data-ts-attachment="ID" data-ts-kind=")" + kind + "\">" + name + "</div>";
    };
    struct Case {
        const char* filename;
        std::string content;
        const char* sourceKind;
        std::string element;
    };
    for (const auto& [filename, content, sourceKind, element] : {
             Case{
                 "p.png",
                 picture,
                 "file",
                 R"(<img src="tesserine-attachment://ID" width="640" height="400">)"},
             Case{"R&D <1>.pdf", "%PDF-1", "file", block("pdf", "R&amp;D -1-.pdf")},
             Case{"s.pdf", "%PDF-2", "scan", block("scan", "s.pdf")},
             Case{"a.mp3", "ID3", "recording", block("audio", "a.mp3")},
             Case{"drawing.svg", "<svg/>", "file", block("file", "drawing.svg")},
         }) {
        SCOPED_TRACE(filename);
        CDAttachment& made = service.insert(
            context,
            note,
            {.filename = filename, .data = bytes(content), .sourceKind = sourceKind});
        std::string expected = element;
        expected.replace(expected.find("ID"), 2, made.id->text());
        EXPECT_EQ(AttachmentService::bodyElement(made), expected);

        service.appendToBody(context, note, {&made});
        EXPECT_THAT(*note.html, HasSubstr(expected));
        EXPECT_EQ(attachmentReferences(*note.html).back(), made.id);
    }
    EXPECT_EQ(attachmentReferences(*note.html).size(), 5U);
    EXPECT_EQ(note.contentVersion, 6);
}

TEST_F(AttachmentServiceTest, ACopySurvivesTheDeletionOfItsSource) {
    CDAttachment& shown = attach(note, "p.png", picture);
    CDAttachment& file = attach(note, "f.txt", "file");
    attach(note, "unused.txt", "not in the text");
    service.appendToBody(context, note, {&shown, &file, &shown});
    shown.ocrText = "read";
    context.save();

    CDNote& copy = notes.duplicateNote(context, note);
    EXPECT_EQ(service.cloneReferenced(context, copy), 2U);
    EXPECT_EQ(service.cloneReferenced(context, copy), 0U) << "they are its own now";
    EXPECT_EQ(copy.contentVersion, 1);
    notes.deleteNote(context, note);
    context.save();

    const auto references = attachmentReferences(*copy.html);
    ASSERT_EQ(references.size(), 2U);
    const CDAttachment* kept = context.find<CDAttachment>(references.front());
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(kept->note, &copy);
    EXPECT_EQ(kept->fileData, bytes(picture));
    EXPECT_EQ(kept->ocrText, "read");
    EXPECT_EQ(context.count<CDAttachment>(), 2U);
}

TEST_F(AttachmentServiceTest, SavingNeverOverwritesUnaskedAndTellsOfDamage) {
    const test::TemporaryFolder folder;
    CDAttachment& made = attach(note, "a.txt", "content");
    EXPECT_EQ(service.saveToFile(made, folder / "a.txt"), AttachmentService::Integrity::intact);
    EXPECT_EQ(test::contentOf(folder / "a.txt"), "content");

    made.fileData = bytes("changed");
    try {
        service.saveToFile(made, folder / "a.txt");
        FAIL() << "a file was overwritten";
    } catch (const AttachmentError& error) {
        EXPECT_THAT(error.what(), testing::EndsWith("a.txt” already exists."));
    }
    EXPECT_EQ(test::contentOf(folder / "a.txt"), "content");
    EXPECT_EQ(
        service.saveToFile(made, folder / "a.txt", AttachmentService::IfExists::replace),
        AttachmentService::Integrity::damaged);
    EXPECT_EQ(test::contentOf(folder / "a.txt"), "changed");

    made.fileData = std::nullopt;
    EXPECT_THROW(service.saveToFile(made, folder / "b.txt"), AttachmentError);
}

TEST_F(AttachmentServiceTest, DeletingTakesTheElementOutAndRevisionsThatNeedItAreNamed) {
    CDAttachment& made = attach(note, "f.txt", "file");
    service.appendToBody(context, note, {&made});
    advance(std::chrono::seconds(400));
    notes.updateNote(context, note, {.html = *note.html + "<p>more</p>"});
    EXPECT_EQ(service.referringRevisions(made).size(), 1U);

    service.deleteAttachment(context, made);
    context.save();
    EXPECT_EQ(note.html, "<p>x</p><p>more</p>");
    EXPECT_TRUE(note.attachments.empty());
}

TEST(AttachmentReferences, AreReadFromElementsAndNotFromText) {
    const std::string one = "11111111-2222-3333-4444-AAAAAAAAAAAA";
    const std::string two = "55555555-6666-7777-8888-BBBBBBBBBBBB";
    const std::string body =
        "<p>tesserine-attachment://" + two + " in words<img src=\"tesserine-attachment://" + one
        + "\"></p><div data-ts-attachment=\"" + two + R"(" data-ts-kind="file">f</div>)"
        + "<img src=\"https://example.org/" + one + ".png\">";
    EXPECT_THAT(attachmentReferences(body), ElementsAre(*Uuid::parse(one), *Uuid::parse(two)));
    EXPECT_THAT(attachmentReferences("<p>none</p>"), IsEmpty());

    const std::string changed =
        withReplacedReferences(body, {{*Uuid::parse(two), *Uuid::parse(one)}});
    EXPECT_THAT(changed, HasSubstr("attachment://" + two + " in words"));
    EXPECT_THAT(changed, HasSubstr("data-ts-attachment=\"" + one + "\""));
    EXPECT_THAT(withoutReferences(body, *Uuid::parse(one)), Not(HasSubstr("attachment://" + one)));
    EXPECT_THAT(
        withoutReferences(body, *Uuid::parse(one)), HasSubstr("https://example.org/" + one));
}

}  // namespace
}  // namespace tesserine
