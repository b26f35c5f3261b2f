#pragma once

#include "FileDescriptor.h"

#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <type_traits>

namespace camsim {

/// Hands work from any thread to the one thread that owns the state, and waits for the result.
///
/// While the queue is closed nobody owns the state: call() then runs the work on the caller's thread, one at a time.
class JobQueue {
public:
    JobQueue();

    /// Runs `work` and returns its result or throws its exception. Must not be called from inside `work`.
    template <typename Work> auto call(Work work) -> std::invoke_result_t<Work> {
        // Shared: the worker may still be leaving the task when the caller already has the result.
        auto task = std::make_shared<std::packaged_task<std::invoke_result_t<Work>()>>(std::move(work));
        auto result = task->get_future();
        dispatch([task] { (*task)(); });
        return result.get();
    }

    void open();   ///< The calling thread is about to hand the state to the owning thread.
    void runAll(); ///< For the owning thread: does what has been queued.
    void close();  ///< For the owning thread at its end: does what is left and gives the state up.
    int event() const { return event_.get(); } ///< Readable when work is waiting.
    void wake();

private:
    void dispatch(std::function<void()> job);

    std::mutex mutex_; ///< guards all members below
    std::deque<std::function<void()>> jobs_;
    bool open_ = false;
    const FileDescriptor event_;
};

} // namespace camsim
