#include "Metrics.h"

#include "Text.h"
#include "commissioning/AddressText.h"
#include "commissioning/Findings.h"
#include "commissioning/Words.h"

#include <charconv>
#include <map>
#include <set>
#include <utility>
#include <vector>

using namespace commissioning;

namespace commandline {

namespace {

using Labels = std::vector<std::pair<const char *, std::string>>;

/// A label's value: control characters and bytes that are no UTF-8 are dropped or replaced, but for the end of a line,
/// which the format can write.
std::string escaped(const std::string &value) {
    std::string text;
    std::string piece;
    const auto flush = [&] {
        for (const char c : harmless(piece))
            text += (c == '\\' || c == '"' ? std::string("\\") : std::string()) + c;
        piece.clear();
    };
    for (const char c : value) {
        if (c != '\n') {
            piece += c;
            continue;
        }
        flush();
        text += "\\n";
    }
    flush();
    return text;
}

std::string numberText(double value) {
    char text[64];
    const auto [end, error] = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed);
    return error == std::errc() ? std::string(text, end) : "NaN";
}

class Writer {
public:
    void family(const char *name, const char *type, const char *help) {
        m_Name = std::string("lanvane_") + name;
        m_Text += "# HELP " + m_Name + " " + help + "\n# TYPE " + m_Name + " " + type + "\n";
    }
    /// Of the family that was begun last. A series that is there already is left out.
    void sample(double value, const Labels &labels = {}) {
        std::string series = m_Name;
        for (const auto &[name, text] : labels)
            series += (&name == &labels.front().first ? "{" : ",") + std::string(name) + "=\"" + escaped(text) + "\"";
        series += labels.empty() ? "" : "}";
        if (m_Series.insert(series).second)
            m_Text += series + " " + numberText(value) + "\n";
    }
    void single(const char *name, const char *type, const char *help, double value) {
        family(name, type, help);
        sample(value);
    }
    std::string take() { return std::move(m_Text); }

private:
    std::string m_Name;
    std::string m_Text;
    std::set<std::string> m_Series;
};

void addCameras(const std::vector<Camera> &cameras, Writer *pWriter) {
    std::map<std::string, unsigned> states = {{"hidden", 0}};
    for (const Status status : {Status::Ok, Status::InUse, Status::NotReachable, Status::Unknown})
        states[toText(status)] = 0;
    for (const Camera &camera : cameras)
        ++states[camera.hidden ? "hidden" : toText(camera.status)];
    pWriter->family("cameras", "gauge", "Cameras that are there, by state.");
    for (const auto &[state, count] : states)
        pWriter->sample(count, {{"state", state}});

    pWriter->family("camera_info", "gauge", "One for each camera that is there; always 1.");
    for (const Camera &camera : cameras) {
        std::string adapters;
        for (const std::string &name : camera.adapters)
            adapters += (adapters.empty() ? "" : ",") + name;
        pWriter->sample(1, {{"mac", macText(camera.mac)},
                            {"vendor", camera.vendor},
                            {"model", camera.model},
                            {"serial", camera.serial},
                            {"name", camera.name},
                            {"address", camera.address != 0 ? toText(camera.address) : ""},
                            {"adapter", adapters}});
    }
}

void addFindings(const std::vector<Finding> &findings, Writer *pWriter) {
    std::map<std::string, unsigned> counts;
    for (const Finding &finding : findings)
        ++counts[finding.code];
    pWriter->family("findings", "gauge", "What is wrong, by the code of the finding.");
    for (const FindingKind &kind : findingKinds())
        pWriter->sample(counts[kind.code], {{"code", kind.code}});
}

} // namespace

std::string metricsText(const Measurements &m) {
    Writer writer;
    writer.family("build_info", "gauge", "The version of lanvanectl; always 1.");
    writer.sample(1, {{"version", LANVANE_VERSION}});
    addCameras(m.inventory.cameras, &writer);
    addFindings(m.inventory.findings, &writer);
    writer.single("search_duration_seconds", "gauge", "How long the last search took.", m.searchDuration_s);
    writer.single("last_successful_search_timestamp_seconds", "gauge",
                  "Unix time of the end of the last search that succeeded; 0 for none.", m.lastSuccess_s);
    writer.single("searches_total", "counter", "Searches since the start.", static_cast<double>(m.searches));
    writer.single("searches_failed_total", "counter", "Searches that failed, since the start.",
                  static_cast<double>(m.failedSearches));
    writer.single("answers_dropped_total", "counter",
                  "Answers that did not fit into the receive buffers of searches, since the start.",
                  static_cast<double>(m.droppedAnswers));
    if (m.offPlan)
        writer.single("cameras_off_plan", "gauge", "Cameras that differ from the plan.",
                      static_cast<double>(*m.offPlan));
    return writer.take();
}

} // namespace commandline
