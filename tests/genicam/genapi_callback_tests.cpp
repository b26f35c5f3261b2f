#include "genapi_support.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <future>
#include <thread>
#include <vector>

using namespace GenApi;
using namespace GenApiTest;

namespace {

const char *const callbackNodes =
    "<IntReg Name='R'><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>"
    "<Integer Name='A'><pValue>R</pValue></Integer><Integer Name='B'><pValue>R</pValue></Integer>"
    "<IntSwissKnife Name='Twice'><pVariable Name='A'>A</pVariable><Formula>A * 2</Formula></IntSwissKnife>"
    "<Integer Name='Other'><Value>0</Value></Integer>"
    "<Command Name='Reset'><pValue>R</pValue></Command>";

class GenApiCallbacks : public testing::Test {
protected:
    /// Notes each call as the node's name with a mark for calls that hold the node map's lock.
    CallbackHandleType Note(const char *name, ECallbackType type = cbPostInsideLock,
                            std::function<void()> action = nullptr) {
        return Register(
            camera[name],
            [this, action](INode *node) {
                const bool isLocked = std::async(std::launch::async, [this] {
                                          const bool isFree = camera.map._GetLock().TryLock();
                                          if (isFree)
                                              camera.map._GetLock().Unlock();
                                          return !isFree;
                                      }).get();
                calls += std::string(node->GetName().c_str()) + (isLocked ? "! " : " ");
                if (action)
                    action();
            },
            type);
    }
    std::string TakeCalls() { return std::exchange(calls, ""); }
    void Set(const char *name, int64_t value) { CIntegerPtr(camera[name])->SetValue(value); }

    Camera camera{callbackNodes};
    std::string calls;
};

TEST_F(GenApiCallbacks, FireOncePerOperationInsideThenOutsideTheLock) {
    for (const char *const name : {"Twice", "B", "A", "Other"})
        Note(name, cbPostOutsideLock);
    Note("A");
    Note("Twice");
    Set("A", 1);
    EXPECT_EQ(TakeCalls(), "A! Twice! A B Twice ");
    CCommandPtr(camera["Reset"])->Execute();
    EXPECT_EQ(TakeCalls(), "A! Twice! A B Twice ");
    camera.port.InvalidateNode();
    EXPECT_EQ(TakeCalls(), "A! Twice! A B Twice ");
    camera.map._InvalidateNodes();
    EXPECT_EQ(TakeCalls(), "A! Twice! A B Twice Other ");
    camera["Other"]->ImposeAccessMode(RO);
    EXPECT_EQ(TakeCalls(), "Other ");
    EXPECT_THROW(Set("Other", 1), GenICam::AccessException);
    EXPECT_EQ(CIntegerPtr(camera["Twice"])->GetValue(), 2);
    EXPECT_EQ(TakeCalls(), "");
}

TEST_F(GenApiCallbacks, WritesOfCallbacksBelongToTheOutermostOperation) {
    Note("A", cbPostInsideLock, [this] {
        Set("A", 5);
        Set("Other", 5);
    });
    Note("Other", cbPostOutsideLock, [this] {
        Set("Other", 6);
        Set("A", 7);
    });
    Set("A", 1);
    EXPECT_EQ(TakeCalls(), "A! Other ");
    EXPECT_EQ(CIntegerPtr(camera["A"])->GetValue(), 7);
    Set("Other", 1);
    EXPECT_EQ(TakeCalls(), "Other A! ");
}

TEST_F(GenApiCallbacks, DeregisteredHandlesNeverFireAndAreNeverUsedAgain) {
    const CallbackHandleType first = Note("A");
    EXPECT_NE(first, 0);
    EXPECT_FALSE(camera["B"]->DeregisterCallback(first));
    EXPECT_TRUE(camera["A"]->DeregisterCallback(first));
    EXPECT_FALSE(Deregister(first));
    CallbackHandleType second = 0;
    // Deregisters one that is about to be called, and itself.
    const CallbackHandleType killer = Note("A", cbPostInsideLock, [&] {
        EXPECT_TRUE(Deregister(second));
        EXPECT_TRUE(Deregister(killer));
    });
    second = Note("A");
    const CallbackHandleType outside = Note("A", cbPostOutsideLock);
    EXPECT_NE(second, first);
    Set("A", 1);
    EXPECT_EQ(TakeCalls(), "A! A ");
    Set("A", 2);
    EXPECT_EQ(TakeCalls(), "A ");
    EXPECT_TRUE(Deregister(outside));
    const CallbackHandleType last = Note("A");
    camera.map._Destroy();
    EXPECT_FALSE(Deregister(last));
}

TEST_F(GenApiCallbacks, AThrowingCallbackStopsNeitherTheOthersNorTheCaller) {
    Note("A", cbPostInsideLock, [] { throw std::runtime_error("no"); });
    Note("A", cbPostInsideLock, [] { throw 7; });
    Note("A");
    Note("A", cbPostOutsideLock);
    Set("A", 1);
    EXPECT_EQ(TakeCalls(), "A! A! A! A ");
}

TEST_F(GenApiCallbacks, ACommandThatIsDoneNotifiesOnce) {
    Note("Reset");
    CCommandPtr reset = camera["Reset"];
    reset->Execute();
    TakeCalls();
    EXPECT_FALSE(reset->IsDone());
    camera.port.Fill(0, "00");
    EXPECT_TRUE(reset->IsDone());
    EXPECT_TRUE(reset->IsDone());
    EXPECT_EQ(TakeCalls(), "Reset! ");
}

TEST(GenApiThreads, OperationsCallbacksAndDeregistrationMix) {
    Camera camera(callbackNodes);
    std::atomic<bool> stop{false};
    std::atomic<int> calls{0};
    std::vector<std::thread> threads;
    for (const char *const name : {"A", "B"})
        threads.emplace_back([&, name] {
            for (int64_t i = 0; !stop; ++i)
                CIntegerPtr(camera[name])->SetValue(i % 100);
        });
    threads.emplace_back([&] {
        while (!stop)
            EXPECT_EQ(CIntegerPtr(camera["Twice"])->GetValue() % 2, 0);
    });
    for (int i = 0; i < 200; ++i) {
        const auto client = std::make_shared<int>(0);
        const CallbackHandleType inside = Register(camera["Twice"], [&, client](INode *) {
            ++*client;
            ++calls;
            CIntegerPtr(camera["Other"])->SetValue(*client);
        });
        std::atomic<int> outsideCalls{0};
        const CallbackHandleType outside = Register(
            camera["A"], [&, client](INode *) { ++outsideCalls; }, cbPostOutsideLock);
        while (outsideCalls == 0)
            std::this_thread::yield();
        EXPECT_TRUE(Deregister(inside));
        EXPECT_TRUE(Deregister(outside));
        EXPECT_EQ(client.use_count(), 1); // both callbacks have been deleted
    }
    stop = true;
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_GT(calls, 0);
}

} // namespace
