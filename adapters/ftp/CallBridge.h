#pragma once

#include "platform/Host.h"
#include "transfer/FtpClient.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>

namespace quillport::ftp {

/// Thrown on the worker's side when the call is to end because of something that happened on the caller's.
class CallStopped : public std::exception {
public:
    [[nodiscard]] const char* what() const noexcept override { return "the call is being stopped"; }
};

enum class CallKind { plain, transfer };

/// Runs the work of one call on a worker thread while the caller's thread serves the program's events and
/// delivers the client's, one at a time and in their order.
///
/// The worker's side says events with tell() and ask() and looks for stops with throwIfStopped(). An
/// exception that leaves a handler or the pump stops the worker and leaves run(), once the worker has cleaned
/// up.
class CallBridge {
public:
    using Event = std::function<void(FtpEvents&)>;

    /// `wakeWorker` ends the worker's wait on the network; any thread may call it.
    CallBridge(EventPump& pump, std::function<void()> wakeWorker);

    // The caller's side.

    /// Runs the work to its end. Raises what the work raised, or what a handler or the pump did.
    void run(CallKind kind, FtpEvents* events, const std::function<void()>& work);
    [[nodiscard]] bool isRunning() const { return running_; }
    /// Asks the running transfer call to stop, or takes the request back; does nothing without one.
    void requestAbort(bool abort);

    // The worker's side.

    /// Leaves an event to be delivered. Waits while too many are pending.
    void tell(Event event);
    /// The same for news that later news of its kind makes worthless: it takes the place of undelivered one.
    void tellLatest(Event event);
    /// Has an event delivered and returns when its handler has.
    void ask(const Event& event);
    /// Raises CallStopped, or `aborted` when the operator wants the transfer to stop.
    void throwIfStopped();

private:
    struct Pending {
        Event event;
        bool replaceable = false;
    };

    void begin(CallKind kind);
    void end(const std::exception_ptr& cause);
    void serveUntilFinished(FtpEvents* events);
    void deliverPending(FtpEvents* events);
    bool takeNext(Pending& next);
    bool isFinished();
    void stop();
    void finish(std::exception_ptr outcome);
    std::size_t push(std::unique_lock<std::mutex>& lock, Pending pending);
    void throwIfStoppedLocked() const;

    EventPump& pump_;
    std::function<void()> wakeWorker_;
    bool running_ = false; ///< used by the caller's thread alone

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Pending> pending_;
    std::size_t delivered_ = 0; ///< events handled since the call began
    std::size_t told_ = 0;      ///< events taken in since the call began
    bool transfer_ = false;
    bool abortWanted_ = false;
    bool stopped_ = false;
    bool finished_ = false;
    std::exception_ptr outcome_;
};

} // namespace quillport::ftp
