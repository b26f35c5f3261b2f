// The window and a watch at the same cameras, to which everything happens that can happen.

#include "Desktop.h"
#include "Watchdog.h"
#include "commissioning/AddressText.h"
#include "commissioning/DeviceInfos.h"
#include "support/TestFolder.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QMenu>
#include <QProcess>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

#include <array>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <thread>
#include <unistd.h>

using namespace testnet;
using commissioning::Fate;
using commissioning::JournalEntry;
using commissioning::StoredAddresses;
using std::chrono::milliseconds;

namespace {

constexpr int CamerasEach = 8;
constexpr unsigned LongestStep_s = 180;

class Dice {
public:
    explicit Dice(int seed) : m_Engine(static_cast<unsigned>(seed)) {}
    int below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(m_Engine); }
    bool oneIn(int count) { return below(count) == 0; }

private:
    std::mt19937 m_Engine;
};

camsim::FaultConfig lossOf(int percent) {
    camsim::FaultConfig faults;
    faults.lossToCamera = faults.lossFromCamera = percent;
    return faults;
}

camsim::FaultConfig randomFaults(Dice &dice, int lossPercent) {
    camsim::FaultConfig faults = lossOf(lossPercent);
    for (double *chance : {&faults.wrongId, &faults.wrongCode, &faults.shortAck, &faults.longAck, &faults.staleId,
                           &faults.garbage, &faults.duplicate, &faults.reorder})
        *chance = dice.oneIn(3) ? dice.below(40) : 0;
    faults.delayMax = milliseconds(dice.below(200));
    return faults;
}

/// Whatever can happen to cameras, on a thread of its own, for some time. Then all is well again.
class Trouble {
public:
    Trouble(const std::vector<std::pair<camsim::Simulator *, std::vector<camsim::CameraConfig>>> &sites, int seed,
            int lossPercent, milliseconds time)
        : m_Dice(seed), m_LossPercent(lossPercent), m_End(std::chrono::steady_clock::now() + time) {
        for (const auto &[site, cameras] : sites) {
            site->setFaults(lossOf(lossPercent));
            for (const camsim::CameraConfig &camera : cameras)
                m_Cameras.push_back({site, camera, true});
        }
        m_Thread = std::thread([this] {
            for (; !isOver(); std::this_thread::sleep_for(milliseconds(m_Dice.below(250))))
                strike(anyCamera());
            for (Camera &camera : m_Cameras)
                heal(camera);
        });
    }
    ~Trouble() { m_Thread.join(); }

    bool isOver() const { return std::chrono::steady_clock::now() > m_End; }

private:
    struct Camera {
        camsim::Simulator *site;
        camsim::CameraConfig config;
        bool isPlugged;
    };

    Camera &anyCamera() {
        return m_Cameras[static_cast<std::size_t>(m_Dice.below(static_cast<int>(m_Cameras.size())))];
    }

    /// It comes back with what it has stored. \param forced the address it comes back at; none for its own.
    static void plug(Camera &camera, bool in, std::optional<camsim::IpSettings> forced = {}) {
        if (in == camera.isPlugged)
            return;
        camera.isPlugged = in;
        if (in) {
            camera.config.forced = forced;
            return camera.site->addCamera(camera.config);
        }
        // What is written after the next look would be forgotten.
        camera.site->setFaults(camera.config.mac, lossOf(100));
        const camsim::CameraStatus last = camera.site->status(camera.config.mac);
        camera.config.persistent = last.persistent;
        camera.config.ipEnabled = last.ipEnabled;
        camera.config.userName = last.userName;
        camera.site->removeCamera(camera.config.mac);
    }

    static void heal(Camera &camera) {
        plug(camera, true);
        camera.site->setFaults(camsim::FaultConfig());
        camera.site->setReachable(camera.config.mac, true);
        camera.site->setHolder(camera.config.mac, std::nullopt);
    }

    static void swapAddresses(Camera &one, Camera &other) {
        if (&one == &other || one.site != other.site || !other.isPlugged)
            return;
        const auto ofOne = one.site->status(one.config.mac).current;
        const auto ofOther = other.site->status(other.config.mac).current;
        plug(one, false);
        plug(other, false);
        plug(one, true, ofOther);
        plug(other, true, ofOne);
    }

