#include "search/IndexUpdater.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

namespace tesserine {
namespace {

using Error = SQLiteDatabase::Error;

/// Whether the document itself may be the reason, so that others can still be written.
bool mayBeTheDocument(const Error& error) {
    const bool isTheFile = error.isBusy() || error.isFull() || error.isIOError()
                           || error.isReadOnly() || isUnusable(error);
    return !isTheFile;
}

}  // namespace

bool isUnusable(const Error& error) {
    constexpr std::array<std::string_view, 5> signs = {
        "no such table",
        "no such column",
        "has no column named",
        "vtable constructor failed",
        "invalid fts5 file format"};
    return error.isDamage() || std::ranges::any_of(signs, [&](std::string_view sign) {
               return error.message().find(sign) != std::string::npos;
           });
}

void IndexUpdater::update(const ChangedDocuments& changed, const std::function<void()>& finish) {
    const std::vector<std::pair<DocumentKey, std::optional<Uuid>>> all(
        changed.documents.begin(), changed.documents.end());
    std::size_t done = 0;
    do {
        const std::size_t count = std::min(batchSize, all.size() - done);
        const bool isLast = done + count == all.size();
        batch(
            count,
            [&](std::size_t i) {
                const auto& [key, id] = all[done + i];
                if (auto document = reader_.document(key)) {
                    index_.upsert(std::move(*document));
                } else if (id) {
                    index_.remove(id->text());
                }
            },
            [&] {
                if (!isLast) return;
                if (changed.isTagTreeChanged) index_.replaceTagTree(reader_.tagTree());
                finish();
            });
        done += count;
    } while (done < all.size());
}

void IndexUpdater::insert(const std::vector<IndexRows>& rows) {
    batch(
        rows.size(), [&](std::size_t i) { index_.insert(rows[i]); }, [] {});
}

void IndexUpdater::batch(std::size_t count, const Each& each, const std::function<void()>& finish) {
    try {
        index_.batch([&] {
            for (std::size_t i = 0; i < count; ++i) {
                each(i);
            }
            finish();
        });
        return;
    } catch (const Error& error) {
        if (!mayBeTheDocument(error)) throw;
    }
    oneByOne(count, each);
    index_.batch(finish);
}

void IndexUpdater::oneByOne(std::size_t count, const Each& each) {
    for (std::size_t i = 0; i < count; ++i) {
        try {
            index_.batch([&] { each(i); });
        } catch (const Error& error) {
            if (!mayBeTheDocument(error)) throw;
            log_.error(
                "a document could not be indexed, SQLite's code "
                + std::to_string(error.resultCode()));
        }
    }
}

}  // namespace tesserine
