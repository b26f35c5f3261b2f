#pragma once

#include "commissioning/Findings.h"

#include <string>
#include <vector>

/// Commands that can be copied, each complete by itself, right for the host of an observation: with sudo unless the
/// user is root, by nmcli where NetworkManager manages the link, by the firewall that is active.
namespace commissioning {

using Commands = std::vector<std::string>;

Commands switchOn(const Observation &host, const Adapter &adapter);
Commands addAddress(const Observation &host, const Adapter &adapter, const AdapterAddress &added);
Commands replaceAddress(const Observation &host, const Adapter &adapter, const AdapterAddress &old,
                        const AdapterAddress &replacement);
Commands addRoute(const Observation &host, const Adapter &adapter, Address destination);
/// Switches reverse path filtering off for these adapters, now and from the next start on.
Commands stopFiltering(const Observation &host, const std::vector<const Adapter *> &adapters);
Commands letAnswersIn(const Observation &host);
Commands grantListening(const Observation &host, const std::string &program);
Commands enlargeBuffers(const Observation &host);
/// Of neighbours: room for more than the 1,024 that the kernel begins with.
Commands enlargeTable(const Observation &host);
/// A command of this tool for a camera. \param verb "rescue" \param rest " --static"
std::string cameraCommand(const std::string &verb, const Camera &camera, const std::string &rest = "");
/// A private subnet that no adapter of the host is in, with an address for the host. \param skipped how many to leave
/// out
AdapterAddress unusedSubnet(const Observation &host, unsigned skipped);

} // namespace commissioning
