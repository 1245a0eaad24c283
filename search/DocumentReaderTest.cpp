#include "search/DocumentReader.h"

#include "core/model/TaskEntities.h"
#include "core/services/LibraryFixture.h"

namespace tesserine {
namespace {

class DocumentReaderOfLibrary : public test::LibraryFixture {
protected:
    CDNote& insertNote(const std::string& title) {
        auto& note = context.insert<CDNote>();
        note.title = title;
        note.createdAt = clock.now();
        note.updatedAt = clock.now();
        return note;
    }
    CDAttachment& attach(CDNote& note, const std::string& name, const std::string& type) {
        auto& attachment = context.insert<CDAttachment>();
        attachment.filename = name;
        attachment.mimeType = type;
        attachment.note = &note;
        return attachment;
    }
    std::optional<IndexDocument> read(StoreObject& object) {
        const bool isNote = object.entity().kind == EntityKind::note;
        return reader().document({isNote ? SearchKind::note : SearchKind::task, object.key()});
    }
    DocumentReader reader() { return DocumentReader(context.reader()); }
    /// "title signature" of every document, as the listing for the coverage sees it.
    std::string entries() {
        std::string text;
        reader().visitEntries([&](const DocumentReader::Entry& entry) {
            const auto document = reader().document(entry.key);
            EXPECT_EQ(signature(entry.state), signature(stateOf(*document)));
            EXPECT_EQ(entry.id, document->id);
            text += document->title + " " + signature(entry.state) + "\n";
        });
        return text;
    }
};

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : ",") + word;
    }
    return text;
}

TEST_F(DocumentReaderOfLibrary, ReadsANoteWithAllThatIsSearched) {
    CDNotebook& parent = insertNotebook("Home");
    CDNote& note = insertNote("Bill");
    note.plainText = "the body";
    note.html = "<p>never read</p>";
    note.notebook = &insertNotebook("Money", &parent);
    note.tags.add(insertTag("paid"));
    note.tags.add(insertTag("2026"));
    note.hasLocation = true;
    note.latitude = 48.5;
    note.longitude = 9.25;
    note.isPinned = true;
    note.favoritedAt = clock.now();
    CDAttachment& scan = attach(note, "scan.pdf", "application/pdf");
    scan.extractedText = "printed";
    scan.ocrText = "seen";
    attach(note, "empty.epub", "application/epub+zip").extractedText = "";
    attach(note, "photo.jpeg", "image/jpeg").ocrText = "a cat";
    context.save();

    const auto document = read(note);
    ASSERT_TRUE(document);
    EXPECT_EQ(document->id, note.id.get());
    EXPECT_EQ(document->kind, SearchKind::note);
    EXPECT_EQ(document->title, "Bill");
    EXPECT_EQ(document->body, "the body");
    EXPECT_EQ(document->notebook, "Money");
    EXPECT_EQ(joined(document->tags), "paid,2026");
    EXPECT_EQ(document->attachmentText, "printed\nseen\n\na cat");
    EXPECT_EQ(joined(document->attachmentTypes), "pdf,epub,archive,jpg,image");
    EXPECT_TRUE(document->hasAttachment);
    EXPECT_FALSE(document->isTrashed);
    EXPECT_EQ(document->latitude, 48.5);
    EXPECT_EQ(document->longitude, 9.25);
    EXPECT_TRUE(document->favorite);
    EXPECT_EQ(document->favoritedAt, clock.now());
    ASSERT_EQ(document->attachments.size(), 3U);
    EXPECT_EQ(document->attachments[0].text, "printed\nseen");
    EXPECT_EQ(document->attachments[1].text, "");
    EXPECT_EQ(entries(), "Bill 1773478800|3|2|0\n");
}

TEST_F(DocumentReaderOfLibrary, ReadsEveryTaskAndEveryNoteButTemplates) {
    CDNote& trashed = insertNote("Trashed");
    trashed.trashedAt = clock.now();
    CDNote& nowhere = insertNote("Nowhere");
    nowhere.latitude = 1;  // means nothing without hasLocation
    CDNote& pattern = insertNote("Template");
    pattern.isTemplate = true;
    attach(pattern, "a.txt", "text/plain");
    auto& done = context.insert<CDTask>();
    done.title = "Done";
    done.details = "in detail";
    done.completedAt = clock.now();
    done.labels.add(insertTag("label"));
    auto& part = context.insert<CDTask>();
    part.title = "Part";
    part.parent = &done;
    context.save();

    EXPECT_TRUE(read(trashed)->isTrashed);
    EXPECT_EQ(read(nowhere)->latitude, std::nullopt);
    EXPECT_FALSE(read(pattern));
    EXPECT_EQ(read(done)->kind, SearchKind::task);
    EXPECT_EQ(read(done)->body, "in detail");
    EXPECT_EQ(joined(read(done)->tags), "label");
    EXPECT_EQ(
        entries(),
        "Trashed 1773478800|0|0|1\nNowhere 1773478800|0|0|0\nDone 0|0|0|0\nPart 0|0|0|0\n");
    EXPECT_EQ(reader().allKeys().size(), 4U);
    EXPECT_EQ(reader().keyOf(part.id->text()), (DocumentKey{SearchKind::task, part.key()}));
    EXPECT_EQ(reader().keyOf("no uid"), std::nullopt);
}

TEST(TypeWords, AreTheExtensionAndTheFamily) {
    struct Case {
        const char* type;
        const char* name;
        const char* words;
    };
    for (const auto& [type, name, words] : {
             Case{"image/png", "x.jpg", "png,image"},
             Case{"application/pdf", "", "pdf"},
             Case{"audio/mpeg", "", "mp3,audio"},
             Case{"text/csv", "", "csv,sheet"},
             Case{
                 "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet",
                 "",
                 "xlsx,sheet"},
             Case{"application/vnd.oasis.opendocument.presentation", "Talk.ODP", "odp,slides"},
             Case{"application/msword", "", "doc,document"},
             Case{"application/gzip", "", "gz,archive"},
             Case{"application/octet-stream", "a.b/c d", "bin"},
             Case{"application/octet-stream", "data.tooLongToBeOne", "bin"},
             Case{"", "x.Key", "key"},
         }) {
        EXPECT_EQ(joined(typeWords(type, name)), words) << type;
    }
}

}  // namespace
}  // namespace tesserine
