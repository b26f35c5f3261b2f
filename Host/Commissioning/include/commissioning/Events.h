#pragma once

#include "commissioning/Inventory.h"
#include "commissioning/Plan.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

/// What has happened between the searches that follow each other. Asks nobody.
namespace commissioning {

/// One property of a camera that is not as it was, or as it should be. Empty texts stand for what is not known.
struct Difference {
    std::string what;   ///< "vendor", "model", "serial", "name", "adapters", "mode", "address", "mask", "gateway",
                        ///< "stored", "status" or "holder"
    std::string before; ///< in comparison with a plan: as planned
    std::string after;
};

struct Event {
    enum class Kind {
        Appeared,
        Vanished, ///< after two searches without it
        Changed,
        FindingCame,
        FindingWent, ///< after two searches without it
        Drifted,     ///< differs from the plan
        BackOnPlan,
        ProblemCame, ///< with the plan
        ProblemWent
    };
    Kind kind = Kind::Appeared;
    std::optional<Camera> camera; ///< as it is now, or was last
    std::vector<Difference> differences;
    std::optional<Finding> finding;
    std::optional<PlanProblem> problem;
};

const char *toText(Event::Kind kind); ///< "appeared", "finding-came"; never changes

/// What differs between two sightings of a camera. What one of them does not know makes no difference.
std::vector<Difference> differencesOf(const Camera &before, const Camera &after);

/// Follows what searches find. One lost answer makes no event: a camera, a finding or one of several adapters of a
/// camera is gone when two searches in a row miss it. Findings are told apart by code, adapter and camera, so numbers
/// in their texts may move. While two cameras share a MAC, what changes there is not told: nobody knows which one it is
/// of.
class Watcher {
public:
    /// \returns nothing for the first search, otherwise what has happened since the one before.
    std::vector<Event> compare(const Inventory &found);
    /// Holds what is there against a plan. A plan that could not be read counts as unchanged but for its problems.
    std::vector<Event> compare(const Plan &plan);

    /// What is there, with what only the last search missed.
    const Inventory &present() const { return m_Present; }
    /// How many of the plan's cameras differ from it.
    std::size_t offPlan() const { return m_OffPlan.size(); }

private:
    using FindingKey = std::tuple<std::string, std::string, std::string>; // code, adapter, camera
    using ProblemKey = std::tuple<int, int, std::string>;
    template <class Value> struct Sighting {
        Value value;
        int missed = 0;        ///< searches in a row
        bool isNarrow = false; ///< the last search saw it through fewer adapters
    };

    void compareCameras(const Inventory &found, std::vector<Event> *pEvents);
    void compareFindings(const Inventory &found, std::vector<Event> *pEvents);
    void update(Sighting<Camera> *pKnown, Camera now, bool isAmbiguous, std::vector<Event> *pEvents);
    bool isMissedBehind(const std::string &adapter) const;
    void compareProblems(const std::vector<PlanProblem> &problems, std::vector<Event> *pEvents);

    bool m_IsFirst = true;
    std::map<std::string, Sighting<Camera>> m_Cameras; ///< by MAC
    std::map<FindingKey, Sighting<Finding>> m_Findings;
    std::set<std::string> m_OffPlan; ///< MACs
    std::map<ProblemKey, PlanProblem> m_Problems;
    Inventory m_Present;
};

} // namespace commissioning
