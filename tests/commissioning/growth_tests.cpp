#include "Metrics.h"
#include "MinimalCorvoGigETL/TlFactory.h"
#include "commissioning/Diagnosis.h"
#include "commissioning/Events.h"
#include "commissioning/Recollection.h"
#include "gxapi/GvcpMessages.h"
#include "support/Leaks.h"
#include "support/ScriptedNetwork.h"
#include "transport/Layer.h"

#include <cstring>
#include <iostream>

using namespace commissioning;

namespace {

std::uint32_t word(const Bytes &bytes, std::size_t offset) {
    std::uint32_t value = 0;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return ntohl(value);
}

void append(Bytes *pBytes, std::uint32_t value) {
    for (const int shift : {24, 16, 8, 0})
        pBytes->push_back(static_cast<std::uint8_t>(value >> shift));
}

/// A camera that has each address of its subnet in turn and stays away now and then.
Bytes acknowledgeOf(unsigned round) {
    Bytes bytes = {0, 0, 0, TAG_DISCOVERY_ACK, 0, sizeof(GEV_DISCOVERY_INFO), 0xFF, 0xFF};
    for (const std::uint32_t value : {0x00010002U, 0x80000001U, 0x025AU, 0xE3000001U, 7U, 5U})
        append(&bytes, value);
    bytes.resize(sizeof(GVCP_DISCOVERY_RESPONSE));
    const std::uint32_t address = htonl(0x7F000010 + round / 50 % 200);
    std::memcpy(bytes.data() + 8 + offsetof(GEV_DISCOVERY_INFO, CurrentIP) + 12, &address, sizeof address);
    std::memcpy(bytes.data() + 8 + offsetof(GEV_DISCOVERY_INFO, Description) + 160, "left", 4);
    return bytes;
}

Bytes registersOf(const Bytes &request) {
    Bytes bytes = {0, 0, 0, TAG_READREG_ACK, request[4], request[5], request[6], request[7]};
    for (std::size_t i = 8; i + 4 <= request.size(); i += 4) {
        const std::uint32_t address = word(request, i);
        append(&bytes, address == GEV_REG_DEVICE_MAC_HIGH  ? 0x025A
                       : address == GEV_REG_DEVICE_MAC_LOW ? 0xE3000001
                                                           : 0);
    }
    return bytes;
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool KeepsMemory = true; // what is freed, or what was seen
constexpr unsigned Searches = 2000;
#else
constexpr bool KeepsMemory = false;
constexpr unsigned Searches = 10000;
#endif

using Growth = LayerTest;

/// Three and a half days of a watch.
TEST_F(Growth, TenThousandSearchesLeaveNothingBehind) {
    unsigned round = 0, events = 0, probes = 0;
    bool isAsked = false;
    std::unique_ptr<ScriptedNetwork> network;
    network = std::make_unique<ScriptedNetwork>([&](const Bytes &request) {
        if (request.at(3) == TAG_READREG_CMD)
            network->answer(registersOf(request));
        else if (request.at(3) == TAG_DISCOVERY_CMD && !std::exchange(isAsked, true) && round % 10 > 2)
            network->answer(acknowledgeOf(round));
        return 0;
    });
    Recollection recollection;
    Watcher watcher;
    const Observation host; // so that no program of the host is run
    const auto searchUntil = [&](unsigned last) {
        for (; round < last; ++round) {
            isAsked = false;
            DiagnosisOptions options;
            options.earlier = &host;
            options.listener.clear();
            options.search.judged = [&](const Corvo::CDeviceInfo &) { ++probes; };
            recollection.attach(&options.search, Recollection::Time(std::chrono::milliseconds(network->now_ms())));
            const Inventory found = inventoryOf(diagnose(layer(), options));
            EXPECT_EQ(round % 10 > 2 ? 1U : 0U, found.cameras.size());
            events += static_cast<unsigned>(watcher.compare(found).size());
            EXPECT_FALSE(commandline::metricsText({watcher.present(), 0, 0, round, 0, 0, {}}).empty());
            network->advance(30000);
        }
        return residentMemory_KiB();
    };
    const long before = searchUntil(1000);
    const Holdings held = Holdings::now();
    const long growth = searchUntil(Searches) - before;
    std::cout << events << " events; " << before << " KiB, and then " << growth << " more\n";
    EXPECT_GT(events, Searches / 5);
    EXPECT_EQ(Searches / 10 * 4, probes); // when it is back, and then once a minute
    EXPECT_EQ(held, Holdings::now());
    EXPECT_LT(KeepsMemory ? 0 : growth, 1000);
}

} // namespace
