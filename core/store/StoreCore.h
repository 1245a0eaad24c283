#pragma once

#include "base/Files.h"
#include "base/sqlite/SQLiteDatabase.h"
#include "core/store/ExternalValues.h"
#include "core/store/RowMapper.h"
#include "core/store/TesserineStore.h"

#include <array>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace tesserine {

/// What the contexts of one store share: the file, its connections and locks, and the way in which
/// one context's save reaches the others. Safe from several threads.
class StoreCore {
public:
    StoreCore(StoreConfiguration configuration, const StoreEnvironment& environment);
    StoreCore(const StoreCore&) = delete;
    StoreCore& operator=(const StoreCore&) = delete;
    ~StoreCore();

    /// The only right to write to the library: among this process' threads, and among processes by
    /// a lock file, so that writers and checkpoints of different processes never meet.
    class Writing {
    public:
        SQLiteDatabase& database() const { return *database_; }

    private:
        friend class StoreCore;
        std::unique_lock<std::recursive_timed_mutex> thread_;
        std::optional<files::FolderLock> process_;
        SQLiteDatabase* database_ = nullptr;
    };
    /// Waits for the right at most `lockPatience`. Throws `StoreError::saveFailed`, also when the
    /// library's file is no longer the one that was opened.
    Writing beginWriting();
    static constexpr std::chrono::milliseconds lockPatience{10'000};

    /// A connection for reading. In memory there is only one, which readers and writer share.
    std::shared_ptr<SQLiteDatabase> openReader();
    /// Holds off other users of the shared connection of a library in memory.
    std::unique_lock<std::recursive_timed_mutex> reading();
    /// Forgets the writing connection after an error of the disk: its cache may not be what the
    /// file holds.
    void discardWriter() noexcept;
    /// Closes a connection under the lock, because the last one moves the journal into the file.
    void close(std::shared_ptr<SQLiteDatabase>& connection) noexcept;

    /// Tells the main context what another context saved.
    void publish(const std::vector<ObjectChange>& changes, const StoreContext* source);
    /// Ends what `subscribe` began.
    void unsubscribe();
    void subscribe(
        std::function<void(const std::vector<ObjectChange>&, const StoreContext*)> follower);

    /// "Tesserine.sqlite" in the library's folder.
    std::filesystem::path file() const;
    const RowMapper& mapper(EntityKind kind) const {
        return mappers_[static_cast<std::size_t>(kind)];
    }
    const StoreConfiguration& configuration() const { return configuration_; }
    const ExternalValues& external() const { return external_; }
    const Clock& clock() const { return clock_; }
    Random& random() const { return random_; }
    const Log& log() const { return log_; }
    const std::string& author() const { return author_; }
    /// The last transaction of the history when the library was opened.
    std::int64_t numberAtOpening() const { return numberAtOpening_; }
    bool wasCreated() const { return wasCreated_; }
    bool wasEndedUncleanly() const { return wasEndedUncleanly_; }

    /// A sentence for the user about an error of the file layer.
    static std::string explain(const SQLiteDatabase::Error& error);
    static std::string explain(const FileError& error);

private:
    /// Device and inode: tells whether the file at the path is still the one that was opened.
    struct Identity {
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
        friend bool operator==(const Identity&, const Identity&) = default;
    };

    void openFile();
    void openInMemory();
    void createFile();
    void refuseUnreadable() const;
    void noteUncleanEnd();
    void backUpBeforeMigration();
    void checkIntegrity(SQLiteDatabase& database) const;
    std::unique_ptr<SQLiteDatabase> connect(
        const std::filesystem::path& file, SQLiteDatabase::Access access) const;
    std::optional<Identity> identify() const;
    files::FolderLock lockFolder() const;

    StoreConfiguration configuration_;
    const Clock& clock_;
    Random& random_;
    Log log_;
    std::string author_;
    std::string vfs_;
    bool createIfMissing_;
    bool isOpening_ = true;  ///< the opening itself holds the lock of the folder
    std::int64_t numberAtOpening_ = 0;
    bool wasCreated_ = false;
    bool wasEndedUncleanly_ = false;
    ExternalValues external_;
    std::array<RowMapper, entityCount> mappers_;
    std::optional<Identity> identity_;
    int usersLock_ = -1;  // shared by every process that has the library open

    std::recursive_timed_mutex writerMutex_;
    std::shared_ptr<SQLiteDatabase> writer_;  // in memory also every reader's
    std::recursive_mutex followersMutex_;     // a follower may save, too
    std::vector<std::function<void(const std::vector<ObjectChange>&, const StoreContext*)>>
        followers_;
};

}  // namespace tesserine
