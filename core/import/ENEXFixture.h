#pragma once

#include "base/MD5.h"
#include "core/import/ENEXImporter.h"
#include "core/import/ImportFixture.h"

#include <string>
#include <string_view>
#include <vector>

namespace tesserine::test {

inline std::string md5(std::string_view bytes) {
    MD5 digest;
    digest.update(bytesOf(bytes));
    return digest.finishHex();
}

/// A file of a note, as an export writes it.
inline std::string resource(
    std::string_view bytes, const std::string& name, const std::string& type = "text/plain") {
    return "<resource><data encoding=\"base64\">\n" + base64(bytesOf(bytes)) + "\n</data><mime>"
           + type + "</mime><resource-attributes><file-name>" + name
           + "</file-name></resource-attributes></resource>";
}

inline std::string media(std::string_view bytes, const std::string& type = "text/plain") {
    return "<en-media hash=\"" + md5(bytes) + "\" type=\"" + type + "\"/>";
}

/// A note with this ENML in its `en-note`; `rest` are more elements of the note.
inline std::string enexNote(
    const std::string& title, const std::string& enml, const std::string& rest = {}) {
    return "<note><title>" + title
           + "</title><content>\n<![CDATA[<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE "
             "en-note SYSTEM \"http://xml.evernote.com/pub/enml2.dtd\"><en-note>"
           + enml + "</en-note>]]></content><created>20200203T040506Z</created>" + rest
           + "</note>\n";
}

inline std::string enexFile(const std::string& notes) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE en-export SYSTEM "
           "\"http://xml.evernote.com/pub/evernote-export4.dtd\">\n<en-export "
           "export-date=\"20260101T000000Z\" application=\"Evernote\" version=\"10.1\">\n"
           + notes + "</en-export>\n";
}

/// A library into which export files are imported.
class ENEXFixture : public ImportFixture {
public:
    std::filesystem::path file(const std::string& name = "Recipes.enex") const {
        return source() / name;
    }
    ImportReport importNotes(const std::string& notes, const ImportOptions& options = {}) {
        return importText(enexFile(notes), options);
    }
    ImportReport importText(const std::string& text, const ImportOptions& options = {}) {
        put("Recipes.enex", text);
        return importFiles({file()}, options);
    }
    ImportReport importFiles(
        const std::vector<std::filesystem::path>& files,
        const ImportOptions& options = {},
        const ImportControl& control = {}) {
        context().reset();
        const auto background = store().newBackgroundContext();
        return enex.run(*background, files, options, control);
    }

    ENEXImporter enex{{.clock = clock, .random = random, .calendar = calendar, .types = types}};
};

}  // namespace tesserine::test