    void strike(Camera &camera) {
        const camsim::Holder other{{camsim::Ipv4::parse("192.168.10.200"), 5555}, GEV_CONTROL_ACCESS};
        plug(camera, !m_Dice.oneIn(8));
        if (!camera.isPlugged)
            return;
        switch (m_Dice.below(5)) {
        case 0:
            return camera.site->setFaults(camera.config.mac, m_Dice.oneIn(2) ? randomFaults(m_Dice, m_LossPercent)
                                                                             : lossOf(m_LossPercent));
        case 1:
            return camera.site->setReachable(camera.config.mac, !m_Dice.oneIn(4));
        case 2:
            return camera.site->powerCycle(camera.config.mac);
        case 3:
            return swapAddresses(camera, anyCamera());
        default:
            camera.site->setHolder(camera.config.mac, m_Dice.oneIn(4) ? std::optional(other) : std::nullopt);
        }
    }

    std::vector<Camera> m_Cameras;
    Dice m_Dice;
    int m_LossPercent;
    std::chrono::steady_clock::time_point m_End;
    std::thread m_Thread;
};

/// `lanvanectl watch` beside the window.
class Watch {
public:
    Watch() {
        m_Process.setStandardOutputFile(QString::fromStdString(m_Folder / "out"));
        m_Process.setStandardErrorFile(QString::fromStdString(m_Folder / "error"));
        m_Process.start(LANVANECTL, {"watch", "--json", "--interval", "1"});
    }
    /// Ends it. It must have known these addresses at last, by serial number, and said nothing of a camera that it
    /// never had.
    void expect(const std::map<std::string, std::string> &addresses) {
        EXPECT_TRUE(QTest::qWaitFor([&] { return read() == addresses; }, 15000)) << text("out");
        EXPECT_EQ(QProcess::Running, m_Process.state());
        m_Process.terminate();
        EXPECT_TRUE(m_Process.waitForFinished());
        EXPECT_EQ("0 0", std::to_string(m_Process.exitStatus()) + " " + std::to_string(m_Process.exitCode()));
        EXPECT_EQ("", text("error"));
    }

private:
    std::string text(const char *file) const { return TestFolder::Read(m_Folder / file); }
    std::map<std::string, std::string> read() const {
        std::map<std::string, std::string> last;
        std::istringstream lines(text("out"));
        for (std::string line; std::getline(lines, line) && !lines.eof();) {
            const auto event = nlohmann::json::parse(line);
            auto cameras = event.value("cameras", nlohmann::json::array());
            if (event.contains("camera") && event["camera"].is_object())
                cameras.push_back(event["camera"]);
            for (const auto &camera : cameras) {
                const std::string serial = camera["serial"];
                EXPECT_EQ("Model " + serial, camera["model"]) << line;
                EXPECT_EQ(testnet::camera(static_cast<unsigned>(std::stoi(serial))).mac.toString(), camera["mac"]);
                last[serial] = event["event"] == "vanished" ? "vanished" : camera["address"];
            }
        }
        return last;
    }

    TestFolder m_Folder;
    QProcess m_Process;
};

std::string textOf(const StoredAddresses &stored) {
    using commissioning::toText;
    return toText(stored.address) + " " + toText(stored.mask) + " " + toText(stored.gateway);
}
std::string textOf(const camsim::IpSettings &stored) {
    return textOf(StoredAddresses{stored.address.value, stored.mask.value, stored.gateway.value});
}

/// What a camera may have stored as far as the journal tells.
class Believed {
public:
    explicit Believed(const camsim::CameraConfig &config)
        : m_Words{config.ipEnabled}, m_Addresses{textOf(config.persistent)} {}

    void follow(const JournalEntry &entry) {
        EXPECT_NE(Fate::Open, entry.fate);
        const bool isStoring = entry.what != "force" && entry.what != "temporary"; // which may be steps of another
        if (isStoring)
            expect(entry.before.word, entry.before.stored ? textOf(*entry.before.stored) : *m_Addresses.begin(),
                   entry.id);
        if (!isStoring || (entry.fate == Fate::Failed && entry.path == commissioning::Path::None))
            return;
        if (entry.after && entry.fate != Fate::Unconfirmed) {
            m_Words = {entry.after->word};
            if (entry.after->stored)
                m_Addresses = {textOf(*entry.after->stored)};
            else // it was static, so what it used is what it had stored
                m_Addresses.insert(textOf(entry.after->current));
        } else if (entry.wanted.mode)
            m_Words.insert(commissioning::wordOf(*entry.wanted.mode));
        const bool isRead = entry.after && entry.after->stored && entry.fate != Fate::Unconfirmed;
        if (!isRead && entry.wanted.address != 0)
            m_Addresses.insert(textOf(StoredAddresses{entry.wanted.address, entry.wanted.mask, entry.wanted.gateway}));
    }
    void expect(std::uint32_t word, const std::string &addresses, const std::string &where) const {
        EXPECT_THAT(m_Words, testing::Contains(word)) << where;
        EXPECT_THAT(m_Addresses, testing::Contains(addresses)) << where;
    }

private:
    std::set<std::uint32_t> m_Words;
    std::set<std::string> m_Addresses;
};

