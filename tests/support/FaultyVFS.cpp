#include "tests/support/FaultyVFS.h"

#include "tests/support/UnsyncedWrites.h"

#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <mutex>
#include <new>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace tesserine::test {

using Fault = FaultyVFS::Fault;
using File = FaultyVFS::File;
using Operation = FaultyVFS::Operation;

struct FaultyVFS::State {
    struct ArmedRule {
        Rule rule;
        int seen = 0;
    };
    static constexpr std::size_t operationCount = 6;
    static constexpr std::size_t fileCount = 5;

    // Fixed after construction.
    std::string name;
    sqlite3_vfs* real = nullptr;
    sqlite3_vfs vfs{};

    UnsyncedWrites unsynced;
    std::mutex mutex;
    // Behind mutex.
    std::vector<ArmedRule> rules;
    std::array<std::array<int, fileCount>, operationCount> counts{};

    /// Counts one operation and tells which rule strikes it.
    std::optional<Rule> ruleFor(Operation operation, File file);
};

namespace {

bool covers(const FaultyVFS::Rule& rule, Operation operation, File file) {
    const bool isAny = rule.operation == Operation::any && operation != Operation::open;
    return (isAny || rule.operation == operation) && (rule.file == File::any || rule.file == file);
}

/// SQLite's file object of ours; the real one lies behind it in the same block.
struct FaultyFile {
    sqlite3_file base;
    FaultyVFS::State* state;
    File kind;
    const char* path;  // SQLite's, good until the file is closed; none for a nameless one

