// Random lives: scenarios made by dice, as the JSON that a scenario file holds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "lives/dice.h"
#include "notebook/model/scenario.h"

namespace nuvelta::explore {

// A life that ends with a healthy modem on an approved platform, arrivals and time
// enough says so in its story; its last events are that end.
inline constexpr const char* kHealthyEnd = "At the end the modem is healthy and arrives again.";
inline constexpr size_t kHealthyEndEvents = 5;

// The same seed gives the same life, interleaving included. With a start delay, one
// of the calls that a starting service makes takes so many milliseconds more.
nlohmann::json MakeLife(uint64_t seed, std::optional<double> start_delay_ms = {});

// The parts of a life.
nlohmann::json MakeNotebook(Dice& dice);
nlohmann::json MakeModemChange(Dice& dice);
nlohmann::json MakeSwitchValue(Dice& dice);
// Answers to commands, perhaps none; behind them the modem is healthy.
nlohmann::json MakeAnswers(Dice& dice);
nlohmann::json MakeEvents(Dice& dice);
nlohmann::json MakeFaults(Dice& dice);
nlohmann::json MakeDelays(Dice& dice);
// Appends the events of the healthy end; `dice` settles details that do not matter.
void AddHealthyEnd(Dice& dice, nlohmann::json& events);

// The registry key of the switches of the verification.
inline constexpr const char* kSettingsKey = "SOFTWARE\\Nuvelta Wireless Inc\\MAService";

virtual_notebook::Scenario ReadLife(const nlohmann::json& life);

}  // namespace nuvelta::explore
