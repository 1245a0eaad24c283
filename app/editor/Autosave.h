#pragma once

#include <QObject>
#include <QTimer>

#include <functional>

namespace tesserine::app {

/// Saves a second after the first change that is not saved yet, also while typing goes on, so that
/// a crash loses no more than that. A note whose saving takes long is saved less often: never more
/// than a twentieth of the time is spent on it.
class Autosave final : public QObject {
    Q_OBJECT

public:
    static constexpr int delay = 1'000;  ///< milliseconds

    /// While writing goes on `save` may leave the work to another thread; otherwise all is saved
    /// when it returns.
    enum class Occasion { whileWriting, now };
    using Save = std::function<bool(Occasion)>;

    /// `save` tells whether it went well; if not, the next change or `flush` tries again.
    explicit Autosave(Save save, QObject* parent = nullptr);

    /// Something changed.
    void schedule();
    /// Saves now what waits; false when that failed.
    bool flush();
    bool isPending() const { return isPending_; }
    /// What was being saved was not; the next change or `flush` tries again.
    void keepPending() { isPending_ = true; }
    /// Forgets what waits: it was saved or dropped elsewhere.
    void cancel();

private:
    bool save(Occasion occasion);

    Save save_;
    QTimer timer_;
    bool isPending_ = false;
    int interval_ = delay;
};

}  // namespace tesserine::app
