#pragma once

#include "commissioning/Inventory.h"
#include "commissioning/Settings.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// Plans: what many cameras are to be set to, and what that would change.
namespace commissioning {

/// The columns of a plan, in the order in which they are written.
enum class PlanColumn { Camera, Mode, IpAddress, Mask, Gateway, Name };
constexpr std::size_t PlanColumns = 6;

/// Where something stands in a plan's file.
struct PlanPlace {
    int line = 0;      ///< from 1; 0 for nowhere
    int character = 0; ///< in the line, from 1 (characters of UTF-8, not bytes); 0 for the whole line
};

/// What one camera is to have. What is none is left alone.
struct PlanEntry {
    std::string camera; ///< a MAC in any spelling, a serial number, an address or a user-defined name
    std::optional<Mode> mode;
    std::optional<Address> address; ///< stored; with another mode than a static one only in an undo
    std::optional<Address> mask;
    std::optional<Address> gateway;    ///< 0 for no gateway at all
    std::optional<std::string> name;   ///< empty removes it; that only an undo asks for
    std::optional<std::uint32_t> word; ///< of modes (GEV_IP_CONFIG), in place of a mode: an undo puts it back as it was
    int line = 0;                      ///< in its file, from 1; 0 for an entry of no file
    std::array<PlanPlace, PlanColumns> places = {}; ///< where each cell begins; nowhere for one that is not there
    bool isBroken = false;                          ///< some cell of it makes no sense; the plan's problems say which
};

/// So many problems are told of a file, and so many of a plan held against the cameras; of the rest only that there are
/// more.
inline constexpr std::size_t MaxPlanProblems = 200;

/// Something wrong with a plan.
struct PlanProblem {
    int line = 0;      ///< as in PlanPlace; 0 when it is about the plan as a whole
    int character = 0; ///< as in PlanPlace
    std::string text;  ///< one or two sentences, for people
};

struct Plan {
    std::vector<PlanEntry> entries;
    std::vector<PlanProblem> problems; ///< of its file; such a plan must not be applied
    bool allowsForeignSubnets = false; ///< also addresses at which the host could not reach the camera
};

constexpr std::size_t MaxPlanBytes = 16U << 20U;

/// Reads a plan in CSV: comma, semicolon or tab, UTF-8 with or without byte order mark, any line ends, '#' comments.
/// Never throws for what stands in it; a longer one than MaxPlanBytes is not read, and one with very many problems not
/// to its end.
Plan readPlan(const std::string &text);

/// The plan that leaves everything as it is, with an entry for each camera that tells its mode. Addresses stand only
/// with static cameras whose stored address is known and in effect.
Plan planOf(const Inventory &inventory);

/// The entries in CSV, with commas and without byte order mark. What only an undo can ask for is left out; everything
/// else readPlan reads as it was.
std::string planText(const Plan &plan);

/// What stands in a cell, without quotes. What only an undo can ask for is left out.
std::string planCell(const PlanEntry &entry, PlanColumn column);

/// Takes what somebody has put into a cell, which is not empty, into the entry. An address may have a prefix length.
/// \returns what is wrong with it, a sentence or two; empty when nothing is.
std::string takePlanCell(const std::string &text, PlanColumn column, PlanEntry *pEntry);

/// What a plan does to one camera.
struct PlannedChange {
    Camera camera;                         ///< as it was found
    std::string adapter;                   ///< name of the one it is behind; empty when none is known
    Settings after;                        ///< addresses are 0 where only a server or chance knows them
    std::uint32_t word = 0;                ///< of modes that it is to have (GEV_IP_CONFIG)
    std::optional<StoredAddresses> stored; ///< what it is to have stored; none leaves that alone. A camera whose mode
                                           ///< is not static is made static first to get them, then what it is to be
    bool addressing = false; ///< mode or addresses differ from what the camera has; also an address that it has stored
                             ///< but does not use now
    bool naming = false;     ///< the name differs
    int line = 0;            ///< of the plan; 0 when it comes from no file

    bool differs() const { return addressing || naming; }
};

/// A plan held against what a search found.
struct PlanReview {
    std::vector<PlannedChange> changes; ///< one for each camera that the plan names, in its order
    std::vector<PlanProblem> problems;  ///< those of the file as well, sorted by line and character; the last one says
                                        ///< so when there are more than 200

    bool isRefused() const { return !problems.empty(); }
    bool wouldChange() const;
};

/// Judges the state after the plan: duplicate addresses among all cameras, addresses of this host, outside the
/// adapter's subnets, unknown or ambiguous cameras, modes a camera lacks, cameras that somebody holds, cameras that
/// share their MAC with another. Cameras that the plan does not change are not judged. Asks nobody.
/// \param inventory of all adapters: what is behind others counts, too.
/// \param taken addresses of others than cameras, with the MAC of who has them: no other camera can get them.
PlanReview review(const Plan &plan, const Inventory &inventory, const std::map<Address, std::string> &taken = {});

} // namespace commissioning
