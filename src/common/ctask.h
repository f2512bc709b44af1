// The abstract task: one piece of work with its own retry budget and priority.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>

namespace nuvelta {

// The vocabulary of task types, as the log lists it. Only the first is used, by the
// authentication task; duplicates are found by the number alone.
inline constexpr int32_t TASK_TYPE_ID_CHANGE_USB_MODE = 100;
inline constexpr int32_t TASK_TYPE_ID_CHECK_STATUS = 200;
inline constexpr int32_t TASK_TYPE_ID_QUICK_BOOT = 300;
inline constexpr int32_t TASK_TYPE_ID_UNZIP_FIRMWARE = 400;
inline constexpr int32_t TASK_TYPE_ID_UPGRADE = 500;
inline constexpr int32_t TASK_TYPE_ID_UPGRADE_FROM_EDL = 600;
inline constexpr int32_t TASK_TYPE_ID_UPGRADE_FROM_NORMAL = 700;

inline constexpr int32_t TASK_PRIORITY_HIGH = 0;
inline constexpr int32_t TASK_PRIORITY_MEDIUM = 1;
inline constexpr int32_t TASK_PRIORITY_LOW = 2;

// A task lives on the process heap and is always destroyed as a plain CTask, so
// a task class must hold nothing that needs destruction.
class CTask {
 public:
  // Runs the task once, on the worker thread only. The caller presets *pbRetry
  // to false; the task sets it to true when it wants another run. Never throws,
  // except that memory is exhausted.
  virtual bool doJob(bool* pbRetry) = 0;
  virtual const char* getTaskName() = 0;
  virtual int32_t getTaskTypeId() = 0;

  // Ends the task and returns its memory; a null task is ignored.
  static void Destroy(CTask* pTask) noexcept;

  // Null when the heap is exhausted.
  static void* operator new(size_t size, const std::nothrow_t&) noexcept;
  static void operator delete(void* block, const std::nothrow_t&) noexcept;
  static void* operator new(size_t size) = delete;

  std::atomic<bool> bIsDealing = false;  // true exactly while doJob runs
  std::atomic<int32_t> iRetryTimes = 0;  // runs left
  int32_t iPriority = 0;                 // TASK_PRIORITY_*, 0 is served first
  std::atomic<int32_t> iExceptionTimes = 0;

 protected:
  CTask() = default;
  ~CTask() = default;
  // Only for a constructor that throws; the language asks for it.
  static void operator delete(void* block) noexcept;
};

}  // namespace nuvelta
