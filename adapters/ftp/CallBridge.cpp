#include "ftp/CallBridge.h"

#include "ftp/ftp_failures.h"

#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

namespace quillport::ftp {

namespace {

/// Enough for the burst of a login; more would only pile up memory behind a handler that takes its time.
constexpr std::size_t mostPending = 256;

/// How long the pump may serve before we look again by ourselves; it is woken long before.
constexpr std::chrono::milliseconds serveSlice{100};

/// What left the work, with every failure that is not the client's own made one.
std::exception_ptr runWork(const std::function<void()>& work) {
    try {
        work();
        return nullptr;
    } catch (const Failure&) {
        return std::current_exception();
    } catch (const CallStopped&) {
        return std::current_exception();
    } catch (const std::exception& problem) {
        return std::make_exception_ptr(failure(ftp_failure::internalError, problem.what()));
    } catch (...) {
        return std::make_exception_ptr(failure(ftp_failure::internalError));
    }
}

} // namespace

CallBridge::CallBridge(EventPump& pump, std::function<void()> wakeWorker)
    : pump_(pump), wakeWorker_(std::move(wakeWorker)) {}

void CallBridge::run(CallKind kind, FtpEvents* events, const std::function<void()>& work) {
    begin(kind);
    std::thread worker;
    try {
        worker = std::thread([this, &work] { finish(runWork(work)); });
    } catch (const std::system_error& problem) {
        running_ = false;
        throw failure(ftp_failure::internalError, problem.what());
    }
    std::exception_ptr cause;
    try {
        serveUntilFinished(events);
    } catch (...) {
        cause = std::current_exception();
        stop();
    }
    worker.join();
    running_ = false;
    end(cause);
}

void CallBridge::end(const std::exception_ptr& cause) {
    const std::lock_guard lock(mutex_);
    pending_.clear();
    transfer_ = false;
    const bool abortWanted = std::exchange(abortWanted_, false);
    if (const std::exception_ptr outcome = cause ? cause : std::exchange(outcome_, nullptr)) {
        std::rethrow_exception(outcome);
    }
    if (abortWanted) { // it came when there was nothing left to stop, but the caller is to know of it
        throw failure(ftp_failure::aborted);
    }
}

void CallBridge::begin(CallKind kind) {
    const std::lock_guard lock(mutex_);
    running_ = true;
    transfer_ = kind == CallKind::transfer;
    abortWanted_ = stopped_ = finished_ = false;
    delivered_ = told_ = 0;
    outcome_ = nullptr;
}

void CallBridge::serveUntilFinished(FtpEvents* events) {
    for (bool finished = false; !finished;) {
        finished = isFinished(); // asked before delivering: what was told before the end is delivered too
        deliverPending(events);
        if (!finished) {
            pump_.serve(serveSlice);
        }
    }
}

void CallBridge::deliverPending(FtpEvents* events) {
    Pending next;
    while (takeNext(next)) {
        if (events != nullptr) {
            next.event(*events);
        }
        const std::lock_guard lock(mutex_);
        ++delivered_;
        changed_.notify_all();
    }
}

bool CallBridge::takeNext(Pending& next) {
    const std::lock_guard lock(mutex_);
    if (pending_.empty()) {
        return false;
    }
    next = std::move(pending_.front());
    pending_.pop_front();
    return true;
}

bool CallBridge::isFinished() {
    const std::lock_guard lock(mutex_);
    return finished_;
}

void CallBridge::stop() {
    {
        const std::lock_guard lock(mutex_);
        stopped_ = true;
        changed_.notify_all();
    }
    wakeWorker_();
}

void CallBridge::finish(std::exception_ptr outcome) {
    {
        const std::lock_guard lock(mutex_);
        outcome_ = std::move(outcome);
        finished_ = true;
    }
    pump_.wake();
}

void CallBridge::requestAbort(bool abort) {
    {
        const std::lock_guard lock(mutex_);
        abortWanted_ = abort && transfer_;
        if (!abortWanted_) {
            return;
        }
        changed_.notify_all();
    }
    wakeWorker_();
}

void CallBridge::tell(Event event) {
    std::unique_lock lock(mutex_);
    push(lock, {std::move(event), false});
}

void CallBridge::tellLatest(Event event) {
    std::unique_lock lock(mutex_);
    if (!pending_.empty() && pending_.back().replaceable) {
        pending_.back().event = std::move(event);
        return;
    }
    push(lock, {std::move(event), true});
}

void CallBridge::ask(const Event& event) {
    std::unique_lock lock(mutex_);
    const std::size_t mine = push(lock, {event, false});
    // An abort does not end this wait: the handler still works with what the event refers to.
    changed_.wait(lock, [&] { return stopped_ || delivered_ >= mine; });
    throwIfStoppedLocked();
}

std::size_t CallBridge::push(std::unique_lock<std::mutex>& lock, Pending pending) {
    changed_.wait(lock, [&] { return stopped_ || pending_.size() < mostPending; });
    if (stopped_) {
        throw CallStopped();
    }
    const bool wasIdle = pending_.empty();
    pending_.push_back(std::move(pending));
    const std::size_t number = ++told_;
    if (wasIdle) {
        lock.unlock(); // nothing of the program's runs under our lock
        pump_.wake();
        lock.lock();
    }
    return number;
}

void CallBridge::throwIfStopped() {
    const std::lock_guard lock(mutex_);
    throwIfStoppedLocked();
}

void CallBridge::throwIfStoppedLocked() const {
    if (stopped_) {
        throw CallStopped();
    }
    if (abortWanted_) {
        throw failure(ftp_failure::aborted);
    }
}

} // namespace quillport::ftp
