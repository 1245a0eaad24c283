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
        rows_.emplace_back(std::move(document));
    }
    bool isFull() const { return rows_.size() >= largestCount || byteCount_ >= largestByteCount; }
    std::vector<IndexRows> take() {
        byteCount_ = 0;
        return std::exchange(rows_, {});
    }

private:
    static constexpr std::size_t largestCount = 25 * IndexUpdater::batchSize;
    static constexpr std::size_t largestByteCount = 8'000'000;

    std::vector<IndexRows> rows_;
    std::size_t byteCount_ = 0;
};

/// Has the index prepared for everything as long as it lives.
class Preparation {
public:
    explicit Preparation(SearchIndex& index) : index_(index) {
        index_.prepareFor(SearchIndex::Work::everything);
    }
    Preparation(const Preparation&) = delete;
    Preparation& operator=(const Preparation&) = delete;
    ~Preparation() {
        try {
            index_.prepareFor(SearchIndex::Work::changes);
        } catch (const SQLiteDatabase::Error&) {
            // The index is closed or broken; its next connection begins prepared for changes.
            return;
        }
    }

private:
    SearchIndex& index_;
};

}  // namespace

bool writeEverything(
    SearchIndex& index, DocumentReader& reader, const Log& log, const SearchWork& work) {
    const Preparation preparation(index);
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
            writing = std::async(
                std::launch::async, [&updater, rows = gathered.take()] { updater.insert(rows); });
        }
        FAIL_POINT("rebuild.batch");
        if (work.progress) work.progress(done, keys.size());
    }
    if (writing.valid()) writing.get();
    return true;
}

}  // namespace tesserine
