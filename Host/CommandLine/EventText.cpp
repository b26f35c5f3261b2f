#include "EventText.h"

#include "Text.h"
#include "commissioning/AddressText.h"

#include <ctime>

using namespace commissioning;

namespace commandline {

namespace {

using Kind = Event::Kind;

/// "OL-2040 7 at 192.168.10.21 on nic0"
std::string descriptionOf(const Camera &camera) {
    std::string text = camera.model + " " + camera.serial;
    text += camera.name.empty() ? "" : " \"" + camera.name + "\"";
    text += camera.address != 0 ? " at " + toText(AdapterAddress{camera.address, camera.mask}) : "";
    for (const std::string &adapter : camera.adapters)
        text += (adapter == camera.adapters.front() ? " on " : ", ") + adapter;
    return text;
}

std::string differenceText(const Difference &difference, bool isDrift) {
    const auto shown = [](const std::string &text) { return text.empty() ? "-" : text; };
    return isDrift ? difference.what + " is " + shown(difference.after) + ", planned " + shown(difference.before)
                   : difference.what + " " + shown(difference.before) + " -> " + shown(difference.after);
}

std::string problemText(const PlanProblem &problem) {
    return (problem.line != 0 ? "line " + std::to_string(problem.line) + ": " : "") + problem.text;
}

std::string cameraText(const Event &event) {
    std::string differences;
    for (const Difference &difference : event.differences)
        differences += (differences.empty() ? ": " : "; ") + differenceText(difference, event.kind == Kind::Drifted);
    return macText(event.camera->mac) + " " +
           (differences.empty() ? "(" + descriptionOf(*event.camera) + ")" : differences.substr(2));
}

} // namespace

std::string timeText(std::chrono::system_clock::time_point time) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[sizeof "2026-11-22T08:15:30Z" + 8];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

std::string eventText(const Event &event, const Terminal &terminal) {
    std::string text = toText(event.kind);
    if (event.camera)
        text += " " + cameraText(event);
    if (event.problem)
        text += " " + problemText(*event.problem);
    if (!event.finding)
        return harmless(text);
    const std::string code = "[" + event.finding->code + "]";
    return text + " " + terminal.coloured(event.finding->severity, code) + " " + harmless(event.finding->text);
}

Json eventJson(const Event &event) {
    Json differences = Json::array();
    for (const Difference &one : event.differences)
        differences.push_back(
            {{"what", one.what}, {"before", textOrNull(one.before)}, {"after", textOrNull(one.after)}});
    Json json = eventJson(toText(event.kind), event.problem ? problemText(*event.problem) : "");
    json["camera"] = event.camera ? cameraJson(*event.camera) : Json();
    json["differences"] = std::move(differences);
    json["finding"] = event.finding ? findingJson(*event.finding) : Json();
    return json;
}

Json eventJson(const char *kind, const std::string &text) {
    return {{"event", kind},
            {"camera", nullptr},
            {"differences", Json::array()},
            {"finding", nullptr},
            {"text", textOrNull(text)}};
}

std::string eventLine(Json json) {
    json["time"] = timeText(std::chrono::system_clock::now());
    return printedLine(json);
}

} // namespace commandline
