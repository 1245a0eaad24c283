#pragma once

#include <stop_token>
#include <thread>

namespace tesserine::cli {

/// Turns Ctrl-C (and being told to end) into a stop token, for the whole process.
///
/// The first signal asks to stop; a second one ends the process at once, with status 130. Make one
/// before any other thread: threads made afterwards leave these signals to it.
class Interruption {
public:
    Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    ~Interruption();

    std::stop_token token() const { return source_.get_token(); }
    /// Becomes readable when a stop was asked for, so that a wait for input can end.
    int wakeDescriptor() const { return wake_; }

private:
    void watch();

    std::stop_source source_;
    int signals_ = -1;  // a signalfd
    int wake_ = -1;     // eventfd: a stop was asked for
    int end_ = -1;      // eventfd: the watcher is no longer needed
    std::thread watcher_;
};

}  // namespace tesserine::cli
