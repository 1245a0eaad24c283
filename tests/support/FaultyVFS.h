#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace tesserine::test {

/// A disk that fails on order, between SQLite and the real one.
///
///     FaultyVFS disk("full-disk");
///     SQLiteDatabase database(file, {.vfs = disk.name()});
///     disk.fail({.operation = Operation::write, .file = File::wal, .nth = 3, .fault =
///     Fault::full});
///
/// Every connection that uses it must be closed before it goes away. Safe from any thread.
class FaultyVFS {
public:
    enum class Operation { any, open, write, sync, truncate, remove };
    enum class File { any, main, wal, journal, other };
    enum class Fault {
        full,      ///< no space left: SQLITE_FULL
        ioError,   ///< the disk reports an error: SQLITE_IOERR_…
        kill,      ///< the process ends with status 137 before the operation
        tornKill,  ///< half of the bytes are written, then the process ends; otherwise as `kill`
        powerCut,  ///< as `kill`, and what was not synced is lost, whole or in part
    };
    /// What `_exit` is given by the faults that end the process.
    static constexpr int killedStatus = 137;

    struct Rule {
        Operation operation = Operation::any;  ///< `any`: write, sync, truncate and remove
        File file = File::any;
        int nth = 1;  ///< counted from 1, from when the rule was given
        Fault fault = Fault::ioError;
        bool isLasting = false;  ///< the later ones fail as well, until `clear`
        std::uint64_t seed = 0;  ///< of a power cut: which unsynced writes reach the disk
    };

    /// Registers itself with SQLite under `name`, which must be unused.
    explicit FaultyVFS(std::string name);
    FaultyVFS(const FaultyVFS&) = delete;
    FaultyVFS& operator=(const FaultyVFS&) = delete;
    ~FaultyVFS();

    const std::string& name() const noexcept;

    /// Adds a rule.
    void fail(const Rule& rule);
    /// Ends the process as the fault `powerCut` does.
    [[noreturn]] void cutPower(std::uint64_t seed);
    /// Forgets every rule: the disk works again.
    void clear();
    /// How many operations were asked for since construction or `resetCounts`, failed ones
    /// included.
    int count(Operation operation, File file = File::any) const;
    void resetCounts();

    struct State;

private:
    std::unique_ptr<State> state_;
};

}  // namespace tesserine::test
