#include "Desktop.h"

#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QtTest>

#include <array>
#include <atomic>
#include <iostream>
#include <random>
#include <thread>

using namespace testnet;
using std::chrono::milliseconds;

namespace {

constexpr int CamerasEach = 8;

class Dice {
public:
    explicit Dice(int seed) : m_Engine(static_cast<unsigned>(seed)) {}
    int below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(m_Engine); }
    bool oneIn(int count) { return below(count) == 0; }

private:
    std::mt19937 m_Engine;
};

camsim::FaultConfig randomFaults(Dice &dice) {
    camsim::FaultConfig faults;
    for (double *chance :
         {&faults.lossToCamera, &faults.lossFromCamera, &faults.wrongId, &faults.wrongCode, &faults.shortAck,
          &faults.longAck, &faults.staleId, &faults.garbage, &faults.duplicate, &faults.reorder})
        *chance = dice.oneIn(3) ? dice.below(40) : 0;
    faults.delayMax = milliseconds(dice.below(200));
    return faults;
}

/// Whatever can happen to cameras, on a thread of its own for as long as it lives.
class Trouble {
public:
    Trouble(const std::vector<std::pair<camsim::Simulator *, std::vector<camsim::CameraConfig>>> &sites, int seed)
        : m_Dice(seed) {
        for (const auto &[site, cameras] : sites)
            for (const camsim::CameraConfig &camera : cameras)
                m_Cameras.push_back({site, camera, true});
        m_Thread = std::thread([this] {
            for (; !m_Done; std::this_thread::sleep_for(milliseconds(m_Dice.below(100))))
                strike(m_Cameras[static_cast<std::size_t>(m_Dice.below(static_cast<int>(m_Cameras.size())))]);
        });
    }
    /// All is well again.
    ~Trouble() {
        m_Done = true;
        m_Thread.join();
        for (Camera &camera : m_Cameras) {
            plug(camera, true);
            camera.site->setFaults(camera.config.mac, camsim::FaultConfig());
            camera.site->setReachable(camera.config.mac, true);
            camera.site->setHolder(camera.config.mac, std::nullopt);
        }
    }

private:
    struct Camera {
        camsim::Simulator *site;
        camsim::CameraConfig config;
        bool isPlugged;
    };

    static void plug(Camera &camera, bool in) {
        if (in && !camera.isPlugged)
            camera.site->addCamera(camera.config);
        if (!in && camera.isPlugged)
            camera.site->removeCamera(camera.config.mac);
        camera.isPlugged = in;
    }

    void strike(Camera &camera) {
        const camsim::Holder other{{camsim::Ipv4::parse("192.168.10.200"), 5555}, GEV_CONTROL_ACCESS};
        plug(camera, !m_Dice.oneIn(8));
        if (!camera.isPlugged)
            return;
        switch (m_Dice.below(4)) {
        case 0:
            return camera.site->setFaults(camera.config.mac, randomFaults(m_Dice));
        case 1:
            return camera.site->setReachable(camera.config.mac, !m_Dice.oneIn(4));
        case 2:
            return camera.site->powerCycle(camera.config.mac);
        default:
            camera.site->setHolder(camera.config.mac, m_Dice.oneIn(4) ? std::optional(other) : std::nullopt);
        }
    }

    std::vector<Camera> m_Cameras;
    Dice m_Dice;
    std::atomic<bool> m_Done{false};
    std::thread m_Thread;
};

class Chaos : public Desktop {
protected:
    static Cameras camerasFrom(int first, const std::string &subnet) {
        Cameras cameras;
        for (int i = first; i < first + CamerasEach; ++i)
            cameras.push_back(
                cameraAt(static_cast<unsigned>(i),
                         i % 4 == 0 ? "172.16.0." + std::to_string(i) + "/16" : subnet + std::to_string(20 + i) + "/24",
                         ",silence=300,model=Model " + std::to_string(i) + (i % 3 == 0 ? ",vendor-config=error" : "")));
        return cameras;
    }

