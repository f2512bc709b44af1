#include "common/func_trace.h"

#include <cstring>
#include <exception>

#include "common/logger.h"

namespace nuvelta {

CFuncTrace::CFuncTrace(const char* pszFuncName)
    : m_iUncaughtExceptions(std::uncaught_exceptions()) {
  std::strncpy(m_szFuncName.data(), pszFuncName, m_szFuncName.size() - 1);
  WriteEntry(m_szFuncName.data());
}

CFuncTrace::~CFuncTrace() {
  if (m_szFuncName[0] == '\0' || std::uncaught_exceptions() > m_iUncaughtExceptions) return;
  WriteExit(m_szFuncName.data());
}

void CFuncTrace::WriteEntry(const char* pszFuncName) {
  CLogger::GetInstance().WriteTraceScope('+', pszFuncName);
}

void CFuncTrace::WriteExit(const char* pszFuncName) {
  CLogger::GetInstance().WriteTraceScope('-', pszFuncName);
}

}  // namespace nuvelta
