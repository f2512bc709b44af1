#include "notebook/program/service_watch.h"

namespace nuvelta::story {

void ServiceWatch::OnLost(const std::string& why) {
  const std::lock_guard lock(m_mutex);
  if (m_lost.empty()) m_lost = why;
}

std::string ServiceWatch::Lost() const {
  const std::lock_guard lock(m_mutex);
  return m_lost;
}

}  // namespace nuvelta::story
