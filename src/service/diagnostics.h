// What the service logs of its machine when it starts.
#pragma once

namespace nuvelta {

void LogBootTime();
void LogFileVersion();
void LogSessions();

}  // namespace nuvelta
