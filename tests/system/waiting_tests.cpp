// The window while an operation runs: it paints, takes no other input, and ends what is cancelled.

#include "Desktop.h"
#include "Watchdog.h"

#include <QAbstractButton>
#include <QtTest>

#include <cstddef>
#include <cstring>
#include <iostream>

using namespace testnet;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

/// The payload of an answer to a discovery.
Bytes discovered(unsigned number) {
    GEV_DISCOVERY_INFO info{};
    info.DeviceMacAddress = {0x025A, 0xE3800000 + number};
    info.IPConfigOptions = {1, 1, 1, 0};
    info.IPConfigCurrent = {1, 0, 1, 0};
    info.CurrentIP.IPv4.Address = 0xAC100001 + number; // 172.16.0.1 and so on: foreign, so that it is not asked
    info.CurrentSubnetMask.IPv4.Address = 0xFFFF0000;
    ("Forged " + std::to_string(number % 97)).copy(info.Description.ModelName, 31);
    std::to_string(number).copy(info.Description.SerialNumber, 15);
    Bytes payload(sizeof info);
    std::memcpy(payload.data(), &info, sizeof info);
    constexpr std::ptrdiff_t EndOfWords = offsetof(GEV_DISCOVERY_INFO, Description);
    for (auto word = payload.begin(); word < payload.begin() + EndOfWords; word += 4)
        std::reverse(word, word + 4);
    return payload;
}

#ifdef __SANITIZE_ADDRESS__ // many times slower, so only what it finds counts
constexpr int LongestGap_ms = 2000;
#else
constexpr int LongestGap_ms = 100;
#endif

class Waiting : public Desktop {
protected:
    /// Answers of cameras that do not exist, and junk between them.
    void forge(unsigned adapters, unsigned camerasEach) {
        for (unsigned i = 0; i < adapters; ++i) {
            const std::string subnet = "10.0." + std::to_string(i) + ".";
            m_Forged.push_back(std::make_unique<ScriptedSite>(
                "nic" + std::to_string(i), subnet + "1/24", subnet + "2/24",
                [=](const Bytes &request, std::size_t) -> std::vector<Bytes> {
                    std::vector<Bytes> answers;
                    if (!m_IsForging || request.at(3) != 2) // or no search
                        return answers;
                    for (unsigned number = i * camerasEach; number < (i + 1) * camerasEach; ++number) {
                        answers.push_back(acknowledge(request, 0, 3, discovered(number)));
                        if (number % 8 == 0)
                            answers.emplace_back(number % 1000, 0xAB);
                    }
                    return answers;
                }));
        }
        awaitAdapters(static_cast<int>(adapters));
    }
    /// The longest gap of the event loop. A busy machine makes some of its own, but not each time.
    template <class Work> void expectNoGap(const char *what, Work work) {
        int least_ms = std::numeric_limits<int>::max();
        for (int i = 0; i < 3 && least_ms > LongestGap_ms; ++i) {
            watchdog.takeLongest_ms();
            work();
            least_ms = std::min(least_ms, watchdog.takeLongest_ms());
        }
        std::cout << what << ": " << least_ms << " ms\n";
        EXPECT_LE(least_ms, LongestGap_ms) << what;
    }
    void waitLong() { content().setRediscoveryPatience({60, std::chrono::milliseconds(100)}); }

    Watchdog watchdog;
    std::atomic<bool> m_IsForging{false};
    std::vector<std::unique_ptr<ScriptedSite>> m_Forged;
};

TEST_F(Waiting, TheEventLoopGoesOnInEachOperation) {
    open({cameraAt(1, "192.168.10.21/24"), unicastCamera(2, "192.168.10.22/24"), cameraAt(3, "172.16.0.9/16"),
          cameraAt(4, "192.168.10.24/24", ",reachable=no")});
    int host = 50;
    const auto next = [&] { return "192.168.10." + QString::number(++host); };
    expectNoGap("refresh", [&] { refresh(); });
    select(1);
    expectNoGap("save by broadcast", [&] { save(next()); });
    select(2);
    expectNoGap("save by unicast", [&] { save(next()); });
    select(3);
    expectNoGap("force", [&] {
        expectForceIp(AssignHeader, next());
        useContextMenu();
    });
    nic0->cameras.setReachable(camera(2).mac, false);
    select(2);
    expectNoGap("a camera that does not answer", [&] {
        expectForceIp(ConnectHeader);
        expectBox(NotSaved, QMessageBox::Close);
        save(next());
    });
    press(Qt::Key_Escape);
}

