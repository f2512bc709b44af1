// One run of the authentication task as its lines tell it.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "support/causes.h"
#include "support/line_kinds.h"
#include "support/log_lines.h"

namespace nuvelta::support {

// What is kept of a text of the log: more than any that the service writes needs.
inline constexpr size_t kLongestText = 300;

// Where something stands in the log.
struct Place {
  std::string file{};  // the name of the log's part
  uint64_t line = 0;   // counted from 1; 0: nowhere
  std::string time{};  // "2026-11-16 00:58:46.000"

  bool operator==(const Place&) const = default;
};

// The switches of the registry that turn the checks of platform and FCC mode off.
enum class Verification : uint8_t { kNotRead, kOn, kOffByOldSwitch, kOffByNewSwitch };

// One command to the modem.
struct Command {
  Place begin{};                          // of its sending
  bool sent = false;                      // the call came back
  std::optional<int64_t> milliseconds{};  // to the line that tells the answer
  std::string state{};                    // of a command that did not complete: "Started", ...
  std::optional<uint32_t> status{};       // the status code that refused it
  std::optional<int32_t> level{};         // what a query was answered
  bool obeyed = false;                    // a set command that was answered
};

// What a run saw on its way. A text is empty, and a value absent, where it did not look.
struct Evidence {
  std::string adapter{};      // name, description and friendly name
  std::string instance_id{};  // of the adapter's device
  std::string mbim_id{};      // its front, which is compared
  Verification verification = Verification::kNotRead;
  std::optional<int64_t> old_switch{};  // SupportVerifyPlatform, when it can be read
  std::optional<int64_t> new_switch{};  // IsDisableVerify
  std::string platform{};               // the platform key
  bool replaced_by_family = false;      // its name is the family's
  std::optional<bool> listed{};
  std::string device_id{};
  std::optional<bool> approved{};
  std::string fcc_content{};  // as logged, with its length
  std::optional<bool> fcc_mode{};
  bool vendor_service = false;
  Command query{};
  Command set{};
  std::string exception{};
};

struct Run {
  uint64_t number = 0;  // in its process, counted from 1
  Place begin{};
  Place end{};
  double seconds = 0;  // as the worker measured it
  Cause cause = Cause::kUnexplained;
  Place decided{};         // the line that decides
  std::string deciding{};  // its text
  Evidence evidence{};
};

// Follows the lines of one run, all of one thread.
class RunReader {
 public:
  void Begin(uint64_t number, const Place& at);
  // A line between begin and end.
  void Take(LineMeaning meaning, const LogLine& line, const std::string& file);
  // The worker's line behind the run; `rest` holds the time that it took.
  void End(std::string_view rest, const Place& at);

  const Run& Get() const { return m_run; }

 private:
  enum class At : uint8_t { kPresence, kModem, kQuery, kSet };

  void TakePresence();
  void TakeSwitches();
  void TakePlatform();
  void TakeFccMode();
  void TakeCommand();
  void TakeAnswer();
  void TakeEnd();
  void Enter(At at);
  void Decide(Cause cause);
  void Close(Cause cause);
  Command& CommandAtHand();
  Place Here() const;

  Run m_run;
  LineMeaning m_meaning;
  const LogLine* m_line = nullptr;  // the line at hand
  const std::string* m_file = nullptr;
  At m_at = At::kPresence;
  bool m_closed = false;  // its cause is settled
  bool m_old_switch_read = false;
  bool m_newer_platform = false;
  std::string m_project;
  std::string m_board_product;
  bool m_firmware_read = false;
};

// The local time of a log's line.
std::optional<std::chrono::sys_time<std::chrono::milliseconds>> MomentOf(std::string_view text);
// Milliseconds from one time of a log to another; none when they do not tell.
std::optional<int64_t> MillisecondsBetween(std::string_view from, std::string_view to);

}  // namespace nuvelta::support
