#pragma once

#include "Commands.h"
#include "Terminal.h"
#include "commissioning/Inventory.h"

#include <string>

namespace commandline {

// What people read.

std::string listPage(const commissioning::Inventory &inventory, const Terminal &terminal);
std::string showPage(const commissioning::Camera &camera, const commissioning::Inventory &inventory,
                     const Terminal &terminal);
std::string doctorPage(const commissioning::Inventory &inventory, const Terminal &terminal);
/// With what helps where a change could not be confirmed.
std::string changesPage(const Outcome &outcome, const commissioning::Inventory &inventory, const Terminal &terminal);

} // namespace commandline