TEST_F(Waiting, TheEventLoopGoesOnWith16384CamerasAndJunk) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "an instrumented program cannot read so many answers as fast as they come";
#endif
    constexpr unsigned CamerasPerAdapter = 4096;
    forge(4, CamerasPerAdapter);
    openWindow();
    m_IsForging = true;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [this] {
        const QTreeWidgetItem *first = tree().topLevelItem(0)->child(5);
        if (first != nullptr && first->text(Status) == "Not Reachable")
            window().close(); // all of them would take a minute
    });
    timer.start(100);
    expectNoGap("16384 cameras", [&] { refresh(); });
    timer.stop();
    const QTreeWidgetItem &last = *tree().topLevelItem(3);
    ASSERT_GT(last.childCount(), static_cast<int>(CamerasPerAdapter / 4));
    EXPECT_EQ("Not checked yet", last.child(last.childCount() - 1)->text(Status));
    expectNoGap("their selection", [&] { select(tree().topLevelItem(0)->child(20)); });
}

TEST_F(Waiting, CancelEndsASearch) {
    open({cameraAt(1, "192.168.10.21/24")});
    nic0->cameras.setReachable(camera(1).mac, false);
    expectWaitAndCancel("Searching for devices...");
    refresh();
    EXPECT_EQ("192.168.10.21 Not checked yet", cell(1, IpAddress) + " " + cell(1, Status));
    EXPECT_THAT(said(), HasSubstr("<b>Cancelled.</b> The search was cancelled"));
    select(1);
    EXPECT_THAT(said(), HasSubstr("The device has not been checked yet"));
    EXPECT_THAT(reports, ElementsAre());
}

TEST_F(Waiting, CancelEndsAWholeSaveAndSaysWhatWasSent) {
    const camsim::CameraConfig silent = cameraAt(1, "192.168.10.21/24", ",silence=3600000");
    open({silent});
    waitLong();
    const Act ways[] = {
        [](QWidget &box) { click(*box.findChild<QAbstractButton *>()); },
        [](QWidget &box) { QTest::keyClick(&box, Qt::Key_Escape); },
        [](QWidget &box) { box.close(); },
        [this](QWidget &) { EXPECT_FALSE(window().close()); },
    };
    int host = 50;
    for (const Act &cancel : ways) {
        select(1);
        expectWait(Rediscovering, cancel);
        save("192.168.10." + QString::number(++host));
        EXPECT_THAT(said(), HasSubstr("<b>Cancelled.</b> The settings were sent"));
        EXPECT_EQ("Not Reachable", cell(1, Status));
        EXPECT_TRUE(window().isVisible());
        EXPECT_EQ(0u, status(1).requests.count(TAG_WRITEREG_CMD));
        nic0->cameras.removeCamera(camera(1).mac);
        nic0->cameras.addCamera(silent);
        refresh();
    }
    EXPECT_THAT(waits, testing::Not(testing::Contains("Trying to establish a connection to the device...")));
    EXPECT_THAT(reports, ElementsAre());
}

TEST_F(Waiting, CancelAfterAUnicastWriteOrAForceSaysWhatWasSent) {
    open({unicastCamera(1, "192.168.10.21/24", ",silence=3600000"), cameraAt(2, "172.16.0.9/16", ",silence=2000")});
    waitLong();
    select(1);
    expectWaitAndCancel(Rediscovering);
    save("192.168.10.51");
    EXPECT_THAT(said(), HasSubstr("<b>Cancelled.</b> The settings were sent, but"));
    EXPECT_EQ("Not Reachable", cell(1, Status));

    select(2);
    expectForceIp(AssignHeader, "192.168.10.77");
    expectWaitAndCancel(Rediscovering);
    useContextMenu();
    EXPECT_THAT(said(), HasSubstr("<b>Cancelled.</b> The address 192.168.10.77 was sent, "));
    EXPECT_FALSE(waits.contains(QString())) << "a box without its step";
    EXPECT_THAT(reports, ElementsAre());
}

} // namespace
