#pragma once

#include "commissioning/AddressText.h"
#include "commissioning/Findings.h"

#include <optional>
#include <string>
#include <vector>

namespace commissioning {

enum class Code {
#define FINDING(name, code, severity, text) name,
#include "FindingTable.inc"
#undef FINDING
};

inline constexpr const char *AllAdapters = "";
inline constexpr const char *NoCamera = "";

/// Gathers findings about one observation.
class FindingMaker {
public:
    explicit FindingMaker(const Observation &observation) : m_Observation(observation) {}

    Finding &add(Code code, const std::string &adapter, const std::string &camera, Evidence evidence,
                 std::vector<std::string> remedies, std::optional<Severity> severity = {});
    /// Errors first, otherwise as they were added.
    std::vector<Finding> take();

    const Observation &observation() const { return m_Observation; }
    /// An adapter by its name; null when there is none.
    const Adapter *adapter(const std::string &name) const;
    bool isSearched(const Adapter &adapter) const { return m_Observation.searched.count(adapter.name) != 0; }
    /// The adapter's address in whose subnet another address is; null when it is in none.
    static const AdapterAddress *subnetOf(const Adapter &adapter, Address address);

private:
    const Observation &m_Observation;
    std::vector<Finding> m_Findings;
};

/// Whether answers from foreign subnets that arrive by an adapter are dropped: rp_filter 1 always does so, 2 where no
/// route leads back, that is without a default route.
bool isFiltering(const Observation &observation, const Adapter &adapter);

void addCameraFindings(FindingMaker &maker);

} // namespace commissioning
