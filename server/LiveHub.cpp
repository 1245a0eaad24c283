#include "server/LiveHub.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <system_error>
#include <utility>

namespace tesserine::server {
namespace {

int newSignal() {
    const int descriptor = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (descriptor < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
    return descriptor;
}

}  // namespace

LiveHub::Seat::Seat(LiveHub& hub, Caller caller)
    : hub_(hub), caller_(std::move(caller)), signal_(newSignal()) {}

LiveHub::Seat::~Seat() {
    hub_.leave(*this);
    ::close(signal_);
}

LiveHub::News LiveHub::Seat::take() {
    const std::scoped_lock lock(hub_.mutex_);
    eventfd_t count = 0;
    ::eventfd_read(signal_, &count);
    return std::exchange(news_, {});
}

void LiveHub::Seat::ring() const { ::eventfd_write(signal_, 1); }

std::unique_ptr<LiveHub::Seat> LiveHub::enter(const Caller& caller) {
    auto seat = std::make_unique<Seat>(*this, caller);
    const std::scoped_lock lock(mutex_);
    const auto ofAccount = static_cast<std::size_t>(std::ranges::count_if(
        seats_, [&caller](const Seat* one) { return one->caller_.user == caller.user; }));
    const bool isFull = seats_.size() >= limits_.atAll || ofAccount >= limits_.perAccount;
    if (!isFull && !isClosed_) {
        seats_.push_back(seat.get());
        return seat;
    }
    return nullptr;
}

void LiveHub::leave(Seat& seat) {
    const std::scoped_lock lock(mutex_);
    seats_.remove(&seat);
}

void LiveHub::changed(const std::string& user, std::int64_t seq) {
    const std::scoped_lock lock(mutex_);
    for (Seat* const seat : seats_) {
        if (seat->caller_.user != user) continue;
        seat->news_.changes = std::max(seat->news_.changes.value_or(0), seq);
        seat->ring();
    }
}

void LiveHub::ended(const std::string& session) {
    const std::scoped_lock lock(mutex_);
    for (Seat* const seat : seats_) {
        if (seat->caller_.session != session) continue;
        seat->news_.isSignedOut = true;
        seat->ring();
    }
}

void LiveHub::open() {
    const std::scoped_lock lock(mutex_);
    isClosed_ = false;
}

void LiveHub::close() {
    const std::scoped_lock lock(mutex_);
    isClosed_ = true;
    for (Seat* const seat : seats_) {
        seat->news_.isEnd = true;
        seat->ring();
    }
}

}  // namespace tesserine::server
