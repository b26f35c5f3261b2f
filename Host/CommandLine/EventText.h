#pragma once

#include "Json.h"
#include "Terminal.h"
#include "commissioning/Events.h"

#include <chrono>
#include <string>

namespace commandline {

/// "2026-11-22T08:15:30Z"
std::string timeText(std::chrono::system_clock::time_point time);

/// A line for people, without its end.
std::string eventText(const commissioning::Event &event, const Terminal &terminal);

/// One line of `watch --json`, less its time; docs/json.md describes it. Every key is always there.
Json eventJson(const commissioning::Event &event);
/// The same for what is about none of these: "search-failed" or "search-succeeded".
Json eventJson(const char *kind, const std::string &text);

/// The line itself, with the time of now.
std::string eventLine(Json json);

} // namespace commandline
