// Hears what the service says while a story plays, whether or not its log is kept.
#pragma once

#include <mutex>
#include <string>

#include "common/logger.h"
#include "notebook/program/log_counts.h"

namespace nuvelta::story {

class ServiceWatch final : public LogListenerForSimulation {
 public:
  // Listens as long as it lives; one at a time in a process.
  ServiceWatch() { CLogger::GetInstance().ListenForSimulation(this); }
  ~ServiceWatch() override { CLogger::GetInstance().ListenForSimulation(nullptr); }
  ServiceWatch(const ServiceWatch&) = delete;
  ServiceWatch& operator=(const ServiceWatch&) = delete;

  void OnMessage(std::string_view message) override {
    m_counts.Add(support::MeaningOfMessage(message).kind);
  }
  void OnLost(const std::string& why) override;

  // Once the story has ended.
  const LogCounts& Counts() const { return m_counts; }
  // Why lines could not be written, the first time; empty when all were.
  std::string Lost() const;

 private:
  LogCounts m_counts;
  mutable std::mutex m_mutex;
  std::string m_lost;
};

}  // namespace nuvelta::story
