#pragma once

#include "commissioning/AddressText.h"
#include "commissioning/Diagnosis.h"
#include "gxapi/Gx.h"
#include "support/Site.h"
#include "transport/Layer.h"

/// Searches as a command does, and says what was found.
class Observing : public LayerTest {
protected:
    /// \param listener path of lanvane-listen.
    static commissioning::Diagnosis observe(bool measuresQuiet = false, const std::string &listener = "") {
        commissioning::DiagnosisOptions options;
        options.measuresQuiet = measuresQuiet;
        options.listener = listener;
        options.listenerPatience = std::chrono::seconds(10); // sanitizers start slowly
        return commissioning::diagnose(layer(), options);
    }
    /// "warning foreign-subnet nic0 025AE3000001" of each finding.
    static std::vector<std::string> summary(const commissioning::Diagnosis &diagnosis) {
        std::vector<std::string> lines;
        for (const commissioning::Finding &finding : diagnosis.findings) {
            EXPECT_EQ(finding.text.find('{'), std::string::npos) << finding.text;
            std::string line = std::array{"error ", "warning ", "info "}.at(static_cast<std::size_t>(finding.severity));
            line += finding.code;
            for (const std::string &subject : {finding.adapter, finding.camera})
                line += subject.empty() ? "" : " " + subject;
            lines.push_back(line);
        }
        return lines;
    }
    static commissioning::Finding find(const commissioning::Diagnosis &diagnosis, const std::string &code) {
        for (const commissioning::Finding &finding : diagnosis.findings) {
            if (finding.code == code)
                return finding;
        }
        ADD_FAILURE() << "no " << code << " in " << testing::PrintToString(summary(diagnosis));
        return {code, {}, "", "", {}, "", {"false", "false"}};
    }
    static int run(const std::string &command) { return std::system(command.c_str()); }
};