    void answer(QWidget &dialog) {
        const auto edits = dialog.findChildren<QLineEdit *>("editIpAddress");
        if (auto *box = qobject_cast<QMessageBox *>(&dialog))
            box->buttons().at(dice.below(box->buttons().size()))->click();
        else if (qobject_cast<QMenu *>(&dialog))
            QTest::keyClick(&dialog, Qt::Key_A);
        else if (!edits.isEmpty() && dice.oneIn(2)) {
            type(*edits.first(),
                 edits.first()->text().section('.', 0, 2) + "." + QString::number(100 + dice.below(100)));
            dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click();
        }
        dialog.close();
    }

    void act() {
        const QList<QTreeWidgetItem *> rows = tree().findItems("Model", Qt::MatchContains | Qt::MatchRecursive, Name);
        if (rows.isEmpty() || dice.oneIn(3))
            return refresh();
        select(rows.at(dice.below(rows.size())));
        if (dice.oneIn(6))
            return useContextMenu();
        if (dice.oneIn(2) || !isEnabled("editor"))
            return;
        click(std::array{"btnUsePersistentIp", "btnUseDhcp", "btnUseAutoIp"}[static_cast<std::size_t>(dice.below(3))]);
        if (isEnabled("editIpAddress"))
            type("editIpAddress", "192.168.10." + QString::number(100 + dice.below(100)));
        if (isEnabled("btnWriteConfiguration"))
            click("btnWriteConfiguration");
    }

    /// No row may say what its camera never said.
    void checkRows() const {
        for (QTreeWidgetItemIterator i(&tree()); *i; ++i) {
            if ((*i)->parent()) {
                EXPECT_EQ("Model " + (*i)->text(Serial), (*i)->text(Name));
                EXPECT_EQ(QString("025AE30000%1").arg((*i)->text(Serial).toInt(), 2, 16, QChar('0')).toUpper(),
                          (*i)->text(Mac));
            }
        }
    }

    Dice dice{0};
};

TEST_F(Chaos, NeverHangsNorShowsWhatNoCameraSaid) {
    const int seed = environmentNumber("LANVANE_CHAOS_SEED", static_cast<int>(std::random_device()() & 0x7FFFFFFF));
    const int end_ms = 1000 * environmentNumber("LANVANE_CHAOS_SECONDS", 5);
    std::cout << "LANVANE_CHAOS_SEED=" << seed << "\n";
    dice = Dice(seed);
    const Cameras first = camerasFrom(1, "192.168.10.");
    const Cameras second = camerasFrom(1 + CamerasEach, "192.168.20.");
    open(first, second);
    expectAnything([this](QWidget &dialog) { answer(dialog); });
    qint64 longest_ms = 0;
    int steps = 0;
    {
        const Trouble trouble({{&nic0->cameras, first}, {&nic1->cameras, second}}, seed);
        QElapsedTimer elapsed;
        for (elapsed.start(); !elapsed.hasExpired(end_ms) && !HasFailure(); ++steps) {
            const qint64 start_ms = elapsed.elapsed();
            act();
            longest_ms = std::max(longest_ms, elapsed.elapsed() - start_ms);
            checkRows();
        }
    }
    std::cout << steps << " steps, the longest of " << longest_ms << " ms; " << reports.size() << " errors reported\n";
    EXPECT_LT(longest_ms, 60000);

    expectAnything([](QWidget &box) { click(*static_cast<QMessageBox &>(box).button(QMessageBox::No)); });
    QTest::qWait(1000); // the last IP cycle
    refresh();
    for (unsigned i = 1; i <= 2 * CamerasEach; ++i) {
        EXPECT_EQ(addressOf(i), cell(i, IpAddress).toStdString()) << i;
        EXPECT_NE("In use", cell(i, Status)) << i;
    }
    checkRows();
}

} // namespace
