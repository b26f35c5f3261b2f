// The window while an operation runs: it paints, takes no other input, and ends what is cancelled.

#include "Desktop.h"
#include "Watchdog.h"

#include <QAbstractButton>
#include <QLabel>
#include <QLineEdit>
#include <QtTest>

#include <iostream>

using namespace testnet;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr const char *Searching = "Searching for devices...";

/// The payload of an answer to a discovery.
Bytes discovered(unsigned number) {
    Bytes payload(248);
    const auto put = [&](std::size_t offset, std::uint32_t value) {
        for (int i = 0; i < 4; ++i)
            payload[offset + static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
    };
    put(8, 0x025A);
    put(12, 0xE3800000u + number);
    put(16, 7);                        // what it can be set to
    put(20, 5);                        // static
    put(36, 0xAC100000u + number + 1); // 172.16.0.1 and so on: foreign, so that it is not asked
    put(52, 0xFFFF0000u);
    const std::string model = "Forged " + std::to_string(number % 97), serial = std::to_string(number);
    std::copy(model.begin(), model.end(), payload.begin() + 104);
    std::copy(serial.begin(), serial.end(), payload.begin() + 216);
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
    void save(const QString &address) {
        type("editIpAddress", address);
        click("btnWriteConfiguration");
    }

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
    expectWait(Searching, [](QWidget &box) { QTest::keyClick(&box, Qt::Key_Escape); });
    refresh();
    EXPECT_EQ("192.168.10.21 Not checked yet", cell(1, IpAddress) + " " + cell(1, Status));
    EXPECT_THAT(info().toStdString(), HasSubstr("<b>Cancelled.</b> The search was cancelled"));
    select(1);
    EXPECT_THAT(info().toStdString(), HasSubstr("The device has not been checked yet"));
    EXPECT_THAT(reports, ElementsAre());
}

TEST_F(Waiting, CancelEndsAWholeSaveAndSaysWhatWasSent) {
    const camsim::CameraConfig silent = cameraAt(1, "192.168.10.21/24", ",silence=3600000");
    open({silent});
    the<IpConfigurationWidget>("IpConfigurationWidget").setRediscoveryPatience({60, std::chrono::milliseconds(100)});
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
        type("editIpAddress", "192.168.10." + QString::number(++host));
        click("btnWriteConfiguration");
        EXPECT_THAT(info().toStdString(), HasSubstr("<b>Cancelled.</b> The settings were sent"));
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

TEST_F(Waiting, CancelAfterAUnicastWriteSaysWhatWasSent) {
    open({cameraAt(1, "192.168.10.21/24", ",xml=none,vendor-config=error,while-controlled=accept,silence=3600000")});
    the<IpConfigurationWidget>("IpConfigurationWidget").setRediscoveryPatience({60, std::chrono::milliseconds(100)});
    select(1);
    expectWait(Rediscovering, [](QWidget &box) { QTest::keyClick(&box, Qt::Key_Escape); });
    save("192.168.10.51");
    EXPECT_THAT(info().toStdString(), HasSubstr("<b>Cancelled.</b> The settings were sent, but"));
    EXPECT_EQ("Not Reachable", cell(1, Status));
    EXPECT_THAT(reports, ElementsAre());
}

TEST_F(Waiting, CancelEndsAForceAndTheRowSaysWhatItHasDone) {
    open({cameraAt(1, "172.16.0.9/16", ",silence=2000")});
    the<IpConfigurationWidget>("IpConfigurationWidget").setRediscoveryPatience({60, std::chrono::milliseconds(100)});
    select(1);
    expectForceIp(AssignHeader, "192.168.10.77");
    expectWait(Rediscovering, [](QWidget &box) { QTest::keyClick(&box, Qt::Key_Escape); });
    useContextMenu();
    EXPECT_THAT(info().toStdString(), HasSubstr("<b>Cancelled.</b> The address 192.168.10.77 was sent, "));
    EXPECT_FALSE(waits.contains(QString())) << "a box without its step";
    EXPECT_THAT(reports, ElementsAre());
}

} // namespace
