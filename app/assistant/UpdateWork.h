#pragma once

#include "app/state/Job.h"
#include "updates/UpdateChecks.h"

#include <QObject>
#include <QString>

#include <cstdint>
#include <filesystem>
#include <optional>

namespace tesserine::app {

/// Looks for a newer version and downloads it, when told so. What was downloaded is shown to the
/// user and never run. Belongs to the main thread.
class UpdateWork final : public QObject {
    Q_OBJECT

public:
    enum class State { idle, checking, newest, offered, downloading, downloaded };

    UpdateWork(AppEnvironment& environment, UpdateSource source, QObject* parent = nullptr);

    const UpdateSource& source() const { return source_; }
    State state() const { return state_; }
    /// The newer version, if one was found.
    const std::optional<UpdateOffer>& offer() const { return offer_; }
    /// Whether its file can be had here: not where a package manager owns the program.
    bool canDownload() const;
    std::int64_t receivedBytes() const { return received_; }
    /// Where the checked file is, once it is downloaded.
    const std::filesystem::path& file() const { return file_; }
    /// Where things stand, in a sentence; empty while nothing was asked. A failure is one too.
    QString sentence() const;

    bool isRunning() const { return job_.isRunning(); }
    void check();
    /// There is an offer with a file. Puts it into `folder`.
    void download(const std::filesystem::path& folder);
    void cancel() { job_.cancel(); }
    /// Never offers this version again.
    void skip();

signals:
    void changed();

private:
    void become(State state);
    void fail(const QString& sentence);

    AppEnvironment& environment_;
    const UpdateSource source_;
    State state_ = State::idle;
    std::optional<UpdateOffer> offer_;
    std::int64_t received_ = 0;
    std::filesystem::path file_;
    QString failure_;
    Job job_;
};

/// What a feed wrote, fit to be shown: without control characters and marks that turn the direction
/// of writing.
QString shownText(const std::string& fromFeed);

/// The source of this build, for the program that runs.
UpdateSource updateSourceOfThisProgram();

/// Shows the file in the desktop's file manager, selected where it can do that; otherwise its
/// folder. Never opens the file itself.
void showInFolder(const std::filesystem::path& file);

}  // namespace tesserine::app