class Chaos : public Desktop, public testing::WithParamInterface<int> {
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

    QString anyAddress() {
        return (dice.oneIn(2) ? "192.168.10." : "192.168.20.") + QString::number(100 + dice.below(100));
    }

    void answer(QWidget &dialog) {
        const auto edits = dialog.findChildren<QLineEdit *>("editIpAddress");
        if (auto *box = qobject_cast<QMessageBox *>(&dialog))
            box->buttons().at(dice.below(box->buttons().size()))->click();
        else if (qobject_cast<QMenu *>(&dialog))
            QTest::keyClick(&dialog,
                            std::array{Qt::Key_A, Qt::Key_U, Qt::Key_C}[static_cast<std::size_t>(dice.below(3))]);
        else if (dialog.objectName() == "PlanWindow")
            applyPlan(dialog);
        else if (!edits.isEmpty() && dice.oneIn(2)) {
            if (dice.oneIn(2))
                type(*edits.first(), anyAddress());
            dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click();
        }
        dialog.close();
    }

    void applyPlan(QWidget &dialog) {
        auto &start = *dialog.findChild<QLineEdit *>("planStart");
        auto &mode = *dialog.findChild<QComboBox *>("planMode");
        if (start.isVisible() && dice.oneIn(2))
            type(start, anyAddress());
        if (start.isVisible() && dice.oneIn(3)) {
            mode.setCurrentIndex(1 + dice.below(3));
            emit mode.activated(mode.currentIndex());
        }
        if (!dice.oneIn(3)) // or it may take half a minute
            QTimer::singleShot(dice.below(4000), &dialog, [&] { QTest::keyClick(&dialog, Qt::Key_Escape); });
        for (int i = 0; i < 2 && dialog.isVisible(); ++i) // the second one past addresses that are taken
            dialog.findChild<QPushButton *>("planApply")->click();
    }

    void cancelOneIn(int chances) {
        for (QWidget *box : QApplication::topLevelWidgets()) {
            if (box->objectName() == "WaitBox" && box->isVisible() && dice.oneIn(chances))
                QTest::keyClick(box, Qt::Key_Escape);
        }
    }

    QTreeWidgetItem *anyRow() { return row(1 + static_cast<unsigned>(dice.below(2 * CamerasEach))); }

    void act() {
        if (dice.oneIn(8))
            return refresh();
        if (dice.oneIn(4))
            return QTest::qWait(dice.below(500));
        emit the<QMenu>("menuCameras").aboutToShow();
        if (dice.oneIn(4))
            return the<QAction>("actionUndoLastChange").trigger();
        if (QTreeWidgetItem *item = anyRow())
            select(item);
        if (dice.oneIn(3)) {
            for (QTreeWidgetItem *item : {anyRow(), anyRow(), anyRow()}) {
                if (item && dice.oneIn(2))
                    item->setSelected(true);
            }
            return the<QAction>("actionConfigureSelected").trigger();
        }
        if (dice.oneIn(2))
            return openContextMenu();
        if (!isEnabled("editor"))
            return;
        click(std::array{"btnUsePersistentIp", "btnUseDhcp", "btnUseAutoIp"}[static_cast<std::size_t>(dice.below(3))]);
        if (isEnabled("editIpAddress"))
            type("editIpAddress", anyAddress());
        if (isEnabled("btnWriteConfiguration"))
            click("btnWriteConfiguration");
    }

    /// No row may say what its camera never said.
    void checkRows() const {
        for (QTreeWidgetItemIterator i(&tree()); *i; ++i) {
            if ((*i)->parent()) {
                EXPECT_EQ("Model " + (*i)->text(Serial), (*i)->text(Name));
                EXPECT_EQ(macOf(camera((*i)->text(Serial).toUInt())), (*i)->text(Mac).toStdString());
            }
        }
    }

