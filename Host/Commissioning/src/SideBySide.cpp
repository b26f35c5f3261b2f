#include "commissioning/SideBySide.h"

#include "gxapi/StopToken.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <filesystem>
#include <future>
#include <mutex>
#include <sys/resource.h>
#include <system_error>
#include <thread>
#include <vector>

namespace commissioning {

namespace {

class Work {
public:
    Work(std::size_t count, const std::function<void(std::size_t)> &function) : m_Count(count), m_Function(function) {}

    void run() {
        for (std::size_t i = m_Next++; i < m_Count; i = m_Next++)
            doOne(i);
    }
    void rethrow() const {
        if (m_Failure)
            std::rethrow_exception(m_Failure);
    }

private:
    void doOne(std::size_t index) try { m_Function(index); } catch (...) {
        const std::lock_guard<std::mutex> lock(m_Lock);
        if (!m_Failure)
            m_Failure = std::current_exception();
    }

    std::size_t m_Count;
    const std::function<void(std::size_t)> &m_Function;
    std::atomic<std::size_t> m_Next{0};
    std::mutex m_Lock;
    std::exception_ptr m_Failure;
};

/// Threads that begin together, when it is known how many of them there can be.
class Helpers {
public:
    Helpers(std::size_t wanted, Work &work) : m_Allowed(m_Gate.get_future().share()) {
        m_Threads.reserve(wanted);
        try {
            while (m_Threads.size() < wanted)
                m_Threads.emplace_back([this, &work, index = m_Threads.size(), stop = Gx::CStopScope::Current()] {
                    const Gx::CStopScope scope(stop);
                    if (index < m_Allowed.get())
                        work.run();
                });
            m_Gate.set_value(wanted);
        } catch (const std::system_error &) { // the host has no more
            const std::size_t kept = m_Threads.size() / 2;
            m_Gate.set_value(kept);
            while (m_Threads.size() > kept) { // gone before the others begin to need theirs, as far as that can be had
                m_Threads.back().join();
                m_Threads.pop_back();
            }
        }
    }
    ~Helpers() {
        for (std::thread &thread : m_Threads)
            thread.join();
    }
    Helpers(const Helpers &) = delete;
    Helpers &operator=(const Helpers &) = delete;

private:
    std::promise<std::size_t> m_Gate;
    std::shared_future<std::size_t> m_Allowed;
    std::vector<std::thread> m_Threads;
};

} // namespace

void sideBySide(std::size_t count, std::size_t atOnce, const std::function<void(std::size_t)> &function) {
    Work work(count, function);
    if (count > 0) {
        const Helpers helpers(std::min(count, std::max<std::size_t>(atOnce, 1)) - 1, work);
        work.run();
    }
    work.rethrow();
}

std::size_t spareDescriptors() {
    constexpr std::size_t Reserve = 8;
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    std::error_code error;
    std::filesystem::directory_iterator open("/proc/self/fd", error);
    const auto used = static_cast<std::size_t>(std::distance(begin(open), end(open)));
    const auto possible = static_cast<std::size_t>(std::min<rlim_t>(limit.rlim_cur, 1u << 20));
    return possible > used + Reserve ? possible - used - Reserve : 1;
}

} // namespace commissioning
