#include "Lanvane/MakeUsable.h"

#include "Lanvane/MakeUsableDialog.h"
#include "Lanvane/WindowInteraction.h"
#include "commissioning/DeviceInfos.h"
#include "commissioning/FreeAddresses.h"
#include "commissioning/SmallChanges.h"

#include <QWidget>

#include <algorithm>

using commissioning::Adapter;
using commissioning::Address;
using commissioning::Result;

MakeUsable::MakeUsable(QWidget &window, WindowInteraction &interaction, const Corvo::CQuorelGigEDeviceInfo &device,
                       const std::string &adapter)
    : m_Window(window), m_Interaction(interaction) {
    m_Plan.device = device;
    m_Plan.adapter = adapter;
}

const Adapter *MakeUsable::adapter() {
    const auto &all = m_Inventory.adapters;
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const Adapter &one) { return one.name == m_Plan.adapter; });
    if (found == all.end())
        m_Problem = QStringLiteral("The adapter that the camera is behind is not there any more.");
    else if (!homeSubnet(*found))
        m_Problem = QStringLiteral("The adapter %1 has no IPv4 address, so no camera behind it can be used.")
                        .arg(QString::fromStdString(m_Plan.adapter));
    return m_Problem.isEmpty() ? &*found : nullptr;
}

bool MakeUsable::findAddress(const Survey &survey) {
    return m_Interaction.run(QStringLiteral("Looking for a free address..."), [&] {
        m_Inventory = survey();
        const Adapter *const home = adapter();
        if (!home)
            return;
        const commissioning::Camera camera = commissioning::cameraOf(m_Plan.device);
        if (subnetToStayIn(camera, *home, surroundings(), &m_Known, cancellation())) {
            m_Plan.address = camera.address;
            return;
        }
        const auto found =
            commissioning::FreeAddresses(m_Inventory).take(*home, *homeSubnet(*home), {camera.address}, cancellation());
        m_Plan.address = found.front().value_or(0);
        if (found.front())
            m_Known.free.insert(*found.front());
    });
}

std::function<bool()> MakeUsable::cancellation() const {
    return [this] { return m_Interaction.isCancelled(); };
}

commissioning::AddressSurroundings MakeUsable::surroundings() {
    commissioning::AddressSurroundings around = surroundingsOn(m_Inventory.adapters, adapter());
    around.hidden = m_Inventory.cameras;
    return around;
}

bool MakeUsable::propose(const Survey &survey) {
    if (!findAddress(survey) || !m_Problem.isEmpty())
        return false;
    for (;;) {
        if (!ask())
            return false;
        const bool isOwn = m_Plan.address == commissioning::currentAddressOf(m_Plan.device);
        if (isOwn || m_Known.free.count(m_Plan.address) != 0)
            return true;
        if (!look())
            return false;
        if (m_Known.taken.count(m_Plan.address) == 0)
            return true;
    }
}

bool MakeUsable::ask() {
    MakeUsableDialog dialog(m_Plan, m_Inventory, *adapter(), &m_Known, &m_Window);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    m_Plan = dialog.plan();
    m_IsKept = dialog.isKept();
    return true;
}

bool MakeUsable::look() {
    return m_Interaction.run(QStringLiteral("Looking whether the address is free..."), [&] {
        const commissioning::AdapterAddress &subnet = *homeSubnet(*adapter());
        auto found = neighbourhoodOf(*adapter(), subnet, {m_Plan.address}, cancellation());
        found = stillThere(*adapter(), subnet, found, cancellation()); // a camera that was replaced by this one is not
        m_Known.free.insert(found.free.begin(), found.free.end());
        m_Known.taken.insert(found.taken.begin(), found.taken.end());
    });
}

Result MakeUsable::carryOut(const commissioning::Context &context) {
    Result result;
    result.text = "It is not known what was sent."; // until it has ended, however that may be
    const std::string mac = m_Plan.device.GetMacAddress().c_str();
    const commissioning::TemporaryAddress address{mac, m_Plan.address, m_Plan.mask, 0};
    const commissioning::AddressSurroundings around = surroundings();
    m_Interaction.runUnattended(address, [&] {
        result = m_IsKept ? rescue(context, m_Plan, around) : forceAddressTo(context, m_Plan.device, address);
    });
    return result;
}
