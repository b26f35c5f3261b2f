#include "commissioning/Settings.h"

#include <tuple>

namespace commissioning {

bool operator==(const Settings &a, const Settings &b) {
    const auto tied = [](const Settings &s) { return std::tie(s.mode, s.address, s.mask, s.gateway, s.name); };
    return tied(a) == tied(b);
}

Settings settingsOf(const Camera &camera) {
    if (camera.mode == Mode::Static && camera.stored)
        return {camera.mode, camera.stored->address, camera.stored->mask, camera.stored->gateway, camera.name};
    return {camera.mode, camera.address, camera.mask, camera.gateway, camera.name};
}

Snapshot snapshotOf(const Camera &camera) {
    return {camera.word, {camera.address, camera.mask, camera.gateway}, camera.stored, camera.name};
}

} // namespace commissioning
