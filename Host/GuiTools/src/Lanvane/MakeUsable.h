#pragma once

#include "commissioning/Context.h"
#include "commissioning/Neighbourhood.h"
#include "commissioning/Refusals.h"
#include "commissioning/Rescue.h"
#include "commissioning/Result.h"

#include <QString>

#include <functional>

class QWidget;
class WindowInteraction;

/// Makes one camera usable: finds an address that nobody has, asks, and then forces, stores and verifies it. GUI thread
/// only; what takes time runs as an operation.
class MakeUsable {
public:
    /// Every adapter and camera that is known; called on the operation's thread.
    using Survey = std::function<commissioning::Inventory()>;

    MakeUsable(QWidget &window, WindowInteraction &interaction, const Corvo::CQuorelGigEDeviceInfo &device,
               const std::string &adapter);

    /// Finds an address and asks. \returns whether it is to be done.
    bool propose(const Survey &survey);
    /// Why nothing could be proposed; empty when nothing is wrong.
    const QString &problem() const { return m_Problem; }

    commissioning::Result carryOut(const commissioning::Context &context);
    const commissioning::RescuePlan &plan() const { return m_Plan; }
    /// Whether the camera is to have it for good.
    bool isKept() const { return m_IsKept; }

private:
    /// Null when there is none, which is then the problem.
    const commissioning::Adapter *adapter();
    bool findAddress(const Survey &survey);
    commissioning::AddressSurroundings surroundings();
    std::function<bool()> cancellation() const;
    bool ask();
    /// Whether the address is free. \returns false when the user has cancelled it.
    bool look();

    QWidget &m_Window;
    WindowInteraction &m_Interaction;
    commissioning::RescuePlan m_Plan;
    bool m_IsKept = true;
    commissioning::Inventory m_Inventory;
    commissioning::Neighbourhood m_Known;
    QString m_Problem;
};
