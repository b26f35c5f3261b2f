#pragma once

#include "commissioning/Inventory.h"

#include <nlohmann/json.hpp>

#include <string>

namespace commandline {

using Json = nlohmann::ordered_json;

/// null for an empty one
Json textOrNull(const std::string &text);
/// null for 0
Json addressJson(commissioning::Address address);
Json numberOrNull(int number);
Json storedJson(const commissioning::StoredAddresses &stored);

/// The object that --json prints; docs/json.md describes it. Every key is always there.
Json inventoryJson(const commissioning::Inventory &inventory);
/// One of its cameras, one of its findings.
Json cameraJson(const commissioning::Camera &camera);
Json findingJson(const commissioning::Finding &finding);
/// The same of a run that could not do what was asked. \param exitCode of the run.
Json errorJson(int exitCode, const std::string &text);
/// As text in ASCII: a terminal takes some characters beyond it for control sequences. Bytes of a camera that are no
/// UTF-8 become U+FFFD.
std::string printed(const Json &json);
/// The same in one line.
std::string printedLine(const Json &json);

} // namespace commandline
