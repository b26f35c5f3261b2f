#include "Desktop.h"
#include "support/Leaks.h"

#include <QElapsedTimer>
#include <QtTest>

#include <iostream>

using namespace testnet;

namespace {

class Scale : public Desktop {
protected:
    Scale() { qputenv("CORVO_BROADCAST_RECV_BUF_SIZE", "1000000"); } // the default loses some on a busy machine

    /// Cameras of the adapter at 10.NUMBER.0.1/16, the later three quarters of them in a foreign subnet. (A probe of
    /// each of a thousand would fill the kernel's table of neighbours, which all network namespaces share.)
    static Cameras camerasOn(unsigned adapter, unsigned count) {
        Cameras cameras;
        for (unsigned i = 0; i < count; ++i)
            cameras.push_back(cameraAt(adapter * 1000 + i,
                                       (i < count / 4 ? std::string("10.") : "172.") + std::to_string(adapter) + "." +
                                           std::to_string(1 + i / 250) + "." + std::to_string(1 + i % 250) + "/16"));
        return cameras;
    }
    void openWith(unsigned camerasEach) {
        nic0.emplace("nic0", "10.0.0.1/16", camerasOn(0, camerasEach));
        nic1.emplace("nic1", "10.1.0.1/16", camerasOn(1, camerasEach));
        awaitAdapters(2);
        openWindow();
    }
    static void expectNoGrowth(const char *what, int count, const std::function<void(int times)> &work) {
#ifdef __SANITIZE_ADDRESS__
        GTEST_SKIP() << "AddressSanitizer keeps what is freed; its leak check looks after the rest";
#endif
        work(3);
        const long before = residentMemory_KiB();
        work(count);
        const long growth = residentMemory_KiB() - before;
        std::cout << count << " " << what << ": " << before << " KiB and then " << growth << " more\n";
        EXPECT_LT(growth, 3000);
    }
};

TEST_F(Scale, AThousandCamerasOfWhichFiftyAreSilent) {
    openWith(500);
    const auto timeRefresh = [this](const char *what) {
        QElapsedTimer timer;
        timer.start();
        refresh();
        std::cout << "refresh of 1000 cameras, " << what << ": " << timer.elapsed() << " ms\n";
        EXPECT_EQ(500, tree().topLevelItem(0)->childCount());
        EXPECT_EQ(500, tree().topLevelItem(1)->childCount());
        return timer.elapsed();
    };
    timeRefresh("all well");
    for (unsigned i = 0; i < 25; ++i) {
        nic0->cameras.setReachable(camera(i).mac, false);
        nic1->cameras.setReachable(camera(1000 + i).mac, false);
    }
    const qint64 elapsed = timeRefresh("50 silent");
    EXPECT_EQ(200, tree().findItems("OK", Qt::MatchExactly | Qt::MatchRecursive, Status).size());
    EXPECT_LT(elapsed, 50 * 600); // the time-outs one after the other
}

TEST_F(Scale, RefreshesDoNotGrow) {
    openWith(100);
    expectNoGrowth("refreshes", environmentNumber("LANVANE_REFRESHES", 20), [this](int times) {
        for (int i = 0; i < times; ++i)
            refresh();
    });
    keepUpToDate(std::chrono::milliseconds(50));
    expectNoGrowth("updates", environmentNumber("LANVANE_UPDATES", 20), [this](int times) {
        const auto heard = [this] { return status(1).requests[TAG_DISCOVERY_CMD]; };
        const auto wanted = heard() + static_cast<unsigned>(times);
        EXPECT_TRUE(QTest::qWaitFor([&] { return heard() >= wanted; }, times * 2000));
    });
}

} // namespace
