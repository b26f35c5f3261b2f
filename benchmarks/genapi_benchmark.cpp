#include <GenApi/GenApi.h>

#include <benchmark/benchmark.h>
#include <pugixml.hpp>

#include <array>
#include <chrono>
#include <cstring>
#include <fstream>
#include <sstream>

namespace {

using Clock = std::chrono::steady_clock;

const std::string &LargeCamera() {
    static const std::string xml = [] {
        std::ifstream file(LARGE_CAMERA_XML, std::ios::binary);
        std::ostringstream text;
        text << file.rdbuf();
        return text.str();
    }();
    return xml;
}

double SecondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

double TimeBareParse() {
    pugi::xml_document document;
    const auto start = Clock::now();
    if (!document.load_buffer(LargeCamera().data(), LargeCamera().size()))
        throw std::runtime_error("the camera description is not well-formed");
    return SecondsSince(start);
}

double TimeBuild() {
    const auto start = Clock::now();
    GenApi::CNodeMapFactory factory(GenApi::ContentType_Xml, LargeCamera().data(), LargeCamera().size());
    GenApi::INodeMap *const map = factory.CreateNodeMap();
    const double seconds = SecondsSince(start);
    const GenApi::CNodeMapRef owner(map);
    return seconds;
}

/// Both in turn, so that the ratio does not depend on what else the machine does. It is to stay at 4 or below.
void BuildNodeMapBesideBareParse(benchmark::State &state) {
    double parse = 0;
    double build = 0;
    for ([[maybe_unused]] auto _ : state) {
        parse += TimeBareParse();
        const double seconds = TimeBuild();
        build += seconds;
        state.SetIterationTime(seconds);
    }
    using benchmark::Counter;
    state.counters["parse"] = Counter(parse / static_cast<double>(state.iterations()));
    state.counters["build"] = Counter(build / static_cast<double>(state.iterations()));
    state.counters["ratio"] = build / parse;
    state.counters["bytes"] = static_cast<double>(LargeCamera().size());
}
BENCHMARK(BuildNodeMapBesideBareParse)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(3);

class MemoryPort : public GenApi::CPortImpl {
public:
    GenApi::EAccessMode GetAccessMode() const override { return GenApi::RW; }
    void Read(void *buffer, int64_t address, int64_t length) override {
        std::memcpy(buffer, &m_memory.at(static_cast<std::size_t>(address)), static_cast<std::size_t>(length));
    }
    void Write(const void *buffer, int64_t address, int64_t length) override {
        std::memcpy(&m_memory.at(static_cast<std::size_t>(address)), buffer, static_cast<std::size_t>(length));
    }

private:
    std::array<uint8_t, 256> m_memory{};
};

/// Feature to feature to feature to register. \p cachable "NoCache" reaches the port every time. Aim: 2 us.
void ReadIntegerThroughThreeLinks(benchmark::State &state, const char *cachable) {
    GenApi::CNodeMapRef map;
    map._LoadXMLFromString(
        std::string("<RegisterDescription><Integer Name='A'><pValue>B</pValue></Integer>"
                    "<Integer Name='B'><pValue>C</pValue></Integer>"
                    "<Integer Name='C'><pValue>R</pValue></Integer>"
                    "<IntReg Name='R'><Address>0x10</Address><Length>4</Length>"
                    "<AccessMode>RW</AccessMode><pPort>Device</pPort><Endianess>BigEndian</Endianess>"
                    "<Cachable>") +
        cachable + "</Cachable></IntReg><Port Name='Device'/></RegisterDescription>");
    MemoryPort port;
    map._Connect(&port);
    const GenApi::CIntegerPtr feature = map._GetNode("A");
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(feature->GetValue());
}
BENCHMARK_CAPTURE(ReadIntegerThroughThreeLinks, uncached, "NoCache");
BENCHMARK_CAPTURE(ReadIntegerThroughThreeLinks, cached, "WriteThrough");

} // namespace

BENCHMARK_MAIN();
