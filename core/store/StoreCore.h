#pragma once

#include "base/Files.h"
#include "base/sqlite/SQLiteDatabase.h"
#include "core/store/ExternalValues.h"
#include "core/store/LibraryUse.h"
#include "core/store/RowMapper.h"
#include "core/store/TesserineStore.h"

#include <array>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
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

    /// A connection for reading. In memory there is only one, which readers and writer share.
    std::shared_ptr<SQLiteDatabase> openReader();
    /// Holds off other users of the shared connection of a library in memory.
    std::unique_lock<std::recursive_timed_mutex> reading();
    /// Forgets the writing connection after an error of the disk: its cache may not be what the
    /// file holds.
    void discardWriter() noexcept;
    /// Closes a connection under the lock, because the last one moves the journal into the file.
    void close(std::shared_ptr<SQLiteDatabase>& connection) const noexcept;

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
    /// Device and inode of the file, its journal and the journal's index: tells whether they are
    /// still the ones that were opened.
    using Identity = std::array<std::pair<std::uint64_t, std::uint64_t>, 3>;

    void openFile();
    void openInMemory();
    void createFile();
    void refuseFolder() const;
    void refuseUnreadable() const;
    void noteUncleanEnd();
    void examine() const;
    void backUpBeforeMigration();
    /// A writer's cache is large: it makes imports twice as fast. A reader's is small, because
    /// there are several of them, and the system keeps the file's pages once for all.
    enum class Use { reading, writing };
    std::unique_ptr<SQLiteDatabase> connect(
        const std::filesystem::path& file,
        SQLiteDatabase::Access access,
        Use use = Use::writing) const;
    SQLiteDatabase::Options options(SQLiteDatabase::Access access) const;
    Identity identify() const;
    void refuseIfMoved() const;
    files::FolderLock lockFolder() const;
    files::FolderLock lockForWriting() const;

    StoreConfiguration configuration_;
    const Clock& clock_;
    Random& random_;
    Log log_;
    std::string author_;
    std::string vfs_;
    bool createIfMissing_;
    std::chrono::milliseconds lockPatience_;
    bool isOpening_ = true;  ///< the opening itself holds the lock of the folder
    std::int64_t numberAtOpening_ = 0;
    bool wasCreated_ = false;
    bool wasEndedUncleanly_ = false;
    ExternalValues external_;
    std::array<RowMapper, entityCount> mappers_;
    Identity identity_{};  // as it was opened
    std::optional<LibraryUse> use_;

    std::recursive_timed_mutex writerMutex_;
    std::shared_ptr<SQLiteDatabase> writer_;  // in memory also every reader's
    std::recursive_mutex followersMutex_;     // a follower may save, too
    std::vector<std::function<void(const std::vector<ObjectChange>&, const StoreContext*)>>
        followers_;
};

}  // namespace tesserine
