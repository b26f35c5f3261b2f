#include "Lanvane/Operation.h"

#include "Lanvane/WaitIndication.h"

#include <QEventLoop>
#include <QThread>

#include <exception>
#include <future>
#include <memory>
#include <thread>

void Operation::run(const std::function<void()> &work) {
    const InputBarrier barrier(InputBarrier::AdmitModal);
    m_Token.emplace();
    std::exception_ptr failure;
    std::thread thread([&] {
        try {
            work();
        } catch (...) {
            failure = std::current_exception();
        }
        post([this] { m_IsRunning = false; });
    });
    m_IsRunning = true; // its end is told by an event
    awaitEnd(true);
    thread.join();
    if (failure)
        std::rethrow_exception(failure);
}

/// An event loop of its own would end with the application.
void Operation::awaitEnd(bool evenInCall) {
    QEventLoop loop;
    while (m_IsRunning && (evenInCall || m_CallDepth == 0))
        loop.processEvents(QEventLoop::WaitForMoreEvents);
}

void Operation::cancel() {
    if (!m_IsRunning)
        return;
    const std::lock_guard<std::mutex> lock(m_Lock);
    m_Token->RequestStop();
    m_Changed.notify_all();
}

void Operation::end() {
    cancel();
    awaitEnd(false);
}

void Operation::post(std::function<void()> work) {
    {
        const std::lock_guard<std::mutex> lock(m_Lock);
        m_Posted.push_back(std::move(work));
    }
    QMetaObject::invokeMethod(
        this, [this] { doPosted(); }, Qt::QueuedConnection);
}

void Operation::doPosted() {
    std::function<void()> work;
    {
        const std::lock_guard<std::mutex> lock(m_Lock);
        work = std::move(m_Posted.front());
        m_Posted.pop_front();
    }
    work();
}

void Operation::onGui(const std::function<void()> &work) {
    if (QThread::currentThread() == thread())
        return work();
    const auto task = std::make_shared<std::packaged_task<void()>>(work);
    post([this, task] {
        ++m_CallDepth;
        (*task)();
        --m_CallDepth;
    });
    task->get_future().get();
}

void Operation::pause(std::chrono::milliseconds time) {
    std::unique_lock<std::mutex> lock(m_Lock);
    m_Changed.wait_for(lock, time, [this] { return isCancelled(); });
    throwIfCancelled();
}

void Operation::throwIfCancelled() const {
    if (isCancelled())
        throw OperationCancelled();
}