    /// What the window knows, after a search that nothing disturbed, is so.
    void checkInventory() {
        std::map<std::string, int> owners;
        const auto &known = content().inventory().cameras;
        EXPECT_EQ(2U * CamerasEach, known.size());
        for (const auto &camera : known)
            ++owners[commissioning::toText(camera.address)];
        for (const auto &camera : known) {
            const auto number = static_cast<unsigned>(std::stoi(camera.serial));
            const camsim::CameraStatus is = status(number);
            EXPECT_EQ(textOf(is.current.value()), textOf(StoredAddresses{camera.address, camera.mask, camera.gateway}))
                << number;
            EXPECT_EQ(is.ipEnabled, camera.word) << number;
            if (camera.stored)
                EXPECT_EQ(textOf(is.persistent), textOf(*camera.stored)) << number;
            else
                EXPECT_TRUE(camera.status != commissioning::Status::Ok || owners[addressOf(number)] > 1) << number;
            EXPECT_EQ(addressOf(number), cell(number, IpAddress).toStdString());
            EXPECT_NE("In use", cell(number, Status)) << number;
        }
    }

    /// Each camera has what it began with, or what the journal says.
    void checkJournal(const Cameras &cameras) {
        const commissioning::JournalContent journal =
            commissioning::Journal(commissioning::Journal::defaultPath()).read();
        EXPECT_TRUE(journal.unreadable.empty());
        std::map<std::string, Believed> believed;
        for (const camsim::CameraConfig &camera : cameras)
            believed.emplace(macOf(camera), camera);
        for (const JournalEntry &entry : journal.entries)
            believed.at(entry.mac).follow(entry);
        for (const camsim::CameraConfig &camera : cameras) {
            const camsim::CameraStatus is = status(static_cast<unsigned>(std::stoi(camera.serial)));
            believed.at(macOf(camera)).expect(is.ipEnabled, textOf(is.persistent), camera.serial);
        }
    }
    static std::string macOf(const camsim::CameraConfig &camera) {
        return QString::fromStdString(camera.mac.toString()).remove(':').toStdString();
    }

    Dice dice{0};
};

TEST_P(Chaos, NeverHangsNorShowsNorStoresWhatNobodyKnows) {
    const int seed = environmentNumber("LANVANE_CHAOS_SEED", static_cast<int>(std::random_device()() & 0x7FFFFFFF));
    const std::chrono::seconds time(environmentNumber("LANVANE_CHAOS_SECONDS", 4));
    std::cout << "LANVANE_CHAOS_SEED=" << seed << ", " << GetParam() << " % lost\n";
    dice = Dice(seed);
    Cameras cameras = camerasFrom(1, "192.168.10.");
    const Cameras second = camerasFrom(1 + CamerasEach, "192.168.20.");
    open(cameras, second);
    Watch watch;
    keepUpToDate(milliseconds(300));
    expectAnything([this](QWidget &dialog) { answer(dialog); });
    Watchdog watchdog;
    int steps = 0;
    {
        const Trouble trouble({{&nic0->cameras, cameras}, {&nic1->cameras, second}}, seed, GetParam(), time);
        QTimer cancels;
        QObject::connect(&cancels, &QTimer::timeout, [&] { cancelOneIn(trouble.isOver() ? 1 : 20); });
        cancels.start(100);
        for (; !trouble.isOver() && !HasFailure(); ++steps) {
            alarm(LongestStep_s); // which ends the process
            act();
            checkRows();
        }
    }
    const int longest_ms = watchdog.takeLongest_ms();
    std::cout << steps << " steps, the longest wait of an event " << longest_ms << " ms\n";
    EXPECT_LT(longest_ms, 5000);

    the<QAction>("actionKeepUpToDate").setChecked(false);
    expectAnything([](QWidget &box) { click(*static_cast<QMessageBox &>(box).button(QMessageBox::No)); });
    QTest::qWait(1000); // the last IP cycle
    refresh();
    checkRows();
    checkInventory();
    cameras.insert(cameras.end(), second.begin(), second.end());
    checkJournal(cameras);
    std::map<std::string, std::string> addresses;
    for (const camsim::CameraConfig &camera : cameras)
        addresses[camera.serial] = addressOf(static_cast<unsigned>(std::stoi(camera.serial)));
    watch.expect(addresses);
    alarm(0);
    if (HasFailure())
        std::cout << TestFolder::Read(commissioning::Journal::defaultPath());
}

INSTANTIATE_TEST_SUITE_P(Loss, Chaos, testing::Values(0, 15), testing::PrintToStringParamName());

} // namespace
