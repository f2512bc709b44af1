// How quickly and how surely a service starts and stops, with no story around it.
#pragma once

#include <filesystem>
#include <string>

namespace nuvelta::wine {

// Starts and stops the installed service `count` times on a notebook without a
// modem. Throws std::runtime_error. Answers one line of JSON: "cycles", "failed_starts",
// "failed_stops", "leftover_processes" (after all), "start_ms" (from the request
// to RUNNING: "median", "p95", "max").
std::string MeasureCycles(int count);

// Starts the services of `executable` and `other` in turn, `count` times each, and
// kills each once it runs. Answers one line of JSON: "starts", "failed_starts" (of
// both), "start_ms" and "other_start_ms" as above.
std::string MeasureStarts(const std::filesystem::path& executable,
                          const std::filesystem::path& other, int count);

// Removes what an interrupted measurement has left.
void RemoveMeasured();

}  // namespace nuvelta::wine
