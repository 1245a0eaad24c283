#pragma once

#include "base/Clock.h"
#include "base/Log.h"
#include "sync/PushBatch.h"
#include "sync/RecordApplier.h"
#include "sync/SyncClient.h"

#include <cstddef>
#include <map>
#include <stop_token>
#include <vector>

namespace tesserine {

/// Sends what is marked to the server, request by request, and settles each answer in one save. A
/// record that was changed again meanwhile stays marked.
class RecordPusher {
public:
    static constexpr std::size_t recordsAtOnce = 100;
    static constexpr std::size_t bytesAtOnce = std::size_t{1} << 20;

    struct Environment {
        StoreContext& context;
        SyncClient& client;
        const Clock& clock;
        Log log{};
    };
    struct Counts {
        std::size_t sent = 0;
        std::size_t refused = 0;
        std::size_t conflicts = 0;
    };

    explicit RecordPusher(Environment environment) : environment_(std::move(environment)) {}

    /// Tells how many were sent; records that the server refused before are left alone. Throws
    /// `SyncError`; what was settled until then stays so.
    Counts pushAll(const std::stop_token& stop);

private:
    struct Knowledge;
    struct Sending {
        std::vector<SyncPush> pushes;
        std::size_t bytes = 0;
    };

    std::optional<SyncPush> pushFor(const Uuid& record, Knowledge& knowledge);
    void send(Sending& sending, const std::stop_token& stop);
    void uploadFiles(Sending& sending, const std::stop_token& stop);
    void refuse(Sending& sending, const std::string& digest, const SyncError& error);
    std::map<Uuid, std::vector<SyncRecord>> displacedVersions(
        const PushResponse& response, const std::stop_token& stop);
    void settle(
        const SyncPush& push,
        const PushResult& result,
        SyncLedger& ledger,
        RecordApplier& applier,
        PushRefusals& refusals);
    bool isLostFile(const Uuid& record, const SyncLedger& ledger);
    void settleApplied(
        const SyncPush& push, const PushResult& result, SyncLedger& ledger, RecordApplier& applier);

    Environment environment_;
    Counts counts_;
};

}  // namespace tesserine
