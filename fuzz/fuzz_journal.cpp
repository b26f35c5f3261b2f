// The text of a journal, whose changes are undone. fuzz_journal -max_len=4096 CORPUS seeds/fuzz_journal

#include "FuzzInput.h"

#include "commissioning/Journal.h"
#include "commissioning/Plan.h"
#include "commissioning/Undo.h"

#include <algorithm>

using namespace commissioning;

namespace {

Inventory inventory() {
    Inventory all;
    all.adapters.emplace_back();
    all.adapters[0].name = "eth1";
    all.adapters[0].addresses = {{0xC0A80A01, 0xFFFFFF00}};
    for (const char number : {'1', '2'}) {
        Camera camera;
        camera.mac = std::string("025AE300000") + number;
        camera.name = "left";
        camera.adapters = {"eth1"};
        camera.mode = Mode::Static;
        camera.word = 5;
        camera.address = 0xC0A80A10U + static_cast<unsigned>(number - '0');
        camera.mask = 0xFFFFFF00;
        camera.stored = StoredAddresses{camera.address, camera.mask, 0};
        all.cameras.push_back(camera);
    }
    return all;
}

void undo(const std::string &id, const JournalContent &content, bool isForced) {
    static const Inventory now = inventory();
    const Undo undo = undoOf(id, content.entries, now, isForced);
    for (const PlanEntry &entry : undo.plan.entries)
        Require(entry.line == 0 && entry.word.value_or(4) != 0, "an undo that is no undo");
    Require(review(undo.plan, now).changes.size() <= now.cameras.size(), "more changes than cameras");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const std::string text(reinterpret_cast<const char *>(data), size);
    const JournalContent content = readJournal(text);
    const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
    Require(content.entries.size() + content.unreadable.size() <= lines, "more entries than lines");
    for (const bool isForced : {false, true}) {
        undo(lastPlanIn(content.entries), content, isForced);
        undo(lastChangeOf("025AE3000001", content.entries), content, isForced);
        undo(content.entries.empty() ? "" : content.entries.front().id, content, isForced);
    }
    return 0;
}
