#pragma once

#include "base/Clock.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace tesserine::server {

/// Lets everybody do so much at once, and so much in the long run. Safe from any thread.
class RateLimit {
public:
    struct Allowance {
        double perSecond = 0;
        double atOnce = 0;
    };

    RateLimit(const Clock& clock, Allowance allowance) : clock_(clock), allowance_(allowance) {}

    /// Takes one from what `name` may do; when nothing is left tells how long to wait, whole
    /// seconds.
    std::optional<std::chrono::seconds> waitOf(const std::string& name) {
        const std::scoped_lock lock(mutex_);
        const Seconds now = clock_.monotonic();
        if (buckets_.size() >= forgetFrom) forgetFull(now);
        auto& bucket = buckets_.try_emplace(name, Bucket{allowance_.atOnce, now}).first->second;
        bucket = {.left = leftIn(bucket, now), .asOf = now};
        if (bucket.left < 1) {
            return std::chrono::ceil<std::chrono::seconds>(
                Seconds((1 - bucket.left) / allowance_.perSecond));
        }
        bucket.left -= 1;
        return std::nullopt;
    }

private:
    using Seconds = std::chrono::duration<double>;
    struct Bucket {
        double left;
        Seconds asOf;
    };
    static constexpr std::size_t forgetFrom = 10'000;  // names

    double leftIn(const Bucket& bucket, Seconds now) const {
        const double grown = bucket.left + (now - bucket.asOf).count() * allowance_.perSecond;
        return std::min(grown, allowance_.atOnce);
    }
    /// Whoever has all of it left is as good as new.
    void forgetFull(Seconds now) {
        std::erase_if(buckets_, [&](const auto& one) {
            return leftIn(one.second, now) >= allowance_.atOnce;
        });
    }

    const Clock& clock_;
    const Allowance allowance_;
    std::mutex mutex_;
    std::map<std::string, Bucket> buckets_;
};

}  // namespace tesserine::server
