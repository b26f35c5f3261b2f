#include "Metrics.h"
#include "commissioning/Findings.h"
#include "support/TestFolder.h"

#include <gmock/gmock.h>

using namespace commissioning;
using namespace commandline;
using testing::HasSubstr;

namespace {

/// Two cameras of one MAC, a third that cannot be told from the second, and one that calls itself all that hurts.
Measurements hostile() {
    Camera camera;
    camera.mac = "025AE3000001";
    camera.vendor = "V";
    camera.model = "M";
    camera.serial = "1";
    camera.address = 0xC0A80A15;
    camera.adapters = {"eth0", "eth1"};
    camera.status = Status::InUse;
    Measurements m;
    m.inventory.cameras = {camera, camera, camera, camera};
    m.inventory.cameras[1].serial = m.inventory.cameras[2].serial = "2";
    m.inventory.cameras[3].mac = "025AE3000003";
    m.inventory.cameras[3].name = "a\"b\\c\nd\xff\x1b[m} 7";
    m.inventory.cameras[3].address = 0;
    m.inventory.cameras[3].hidden = true;
    m.inventory.findings.resize(2);
    m.inventory.findings[0].code = m.inventory.findings[1].code = "duplicate-mac";
    m.searchDuration_s = 0.25;
    m.lastSuccess_s = 1795334400.5;
    m.searches = 3;
    m.failedSearches = 1;
    m.droppedAnswers = 12;
    m.offPlan = 2;
    return m;
}

TEST(Metrics, SayWhatWasMeasured) {
    const std::string text = metricsText(hostile());
    std::string series;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line[0] != '#' && line.find("_findings{") == std::string::npos &&
            line.find("build_info") == std::string::npos)
            series += line.substr(sizeof "lanvane_" - 1) + "\n";
    }
    EXPECT_EQ(R"(cameras{state="hidden"} 1
cameras{state="in-use"} 3
cameras{state="not-reachable"} 0
cameras{state="ok"} 0
cameras{state="unknown"} 0
camera_info{mac="02:5A:E3:00:00:01",vendor="V",model="M",serial="1",name="",address="192.168.10.21",adapter="eth0,eth1"} 1
camera_info{mac="02:5A:E3:00:00:01",vendor="V",model="M",serial="2",name="",address="192.168.10.21",adapter="eth0,eth1"} 1
camera_info{mac="02:5A:E3:00:00:03",vendor="V",model="M",serial="1",name="a\"b\\c\nd?[m} 7",address="",adapter="eth0,eth1"} 1
search_duration_seconds 0.25
last_successful_search_timestamp_seconds 1795334400.5
searches_total 3
searches_failed_total 1
answers_dropped_total 12
cameras_off_plan 2
)",
              series);
    EXPECT_THAT(text, HasSubstr("lanvane_findings{code=\"duplicate-mac\"} 2\n"));
    for (const FindingKind &kind : findingKinds())
        EXPECT_THAT(text, HasSubstr(std::string("lanvane_findings{code=\"") + kind.code + "\"} "));
    EXPECT_THAT(metricsText({}), testing::Not(HasSubstr("off_plan")));
}

TEST(Metrics, ArePrometheusOwn) {
    if (std::system("command -v promtool >/dev/null") != 0) {
        const char *ci = std::getenv("CI");
        ASSERT_FALSE(ci && std::string(ci) == "true") << "promtool (package prometheus) is missing";
        GTEST_SKIP() << "promtool (package prometheus) is not installed";
    }
    const TestFolder folder;
    std::ofstream(folder / "metrics") << metricsText(hostile());
    EXPECT_EQ(0, std::system(("promtool check metrics <" + (folder / "metrics").string()).c_str()));
}

} // namespace
