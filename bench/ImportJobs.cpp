#include "bench/ImportJobs.h"

#include "base/Encoding.h"
#include "base/MD5.h"
#include "bench/SampleLibrary.h"
#include "core/import/ENEXImporter.h"
#include "core/import/ENEXReader.h"
#include "core/model/NoteEntities.h"
#include "core/services/AttachmentService.h"
#include "core/services/NoteService.h"

#include <expat.h>

#include <fstream>
#include <memory>
#include <stdexcept>

namespace tesserine::bench {
namespace {

constexpr std::size_t notesPerImportBatch = 50;
constexpr std::size_t pieceSize = 65'536;

std::string escaped(const std::string& text) {
    std::string xml;
    for (const char c : text) {
        if (c == '&') {
            xml += "&amp;";
        } else if (c == '<') {
            xml += "&lt;";
        } else {
            xml += c;
        }
    }
    return xml;
}

std::string dateOf(Instant instant) {
    const std::string iso = instant.iso();
    return iso.substr(0, 4) + iso.substr(5, 2) + iso.substr(8, 2) + "T" + iso.substr(11, 2)
           + iso.substr(14, 2) + iso.substr(17, 2) + "Z";
}

/// base64 in lines of 76 characters, as exports have it.
std::string lines(const Bytes& data) {
    const std::string text = base64(data);
    std::string result;
    for (std::size_t i = 0; i < text.size(); i += 76) {
        result += text.substr(i, 76) + "\n";
    }
    return result;
}

std::string asENEX(const GeneratedNote& note) {
    std::string enml = note.html;
    std::string resources;
    for (const GeneratedAttachment& attachment : note.attachments) {
        const Bytes data = attachment.data();
        MD5 digest;
        digest.update(data);
        enml += "<en-media hash=\"" + digest.finishHex() + "\" type=\"" + attachment.type + "\"/>";
        resources += "<resource><data encoding=\"base64\">\n" + lines(data) + "</data><mime>"
                     + attachment.type + "</mime><resource-attributes><file-name>"
                     + attachment.filename + "</file-name></resource-attributes></resource>";
    }
    return "<note><title>" + escaped(note.title)
           + "</title><content><![CDATA[<?xml version=\"1.0\"?>"
           + "<!DOCTYPE en-note SYSTEM \"http://xml.evernote.com/pub/enml2.dtd\"><en-note>" + enml
           + "</en-note>]]></content><created>" + dateOf(note.createdAt) + "</created><updated>"
           + dateOf(note.updatedAt) + "</updated>" + resources + "</note>\n";
}

/// The sample as an export file; returns its size.
std::size_t writeFile(const std::filesystem::path& file, const NoteGenerator& generator) {
    std::ofstream out(file, std::ios::binary);
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<en-export>\n";
    for (std::size_t place = 0; place < generator.noteCount(); ++place) {
        out << asENEX(generator.note(place));
    }
    out << "</en-export>\n";
    out.close();
    if (!out) throw std::runtime_error("the export file could not be written");
    return std::filesystem::file_size(file);
}

/// The parser alone: every element and text is told, and nothing is done with it.
std::size_t passOver(const std::filesystem::path& file) {
    struct Free {
        void operator()(XML_Parser parser) const noexcept { XML_ParserFree(parser); }
    };
    const std::unique_ptr<XML_ParserStruct, Free> parser(XML_ParserCreate(nullptr));
    std::size_t notes = 0;
    XML_SetUserData(parser.get(), &notes);
    XML_SetElementHandler(
        parser.get(),
        [](void* count, const char* name, const char**) {
            if (std::string_view(name) == "note") ++*static_cast<std::size_t*>(count);
        },
        [](void*, const char*) {});
    XML_SetCharacterDataHandler(parser.get(), [](void*, const char*, int) {});
    std::ifstream in(file, std::ios::binary);
    std::string piece(pieceSize, '\0');
    bool isLast = false;
    while (!isLast) {
        in.read(piece.data(), static_cast<std::streamsize>(piece.size()));
        isLast = in.eof();
        const auto count = static_cast<int>(in.gcount());
        if (XML_Parse(parser.get(), piece.data(), count, isLast ? XML_TRUE : XML_FALSE)
            == XML_STATUS_ERROR) {
            throw std::runtime_error("the export file is no XML");
        }
    }
    return notes;
}

std::size_t read(const std::filesystem::path& file) {
    ENEXReader reader(file, ENEXReader::Files::content);
    std::size_t notes = 0;
    while (const auto note = reader.next()) {
        if (!note->failure) ++notes;
    }
    return notes;
}

/// A note with the bytes of its files at hand.
struct ReadyNote {
    GeneratedNote note;
    std::vector<Bytes> files;
};

std::vector<ReadyNote> readyNotes(const NoteGenerator& generator) {
    std::vector<ReadyNote> notes;
    for (GeneratedNote& note : generator.allNotes()) {
        std::vector<Bytes> files;
        for (const GeneratedAttachment& attachment : note.attachments) {
            files.push_back(attachment.data());
        }
        notes.push_back({std::move(note), std::move(files)});
    }
    return notes;
}

/// Puts the same notes and files into a library, saving as often as an import does.
void putIn(StoreContext& context, const std::vector<ReadyNote>& notes, const Clock& clock) {
    const NoteService service(clock);
    const mime::TypeRegistry types;
    const AttachmentService attachments(clock, types);
    std::size_t pending = 0;
    for (const auto& [generated, files] : notes) {
        CDNote& note =
            service.createNote(context, {.title = generated.title, .html = generated.html});
        for (std::size_t i = 0; i < files.size(); ++i) {
            const GeneratedAttachment& file = generated.attachments[i];
            attachments.insert(
                context,
                note,
                {.filename = file.filename, .declaredType = file.type, .data = files[i]});
        }
        if (++pending % notesPerImportBatch != 0) continue;
        context.save();
        context.reset();
    }
    context.save();
    context.reset();
}

}  // namespace

std::vector<Row> importJobs(
    const std::filesystem::path& folder, std::size_t noteCount, std::size_t rounds) {
    const ScratchFolder scratch(folder);
    const auto file = scratch.path() / "Sample.enex";
    const NoteGenerator generator(noteCount);
    const std::size_t byteCount = writeFile(file, generator);
    const auto notes = readyNotes(generator);

    std::size_t passed = 0;
    std::size_t found = 0;
    const Comparison reading = alternate(
        rounds,
        [&] { return secondsOf([&] { passed = passOver(file); }); },
        [&] { return secondsOf([&] { found = read(file); }); });
    if (passed != noteCount || found != noteCount) throw std::runtime_error("notes were lost");

    const SystemClock clock;
    SecureRandom random;
    const Calendar calendar("Europe/Berlin");
    const mime::TypeRegistry types;
    const ENEXImporter importer(
        {.clock = clock, .random = random, .calendar = calendar, .types = types});
    const Comparison importing = alternate(
        rounds,
        [&] {
            const ScratchFolder fresh(scratch.path() / "raw");
            OurLibrary library(fresh.path());
            const auto context = library.store().newBackgroundContext();
            return secondsOf([&] { putIn(*context, notes, clock); });
        },
        [&] {
            const ScratchFolder fresh(scratch.path() / "ours");
            OurLibrary library(fresh.path());
            const auto context = library.store().newBackgroundContext();
            std::size_t imported = 0;
            const double seconds =
                secondsOf([&] { imported = importer.run(*context, {file}, {}).imported; });
            if (imported != noteCount) throw std::runtime_error("notes were lost");
            return seconds;
        });
    const std::string size =
        grouped(noteCount) + " notes, " + grouped(byteCount / 1'000'000) + " MB";
    return {
        rowOf(
            "read an Evernote export of " + size,
            reading,
            [&](double seconds) { return megabytesPerSecond(byteCount, seconds); }),
        rowOf(
            "import it, beside putting its notes in",
            importing,
            [&](double seconds) {
                return perSecond(noteCount, seconds) + ", "
                       + megabytesPerSecond(byteCount, seconds);
            }),
    };
}

}  // namespace tesserine::bench
