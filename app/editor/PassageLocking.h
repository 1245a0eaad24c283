#pragma once

#include "base/SecretBytes.h"
#include "core/body/PassageSelection.h"

#include <QObject>

#include <functional>
#include <string>

namespace tesserine::app {

class AppEnvironment;
class BodyEdit;
class NoticeBar;
class OpenNote;
class UnlockDialog;

/// Locks the selection of the open note with a passphrase, shows locked passages, and takes locks
/// away for good.
///
/// Keys are derived in the background. After locking, what else held the text is gone as far as
/// this program reaches: earlier versions when the user says so, what could be undone, the search
/// index, the free pages and the journal of the library.
class PassageLocking final : public QObject {
    Q_OBJECT

public:
    struct Parts {
        AppEnvironment& environment;
        OpenNote& open;
        BodyEdit& body;
        NoticeBar& notice;
        std::function<bool()> save;
    };
    PassageLocking(Parts parts, QObject* parent);

    /// Asks for a passphrase for the selection.
    void lockSelection();
    /// Asks for the passphrase of the locked passage at a position of the document.
    void unlock(int position);

private:
    void seal(const PassageRange& range, SecretBytes passphrase);
    void place(const PassageRange& range, const std::string& passage, const std::string& blob);
    void removeCopies(const std::string& passage);
    void forgetDeleted(const QString& remark);
    void decrypt(UnlockDialog& dialog, const std::string& blob);
    void removeLock(UnlockDialog& dialog, int position);

    Parts parts_;
};

}  // namespace tesserine::app
