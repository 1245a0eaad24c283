#pragma once

#include "app/editor/PasteRules.h"
#include "core/model/NoteEntities.h"

#include <QObject>

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

class QMimeData;

namespace tesserine {
struct AttachmentDraft;
}

namespace tesserine::app {

class AppEnvironment;
class BodyEdit;
class NoticeBar;
class OpenNote;

/// Puts what was pasted, dropped or chosen into the open note: HTML, lines, pictures, files.
///
/// Files and pictures become attachments of the note, which are saved before the text that shows
/// them, so that a crash leaves no picture without its bytes.
class Paster final : public QObject {
    Q_OBJECT

public:
    struct Parts {
        AppEnvironment& environment;
        OpenNote& open;
        BodyEdit& body;
        NoticeBar& notice;
    };
    Paster(const Parts& parts, QObject* parent);

    void paste(const QMimeData& data);
    /// The clipboard as lines without styles.
    void pastePlain();
    void attach(const std::vector<std::filesystem::path>& files);
    /// Asks for files; `picturesOnly` for pictures.
    enum class Wanted { files, pictures };
    void choose(Wanted wanted);

private:
    void insert(const std::function<paste::Pasted()>& read);
    void pasteText(const QString& pasted);
    void pastePicture(const QMimeData& data);
    /// The HTML that shows the new attachment; empty when it could not be attached.
    std::string attachmentFor(AttachmentDraft draft);
    std::optional<std::string> adopted(const std::string& html);
    void insertObjects(const std::vector<std::string>& objects);

    Parts parts_;
};

}  // namespace tesserine::app
