#include "Lanvane/Situation.h"

#include "commissioning/DeviceInfos.h"
#include "commissioning/Survey.h"

#include <QStringList>

#include <algorithm>
#include <utility>

using commissioning::Camera;
using commissioning::Finding;
using commissioning::Severity;

namespace {

bool isSerious(const Finding *finding) { return finding->severity != Severity::Info; }

QString counted(qint64 count, const char *what) {
    return QStringLiteral("%1 %2%3").arg(count).arg(QLatin1String(what), QLatin1String(count == 1 ? "" : "s"));
}

} // namespace

Situation::Situation(commissioning::Diagnosis &&diagnosis, bool isComplete)
    : m_Observation(std::move(diagnosis.observation)), m_Inventory{m_Observation.adapters, m_Observation.cameras,
                                                                   std::move(diagnosis.findings)},
      m_IsComplete(isComplete), m_IsKnown(true) {
    index();
}

void Situation::index() {
    m_Cameras.clear();
    m_OfCamera.clear();
    for (std::size_t i = 0; i < m_Inventory.cameras.size(); ++i)
        m_Cameras.insert(QString::fromStdString(m_Inventory.cameras[i].mac), i);
    for (std::size_t i = 0; i < m_Inventory.findings.size(); ++i)
        m_OfCamera[QString::fromStdString(m_Inventory.findings[i].camera)].push_back(i);
}

void Situation::follow(const Corvo::CQuorelGigEDeviceInfo &device) {
    const auto known = m_Cameras.constFind(QString::fromUtf8(device.GetMacAddress().c_str()));
    if (known == m_Cameras.constEnd())
        return;
    Camera &camera = m_Observation.cameras[*known];
    const auto holder = camera.holder;
    camera = commissioning::cameraOf(device);
    if (holder && camera.holder && holder->port == camera.holder->port)
        camera.holder = holder; // with its process
    m_Inventory.cameras[*known] = camera;
    if (m_IsComplete)
        m_Inventory.findings = findingsOf(m_Observation);
    index();
}

const Camera *Situation::camera(const QString &mac) const {
    const auto found = m_Cameras.constFind(mac);
    return found == m_Cameras.constEnd() ? nullptr : &m_Inventory.cameras[*found];
}

const Camera *Situation::hiddenCamera(const QString &mac) const {
    const Camera *const found = camera(mac);
    return found && found->hidden ? found : nullptr;
}

const commissioning::Adapter *Situation::adapter(const QString &name) const {
    const auto &adapters = m_Inventory.adapters;
    const auto found = std::find_if(adapters.begin(), adapters.end(),
                                    [&](const auto &adapter) { return adapter.name == name.toStdString(); });
    return found == adapters.end() ? nullptr : &*found;
}

bool Situation::hasCameraBehind(const QString &adapter) const {
    const std::string name = adapter.toStdString();
    return std::any_of(m_Inventory.cameras.begin(), m_Inventory.cameras.end(), [&](const Camera &one) {
        return std::find(one.adapters.begin(), one.adapters.end(), name) != one.adapters.end();
    });
}

Situation::Findings Situation::ofCamera(const QString &mac) const {
    Findings findings;
    for (const std::size_t position : m_OfCamera.value(mac))
        findings.push_back(&m_Inventory.findings[position]);
    return findings;
}

Situation::Findings Situation::ofAdapter(const QString &name) const {
    const bool isSearched = m_Observation.searched.count(name.toStdString()) != 0;
    Findings findings = ofHost();
    const auto isElsewhere = [&](const Finding *finding) {
        return finding->adapter.empty() ? !isSearched : finding->adapter != name.toStdString();
    };
    findings.erase(std::remove_if(findings.begin(), findings.end(), isElsewhere), findings.end());
    return findings;
}

Situation::Findings Situation::ofHost() const { return ofCamera(QString()); }

bool Situation::needsAttention(const QString &mac, const QString &adapter) const {
    const Findings findings = mac.isEmpty() ? ofAdapter(adapter) : ofCamera(mac);
    if (std::any_of(findings.begin(), findings.end(), isSerious))
        return true;
    const Camera *const found = m_IsComplete && !mac.isEmpty() ? camera(mac) : nullptr;
    return found != nullptr && found->status != commissioning::Status::Ok &&
           found->status != commissioning::Status::InUse;
}

QString Situation::attentionText() const {
    const auto cameras =
        std::count_if(m_Inventory.cameras.begin(), m_Inventory.cameras.end(),
                      [this](const Camera &one) { return needsAttention(QString::fromStdString(one.mac), QString()); });
    const auto adapters =
        std::count_if(m_Inventory.adapters.begin(), m_Inventory.adapters.end(),
                      [this](const auto &one) { return needsAttention(QString(), QString::fromStdString(one.name)); });
    if (cameras + adapters == 0)
        return {};
    QStringList parts;
    if (cameras > 0)
        parts << (adapters > 0 ? counted(cameras, "camera") : QString::number(cameras));
    if (adapters > 0)
        parts << counted(adapters, "adapter");
    return QStringLiteral(", %1 %2 attention")
        .arg(parts.join(QStringLiteral(" and ")), QLatin1String(cameras + adapters == 1 ? "needs" : "need"));
}

QString Situation::summary() const {
    if (!m_IsKnown)
        return {};
    const auto adapters =
        std::count_if(m_Inventory.adapters.begin(), m_Inventory.adapters.end(), commissioning::isUsable);
    return counted(static_cast<qint64>(m_Inventory.cameras.size()), "camera") + QStringLiteral(" on ") +
           counted(adapters, "adapter") + attentionText();
}