    sqlite3_file* real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};
static_assert(sizeof(FaultyFile) % alignof(void*) == 0, "the real file needs its alignment");

FaultyFile& ours(sqlite3_file* file) { return *reinterpret_cast<FaultyFile*>(file); }

/// Ends the process, with the power when the fault says so.
[[noreturn]] void endProcess(FaultyVFS::State& state, const FaultyVFS::Rule& rule) {
    if (rule.fault == Fault::powerCut) state.unsynced.cutPower(rule.seed);
    ::_exit(FaultyVFS::killedStatus);
}

/// The code SQLite gets instead of the operation, or none if it is to go on.
std::optional<int> struck(FaultyFile& file, Operation operation, int ioErrorCode) {
    const auto rule = file.state->ruleFor(operation, file.kind);
    if (!rule) return std::nullopt;
    if (rule->fault == Fault::full) return SQLITE_FULL;
    if (rule->fault == Fault::ioError) return ioErrorCode;
    endProcess(*file.state, *rule);
}

int closeFile(sqlite3_file* file) {
    sqlite3_file* const real = ours(file).real();
    return real->pMethods == nullptr ? SQLITE_OK : real->pMethods->xClose(real);
}

int readFile(sqlite3_file* file, void* bytes, int count, sqlite3_int64 offset) {
    sqlite3_file* const real = ours(file).real();
    return real->pMethods->xRead(real, bytes, count, offset);
}

int writeFile(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 offset) {
    FaultyFile& self = ours(file);
    sqlite3_file* const real = self.real();
    const auto rule = self.state->ruleFor(Operation::write, self.kind);
    if (rule) {
        if (rule->fault == Fault::full) return SQLITE_FULL;
        if (rule->fault == Fault::ioError) return SQLITE_IOERR_WRITE;
        if (rule->fault == Fault::tornKill) real->pMethods->xWrite(real, bytes, count / 2, offset);
        endProcess(*self.state, *rule);
    }
    if (self.path != nullptr) {
        self.state->unsynced.willWrite(
            self.path,
            static_cast<std::uint64_t>(offset),
            {static_cast<const std::uint8_t*>(bytes), static_cast<std::size_t>(count)});
    }
    return real->pMethods->xWrite(real, bytes, count, offset);
}

int truncateFile(sqlite3_file* file, sqlite3_int64 size) {
    FaultyFile& self = ours(file);
    if (const auto code = struck(self, Operation::truncate, SQLITE_IOERR_TRUNCATE)) return *code;
    if (self.path != nullptr) {
        self.state->unsynced.willTruncate(self.path, static_cast<std::uint64_t>(size));
    }
    return self.real()->pMethods->xTruncate(self.real(), size);
}

int syncFile(sqlite3_file* file, int flags) {
    FaultyFile& self = ours(file);
    if (const auto code = struck(self, Operation::sync, SQLITE_IOERR_FSYNC)) return *code;
    const int code = self.real()->pMethods->xSync(self.real(), flags);
    if (code == SQLITE_OK && self.path != nullptr) self.state->unsynced.forget(self.path);
    return code;
}

int fileSize(sqlite3_file* file, sqlite3_int64* size) {
    sqlite3_file* const real = ours(file).real();
    return real->pMethods->xFileSize(real, size);
}

int lockFile(sqlite3_file* file, int lock) {
    sqlite3_file* const real = ours(file).real();
    return real->pMethods->xLock(real, lock);
}

int unlockFile(sqlite3_file* file, int lock) {
    sqlite3_file* const real = ours(file).real();
    return real->pMethods->xUnlock(real, lock);
}

int checkReservedLock(sqlite3_file* file, int* isReserved) {
    sqlite3_file* const real = ours(file).real();
    return real->pMethods->xCheckReservedLock(real, isReserved);
}

int fileControl(sqlite3_file* file, int operation, void* argument) {
    sqlite3_file* const real = ours(file).real();
    return real->pMethods->xFileControl(real, operation, argument);
}

int sectorSize(sqlite3_file* file) {
    sqlite3_file* const real = ours(file).real();
    return real->pMethods->xSectorSize(real);
}

int deviceCharacteristics(sqlite3_file* file) {
    sqlite3_file* const real = ours(file).real();
    return real->pMethods->xDeviceCharacteristics(real);
}

int mapShared(sqlite3_file* file, int page, int size, int isExtending, void volatile** memory) {
    sqlite3_file* const real = ours(file).real();
    return real->pMethods->xShmMap(real, page, size, isExtending, memory);
}

int lockShared(sqlite3_file* file, int offset, int count, int flags) {
    sqlite3_file* const real = ours(file).real();
    return real->pMethods->xShmLock(real, offset, count, flags);
}

void barrierShared(sqlite3_file* file) {
    sqlite3_file* const real = ours(file).real();
    real->pMethods->xShmBarrier(real);
}

int unmapShared(sqlite3_file* file, int isDeleting) {
    sqlite3_file* const real = ours(file).real();
    return real->pMethods->xShmUnmap(real, isDeleting);
}

/// Version 2: with shared memory for the write-ahead log, without memory mapping, so that every
/// write passes here.
constexpr sqlite3_io_methods faultyMethods = {
    .iVersion = 2,
    .xClose = closeFile,
    .xRead = readFile,
    .xWrite = writeFile,
    .xTruncate = truncateFile,
    .xSync = syncFile,
    .xFileSize = fileSize,
    .xLock = lockFile,
    .xUnlock = unlockFile,
    .xCheckReservedLock = checkReservedLock,
    .xFileControl = fileControl,
    .xSectorSize = sectorSize,
    .xDeviceCharacteristics = deviceCharacteristics,
    .xShmMap = mapShared,
    .xShmLock = lockShared,
    .xShmBarrier = barrierShared,
    .xShmUnmap = unmapShared,
};

FaultyVFS::State& stateOf(sqlite3_vfs* vfs) {
    return *static_cast<FaultyVFS::State*>(vfs->pAppData);
}

File kindOf(int openFlags) {
    if ((openFlags & SQLITE_OPEN_MAIN_DB) != 0) return File::main;
    if ((openFlags & SQLITE_OPEN_WAL) != 0) return File::wal;
    if ((openFlags & SQLITE_OPEN_MAIN_JOURNAL) != 0) return File::journal;
    return File::other;
}

File kindOf(std::string_view path) {
    if (path.ends_with("-wal")) return File::wal;
    if (path.ends_with("-journal")) return File::journal;
    return path.ends_with("-shm") ? File::other : File::main;
}

int openFile(sqlite3_vfs* vfs, const char* path, sqlite3_file* file, int flags, int* outFlags) {
    FaultyVFS::State& state = stateOf(vfs);
    auto* const made =
        new (file) FaultyFile{.base = {}, .state = &state, .kind = kindOf(flags), .path = path};
    // SQLite asks for a file to be closed exactly if it has methods.
    if (const auto code = struck(*made, Operation::open, SQLITE_CANTOPEN)) return *code;
    made->real()->pMethods = nullptr;
    const int code = state.real->xOpen(state.real, path, made->real(), flags, outFlags);
    if (code == SQLITE_OK) made->base.pMethods = &faultyMethods;
    return code;
}

int removeFile(sqlite3_vfs* vfs, const char* path, int mustSync) {
    FaultyVFS::State& state = stateOf(vfs);
    FaultyFile file{
        .base = {}, .state = &state, .kind = kindOf(std::string_view(path)), .path = path};
    if (const auto code = struck(file, Operation::remove, SQLITE_IOERR_DELETE)) return *code;
    state.unsynced.forget(path);
    return state.real->xDelete(state.real, path, mustSync);
}

int accessFile(sqlite3_vfs* vfs, const char* path, int flags, int* result) {
    sqlite3_vfs* const real = stateOf(vfs).real;
    return real->xAccess(real, path, flags, result);
}

int fullPath(sqlite3_vfs* vfs, const char* path, int size, char* result) {
    sqlite3_vfs* const real = stateOf(vfs).real;
    return real->xFullPathname(real, path, size, result);
}

}  // namespace

