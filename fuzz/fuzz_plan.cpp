// The text of a plan. fuzz_plan -max_len=1024 CORPUS seeds/fuzz_plan

#include "FuzzInput.h"

#include "commissioning/Plan.h"
#include "commissioning/Utf8.h"

#include <tuple>

using namespace commissioning;

namespace {

Camera camera(char number, Mode mode, std::uint32_t word, const std::string &name) {
    Camera camera;
    camera.mac = std::string("025AE300000") + number;
    camera.name = name;
    camera.adapters = {"eth1"};
    camera.mode = mode;
    camera.word = word;
    camera.address = 0xC0A80A10U + static_cast<unsigned>(number - '0');
    camera.mask = 0xFFFFFF00;
    camera.stored = StoredAddresses{camera.address, camera.mask, 0xC0A80A01};
    return camera;
}

Inventory inventoryOf(const std::string &text) {
    Inventory inventory;
    inventory.adapters.emplace_back();
    inventory.adapters[0].name = "eth1";
    inventory.adapters[0].addresses = {{0xC0A80A01, 0xFFFFFF00}};
    inventory.cameras = {camera('1', Mode::Static, 5, text.substr(0, 16)), camera('2', Mode::Static, 7, "left"),
                         camera('3', Mode::Dhcp, 6, "left")};
    return inventory;
}

/// Characters of each line, as an editor counts them.
std::vector<int> lengthsOf(const std::string &text) {
    std::vector<int> lengths{0};
    wchar_t last = 0;
    forEachCharacter(text, [&](wchar_t character, std::string_view) {
        if (character == L'\r' || (character == L'\n' && last != L'\r'))
            lengths.push_back(0);
        else if (character != L'\n')
            ++lengths.back();
        last = character;
    });
    return lengths;
}

auto tied(const PlanEntry &entry) {
    return std::tie(entry.camera, entry.mode, entry.address, entry.mask, entry.gateway, entry.name);
}

void requireSame(const Plan &plan, const Plan &again) {
    Require(again.problems.empty() && again.entries.size() == plan.entries.size(), "a plan that cannot be read back");
    for (std::size_t i = 0; i < plan.entries.size(); ++i)
        Require(tied(plan.entries[i]) == tied(again.entries[i]), "an entry that is read back as another");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    const std::string text(bytes, bytes + size);
    const Plan plan = readPlan(text);
    const Inventory inventory = inventoryOf(text);
    const PlanReview judged = review(plan, inventory);
    const std::vector<int> lengths = lengthsOf(text);
    int line = 0;
    for (const PlanProblem &problem : judged.problems) {
        Require(problem.line >= line && problem.line <= static_cast<int>(lengths.size()), "a problem in no line");
        line = problem.line;
        Require(line == 0 || problem.character <= lengths[static_cast<std::size_t>(line - 1)] + 1,
                "a problem beside its line");
    }
    Require(judged.changes.size() <= inventory.cameras.size(), "a camera that is changed twice");
    if (plan.problems.empty())
        requireSame(plan, readPlan(planText(plan)));

    const PlanReview same = review(readPlan(planText(planOf(inventory))), inventory);
    Require(same.problems.empty() && !same.wouldChange() && same.changes.size() == 3,
            "an export that changes something");
    return 0;
}
