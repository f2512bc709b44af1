// A call of the service control manager that may take its time.
#pragma once

#include <atomic>
#include <functional>
#include <optional>
#include <thread>
#include <utility>

#include "wine/driver/win32.h"

namespace nuvelta::wine {

class BackgroundCall {
 public:
  explicit BackgroundCall(std::function<DWORD()> call)
      : m_thread([this, call = std::move(call)] {
          m_answer = call();
          m_over = true;
        }) {}
  // Waits for the call's end.
  ~BackgroundCall() { m_thread.join(); }
  BackgroundCall(const BackgroundCall&) = delete;
  BackgroundCall& operator=(const BackgroundCall&) = delete;

  // None while it is under way.
  std::optional<DWORD> Answer() const { return m_over ? std::optional(m_answer) : std::nullopt; }

 private:
  DWORD m_answer = 0;
  std::atomic<bool> m_over = false;
  std::thread m_thread;  // last: it uses the others
};

}  // namespace nuvelta::wine
