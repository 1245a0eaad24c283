#include "search/IndexRebuild.h"

#include "base/FailPoint.h"
#include "search/IndexUpdater.h"

#include <algorithm>
#include <future>
#include <span>
#include <utility>
#include <vector>

namespace tesserine {
namespace {

/// Documents that one transaction of a full rebuild writes: the more, the fewer pages are written
/// again and again.
class Gathered {
public:
    void add(IndexDocument document) {
        byteCount_ += document.body.size() + 2 * document.attachmentText.size();
        documents_.push_back(std::move(document));
    }
    bool isFull() const {
        return documents_.size() >= largestCount || byteCount_ >= largestByteCount;
    }
    std::vector<IndexDocument> take() {
        byteCount_ = 0;
        return std::exchange(documents_, {});
    }

private:
    static constexpr std::size_t largestCount = 10 * IndexUpdater::batchSize;
    static constexpr std::size_t largestByteCount = 4'000'000;

    std::vector<IndexDocument> documents_;
    std::size_t byteCount_ = 0;
};

/// Gives the index a page cache of 64 MB and checkpoints every 64 MB, as long as it lives.
class LargeCache {
public:
    explicit LargeCache(SearchIndex& index) : index_(index) {
        set("PRAGMA cache_size = -65536; PRAGMA wal_autocheckpoint = 16000;");
    }
    LargeCache(const LargeCache&) = delete;
    LargeCache& operator=(const LargeCache&) = delete;
    ~LargeCache() {
        try {
            set("PRAGMA cache_size = -2000; PRAGMA wal_autocheckpoint = 1000; "
                "PRAGMA shrink_memory;");
        } catch (const SQLiteDatabase::Error&) {
            // The index is closed or broken; its next connection begins with SQLite's own sizes.
            return;
        }
    }

private:
    void set(const char* pragmas) {
        index_.perform([&](SQLiteDatabase& database) { database.execute(pragmas); });
    }

    SearchIndex& index_;
};

}  // namespace

bool writeEverything(
    SearchIndex& index, DocumentReader& reader, const Log& log, const SearchWork& work) {
    const LargeCache cache(index);
    const std::vector<DocumentKey> keys = reader.allKeys();
    IndexUpdater updater(index, reader, log);
    std::future<void> writing;
    Gathered gathered;
    for (std::size_t done = 0; done < keys.size();) {
        if (work.stop.stop_requested()) return false;
        const std::size_t count = std::min(IndexUpdater::batchSize, keys.size() - done);
        for (const DocumentKey& key : std::span(keys).subspan(done, count)) {
            if (auto document = reader.document(key)) gathered.add(std::move(*document));
        }
        done += count;
        if (gathered.isFull() || done == keys.size()) {
            if (writing.valid()) writing.get();
            writing = std::async(std::launch::async, [&updater, documents = gathered.take()] {
                updater.write(documents);
            });
        }
        FAIL_POINT("rebuild.batch");
        if (work.progress) work.progress(done, keys.size());
    }
    if (writing.valid()) writing.get();
    return true;
}

}  // namespace tesserine
