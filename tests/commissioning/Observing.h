#pragma once

#include "MinimalCorvoGigETL/IGigETransportLayer.h"
#include "commissioning/AddressText.h"
#include "commissioning/Findings.h"
#include "gxapi/Enumerator.h"
#include "gxapi/Gx.h"
#include "support/Site.h"
#include "transport/Layer.h"

#include <thread>

/// Searches as the library does, with the simulated cameras' memory in place of what a search reads by register.
class Observing : public LayerTest {
protected:
    using Observation = commissioning::Observation;

    static commissioning::Camera cameraOf(const Corvo::CQuorelGigEDeviceInfo &device, const Observation &host);
    /// \param isPatient measures the quiet interval first. \param listener path of lanvane-listen.
    Observation observe(bool isPatient = false, const std::string &listener = "");
    /// "warning foreign-subnet nic0 025AE3000001" of each finding.
    static std::vector<std::string> summary(const Observation &observation);
    static commissioning::Finding find(const Observation &observation, const std::string &code);
    static int run(const std::string &command) { return std::system(command.c_str()); }

    std::vector<const testnet::Site *> sites; ///< whose cameras' stored addresses are known
};