std::optional<FaultyVFS::Rule> FaultyVFS::State::ruleFor(Operation operation, File file) {
    const std::lock_guard lock(mutex);
    ++counts[static_cast<std::size_t>(operation)][static_cast<std::size_t>(file)];
    std::optional<Rule> striking;
    for (ArmedRule& armed : rules) {
        if (!covers(armed.rule, operation, file)) continue;
        ++armed.seen;
        const bool strikes =
            armed.rule.isLasting ? armed.seen >= armed.rule.nth : armed.seen == armed.rule.nth;
        if (strikes && !striking) striking = armed.rule;
    }
    return striking;
}

FaultyVFS::FaultyVFS(std::string name) : state_(std::make_unique<State>()) {
    state_->name = std::move(name);
    state_->real = sqlite3_vfs_find(nullptr);
    if (sqlite3_vfs_find(state_->name.c_str()) != nullptr) {
        throw std::logic_error("a VFS called " + state_->name + " is registered already");
    }

    sqlite3_vfs& vfs = state_->vfs;
    vfs = *state_->real;  // dates, randomness, sleeping and dynamic loading are the real one's
    vfs.szOsFile = static_cast<int>(sizeof(FaultyFile)) + state_->real->szOsFile;
    vfs.pNext = nullptr;
    vfs.zName = state_->name.c_str();
    vfs.pAppData = state_.get();
    vfs.xOpen = openFile;
    vfs.xDelete = removeFile;
    vfs.xAccess = accessFile;
    vfs.xFullPathname = fullPath;
    sqlite3_vfs_register(&vfs, 0);
}

FaultyVFS::~FaultyVFS() { sqlite3_vfs_unregister(&state_->vfs); }

const std::string& FaultyVFS::name() const noexcept { return state_->name; }

void FaultyVFS::fail(const Rule& rule) {
    const std::lock_guard lock(state_->mutex);
    state_->rules.push_back({.rule = rule});
}

void FaultyVFS::cutPower(std::uint64_t seed) {
    endProcess(*state_, {.fault = Fault::powerCut, .seed = seed});
}

void FaultyVFS::clear() {
    const std::lock_guard lock(state_->mutex);
    state_->rules.clear();
}

int FaultyVFS::count(Operation operation, File file) const {
    const std::lock_guard lock(state_->mutex);
    int sum = 0;
    for (std::size_t op = 0; op < State::operationCount; ++op) {
        for (std::size_t kind = 0; kind < State::fileCount; ++kind) {
            const Rule asked{.operation = operation, .file = file};
            const bool isAsked = covers(asked, static_cast<Operation>(op), static_cast<File>(kind));
            if (isAsked) sum += state_->counts[op][kind];
        }
    }
    return sum;
}

void FaultyVFS::resetCounts() {
    const std::lock_guard lock(state_->mutex);
    state_->counts = {};
}

}  // namespace tesserine::test
