#pragma once

#include "server/Accounts.h"

#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace tesserine::server {

/// The devices that listen for news, and what each of them has yet to be told.
///
/// Nothing piles up for a slow one: of many changes only the last number is kept. Safe from any
/// thread.
class LiveHub {
public:
    struct Limits {
        std::size_t perAccount = 20;
        std::size_t atAll = 64;
    };
    /// What a device is to be told now.
    struct News {
        std::optional<std::int64_t> changes{};  ///< all up to this number are there
        bool isSignedOut = false;
        bool isEnd = false;  ///< the service ends
    };

    /// The place of one listening device; given back when it goes away.
    class Seat {
    public:
        Seat(LiveHub& hub, Caller caller);
        Seat(const Seat&) = delete;
        Seat& operator=(const Seat&) = delete;
        ~Seat();

        /// A descriptor that is readable while there is something to tell.
        int signal() const { return signal_; }
        News take();

    private:
        friend class LiveHub;
        void ring() const;

        LiveHub& hub_;
        const Caller caller_;
        const int signal_;
        News news_;  // behind the hub's mutex
    };

    explicit LiveHub(Limits limits) : limits_(limits) {}

    /// None when there are too many already, or the service ends.
    std::unique_ptr<Seat> enter(const Caller& caller);
    /// Tells everybody of the account, the sender too: one computer may hold several libraries.
    void changed(const std::string& user, std::int64_t seq);
    /// Tells the device of a session or personal token that is no more.
    void ended(const std::string& session);
    /// Lets devices in again after `close`.
    void open();
    /// Tells everybody that the service ends, and lets nobody in.
    void close();

private:
    void leave(Seat& seat);

    const Limits limits_;
    std::mutex mutex_;
    std::list<Seat*> seats_;
    bool isClosed_ = false;
};

}  // namespace tesserine::server
