#include "JobQueue.h"

#include <sys/eventfd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

namespace camsim {

JobQueue::JobQueue() : event_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!event_)
        throw std::system_error(errno, std::generic_category(), "cannot create an event");
}

void JobQueue::open() {
    const std::lock_guard lock(mutex_);
    open_ = true;
}

void JobQueue::dispatch(std::function<void()> job) {
    const std::lock_guard lock(mutex_);
    if (!open_) {
        job();
        return;
    }
    jobs_.push_back(std::move(job));
    wake();
}

void JobQueue::wake() {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto ignored = write(event_.get(), &one, sizeof one); // fails only when already readable
}

void JobQueue::runAll() {
    std::uint64_t count = 0;
    [[maybe_unused]] const auto ignored = read(event_.get(), &count, sizeof count); // only to make it unreadable
    std::deque<std::function<void()>> jobs;
    {
        const std::lock_guard lock(mutex_);
        jobs.swap(jobs_);
    }
    for (const auto &job : jobs)
        job();
}

void JobQueue::close() {
    const std::lock_guard lock(mutex_);
    open_ = false;
    for (const auto &job : jobs_)
        job();
    jobs_.clear();
}

} // namespace camsim
