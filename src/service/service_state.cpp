#include "service/service_state.h"

#include "common/logger.h"
#include "modem/mbn_winrt_helper.h"
#include "service/nservice.h"
#include "service/resume.h"
#include "service/service_status.h"
#include "tasks/task_manager.h"

namespace nuvelta {

std::atomic<platform::StatusHandle> g_hServiceStatus{};
std::atomic<platform::EventHandle> g_hServiceStopEvent{};
std::atomic<platform::NotifyHandle> g_hSuspendResumeNotify{};

void MakeProcessStateAfreshForSimulation() {
  CTaskManager::MakeAfreshForSimulation();
  CMbnWinRtHelper::GetInstance().MakeAfreshForSimulation();
  CLogger::GetInstance().MakeAfreshForSimulation();
  MakeStatusAfreshForSimulation();
  MakeSuspendTimeAfreshForSimulation();
  g_pNService = nullptr;
  g_hServiceStatus = platform::StatusHandle{};
  g_hServiceStopEvent = platform::EventHandle{};
  g_hSuspendResumeNotify = platform::NotifyHandle{};
}

}  // namespace nuvelta
