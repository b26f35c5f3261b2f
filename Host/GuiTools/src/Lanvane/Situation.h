#pragma once

#include "MinimalCorvoGigETL/QuorelGigEDeviceInfo.h"
#include "commissioning/Diagnosis.h"

#include <QHash>
#include <QString>

#include <vector>

/// What the last search has found out: adapters, cameras (the hidden ones, too) and what is wrong with them. To be used
/// by one thread at a time.
class Situation {
public:
    using Findings = std::vector<const commissioning::Finding *>; ///< errors first; valid until the next change

    /// That of before the first search.
    Situation() = default;
    /// \param isComplete whether the search came to its end; else nothing is known to be wrong.
    Situation(commissioning::Diagnosis &&diagnosis, bool isComplete);

    const commissioning::Inventory &inventory() const { return m_Inventory; }
    /// What the findings rest on.
    const commissioning::Observation &observation() const { return m_Observation; }
    bool isComplete() const { return m_IsComplete; }
    /// A camera has changed since.
    void follow(const Corvo::CQuorelGigEDeviceInfo &device);

    /// Null unless nobody but the listener heard it.
    const commissioning::Camera *hiddenCamera(const QString &mac) const;
    /// Null for one that is not there.
    const commissioning::Adapter *adapter(const QString &name) const;
    bool hasCameraBehind(const QString &adapter) const;

    Findings ofCamera(const QString &mac) const;
    /// With those of the whole host when the search used the adapter.
    Findings ofAdapter(const QString &name) const;
    /// All that are about no camera.
    Findings ofHost() const;

    /// Of a row: a camera's, or an adapter's when there is no MAC.
    bool needsAttention(const QString &mac, const QString &adapter) const;
    /// "12 cameras on 2 adapters, 3 need attention"; empty before the first search. Adapters in need are told apart.
    QString summary() const;

private:
    QString attentionText() const;
    void index();
    const commissioning::Camera *camera(const QString &mac) const;

    commissioning::Observation m_Observation;
    commissioning::Inventory m_Inventory;
    QHash<QString, std::size_t> m_Cameras;               ///< in the inventory, by MAC
    QHash<QString, std::vector<std::size_t>> m_OfCamera; ///< findings in the inventory, by MAC
    bool m_IsComplete = false;
    bool m_IsKnown = false;
};
