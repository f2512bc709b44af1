#include "task_rules.h"

#include <array>
#include <cstdlib>
#include <optional>
#include <regex>

namespace nuvelta::test {

namespace {

struct Letter {
  std::string_view line;
  char letter;
};

// The lines of a run that tell of its decision, each with a letter.
constexpr std::array kLetters{
    Letter{"e :   GetAdaptersAddresses AF_UNSPEC failed", 'a'},
    Letter{"i :   not get adapter,return ", 'a'},
    Letter{"i :   not get hardware id,return", 'a'},
    Letter{"i :   not find Expected mbim hwid (*", 'a'},
    Letter{"i :   IsNuveltaMBIMDevcieExist USB*", 'P'},
    Letter{"i :   MBIM Device is not nuvelta device.", 'n'},
    Letter{"h : + CMbnWinRtHelper::IsMbimExist", 'B'},
    Letter{"i :   MBIM Device is not exist.", 'm'},
    Letter{"i :   ReadIsDisableVerifyReg return -1", 'V'},
    Letter{"e :   RegQueryValueEx success, ret = 0", '5'},
    Letter{"e :   RegQueryValueEx success, ret = 1", '6'},
    Letter{"e :   RegQueryValueEx success, ret = *", '7'},
    Letter{"i :   NOT find reg REG_KEY_NAME_DISABLE_VERIFY_OLD ", 'o'},
    Letter{"i :   NOT find reg REG_KEY_NAME_DISABLE_VERIFY ", 'y'},
    Letter{"i :   find reg value is 0,return true", '0'},
    Letter{"i :   find reg value is 1,return true", '1'},
    Letter{"h : + CTaskAuthModule::VerifyPlatform", 'L'},
    Letter{"i :   not in platform list. VerifyPlatform return = true ", 'u'},
    Letter{"i :   Get Nuvelta Device HardwareID Faild", 'h'},
    Letter{"i :   VerifyPlatform return = true ", 't'},
    Letter{"i :   VerifyPlatform return = false ", 'f'},
    Letter{"e :   Invalid Modem in this platform.", 'i'},
    Letter{"i :   Valid Modem in this platform.", 'v'},
    Letter{"i :   VerifyPlatform pass", 'w'},
    Letter{"i :   Authentica  TRUE", 'A'},
    Letter{"i :   isFccMode pass", 'F'},
    Letter{"e :   isFccMode = false  , exit", 'x'},
    Letter{"h : + CMbnWinRtHelper::GetMbimCfun", 'G'},
    Letter{"e :   MBIM Modem is not exist!", 'N'},
    Letter{"i :   find service : *", 'D'},
    Letter{"i :   module current version not support MA,return", 'U'},
    Letter{"e :   GetDeviceService() failed. *", 'S'},
    Letter{"e :   OpenCommandSession() failed.", 'S'},
    Letter{"i :   GetDeviceService() failed. *", 's'},
    Letter{"i :   OpenCommandSession() failed.", 's'},
    Letter{"i :   -SendQueryCommandAsync", 'Q'},
    Letter{"e :   async_state = *", 'T'},
    Letter{"e :   result status code = 0x*", 'R'},
    Letter{"i :   query command complete. cfun mode = *", 'C'},
    Letter{"e :   exception other", 'E'},
    Letter{"e :   exception : *", 'E'},
    Letter{"i :   exception other", 'k'},
    Letter{"i :   exception : *", 'k'},
    Letter{"i :   get cfun fail,retry", 'g'},
    Letter{"i :   Current CFUN = -1 *", 'b'},
    Letter{"i :   Current CFUN = -2 *", 'd'},
    Letter{"i :   Current CFUN = 1 *", 'j'},
    Letter{"i :   Current CFUN = *", 'c'},
    Letter{"i :   module not support ma,return", 'q'},
    Letter{"i :   CFUN = -2, mbim not ready ,will retry", 'l'},
    Letter{"i :   CFUN = 1, cfun 1,will do nothing", 'K'},
    Letter{"h : + CMbnWinRtHelper::SetMbimCfun", 'H'},
    Letter{"i :   -SendSetCommandAsync", 'W'},
    Letter{"i :   async_state = *", 'z'},
    Letter{"i :   result status code = *", 'e'},
    Letter{"i :   set cfun successful.", 'Y'},
    Letter{"i :   SET MBIM FUN SUCCESS!", 'Z'},
    Letter{"e :   SetMbimCfun failed, will retry!!!", 'X'},
    Letter{"i :   bIsException happend ,will add Exception times and retry", '!'},
};

// Up to the query: the modem is there, and the verification is switched off by
// one of its two values, or passed together with the FCC mode.
const std::string kApproved = "PBV(?:50|[o67]61|[o67][y57]L(?:u|t)vwAF)";
const std::string kSetting = kApproved + "GD+QCcH";

// Every run that may be.
const std::string kRuns = "an|PBE?m|PBV[o67][y57]L(?:h?fi|(?:u|t)vwx)|" + kApproved +
                          "G(?:Ng|Ug|D+Sg|D+Q[TR]?g|D*E!|D+Q[TRC]?E!|D+QC(?:bq|dl|jK|"
                          "cH(?:NX|sX|W[ze]X|WYZ|k!|W[zeY]?k!)))";
constexpr std::string_view kAskingForRetry = "nmglX!";

std::optional<char> LetterOf(std::string_view text) {
  for (const Letter& letter : kLetters) {
    if (Fits(text, letter.line)) return letter.letter;
  }
  return {};
}

// The number behind `mark`, if the line has the mark.
std::optional<int> NumberBehind(const std::string& text, const std::string& mark) {
  const size_t at = text.find(mark);
  if (at == std::string::npos) return {};
  return std::atoi(text.c_str() + at + mark.size());
}

// The one task that can be queued, as the log's lines move it.
struct Task {
  int retry_times = 30;
  int exceptions = 0;
};

class Rules {
 public:
  void Take(const StoryLine& line) {
    m_line = &line;
    const std::string& text = line.text;
    if (text.find("   NService start ===") != std::string::npos) {
      m_task.reset();
      m_level = false;
      m_run.clear();
      m_ended = 0;
    }
    if (line.scope == "CTaskManager::addTask") TakeAdded(text);
    if (line.scope == "CTaskManager::cleanNotDealTasks") TakeCleaned(text);
    if (line.scope == "CTaskManager::printTaskList") {
      if (const auto times = NumberBehind(text, ", retry time = ")) ExpectTimes(*times);
    }
    if (text == "h : + CTaskAuthModule::doJob") Begin();
    TakeDecision(line);
    if (line.scope == "CTaskManager::dealTaskThread") TakeWorker(text);
    if (line.scope == "CTaskManager::retry") TakeRetry(text);
    if (Fits(text, "i :   find the same task,will delete the task *")) {
      Expect(m_task && m_ended == 'p', "a task is removed that is not done");
      m_task.reset();
      m_ended = 0;
    }
  }

  std::vector<std::string> broken;

 private:
  void Expect(bool holds, const std::string& rule) {
    if (!holds) broken.push_back(rule + ": " + m_line->text);
  }
  void ExpectTimes(int times) {
    Expect(m_task && m_task->retry_times == times,
           "the budget should be " + (m_task ? std::to_string(m_task->retry_times) : "no one's"));
  }

  void TakeAdded(const std::string& text) {
    if (Fits(text, "i :   there are not exist iPriority = 0 *")) {
      Expect(!m_level && !m_task, "the level is there already");
      m_level = true;
      m_task = Task{};
    } else if (text.find("push back new task") != std::string::npos) {
      Expect(m_level && !m_task, "a second task");
      m_task = Task{};
    } else if (const auto times = NumberBehind(text, "do not add the new task(")) {
      ExpectTimes(*times);
      if (!m_task) return;
      Expect((text.find(") != 0 ,so") != std::string::npos) == (*times != 0), "the wrong top-up");
      m_task->retry_times += *times != 0 ? 2 : 1;
    }
  }

  void TakeCleaned(const std::string& text) {
    const auto times = NumberBehind(text, " retry times = ");
    if (!times) return;
    ExpectTimes(*times);
    Expect((text.find("]: do not clean") != std::string::npos) == m_running, "dealing or not");
    if (m_task) m_task->retry_times = 0;
  }

  void Begin() {
    Expect(m_task && m_task->retry_times > 0, "a run without a budget");
    Expect(m_task && m_task->exceptions <= 3, "a run after four exceptions");
    m_run.clear();
    m_running = true;
    m_worker = m_line->thread;
  }

  void TakeDecision(const StoryLine& line) {
    if (!m_running || line.thread != m_worker) return;
    static const std::regex setting(kSetting);
    if (line.text == "i :   +SendSetCommandAsync") {
      Expect(std::regex_match(m_run, setting), "the radio is set on after \"" + m_run + '"');
    }
    if (Fits(line.text, "i :   Current CFUN = *")) {
      Expect(NumberBehind(line.text, "CFUN = ") == m_answer, "another value than the answer");
    }
    if (const auto answer = NumberBehind(line.text, "cfun mode = ")) m_answer = answer;
    if (line.text == "h : - CTaskAuthModule::doJob") m_running = false;
    const std::optional<char> letter = LetterOf(line.text);
    if (!letter) return;
    m_run += *letter;
    if (*letter == '!' && m_task) {
      ++m_task->exceptions;
      m_task->retry_times += 2;
    }
  }

  void TakeWorker(const std::string& text) {
    static const std::regex runs(kRuns);
    if (text.find(" Cast Time ") != std::string::npos) {
      Expect(std::regex_match(m_run, runs), "no run goes \"" + m_run + '"');
      const bool retry = !m_run.empty() && kAskingForRetry.find(m_run.back()) != std::string::npos;
      m_ended = retry ? 'r' : 'p';
    } else if (const auto times = NumberBehind(text, ",retry times(")) {
      ExpectTimes(*times);
      Expect(*times <= 0, "given up with a budget");
      m_ended = 'p';
    } else if (text == "i :   CommonUtil::RestartService();") {
      Expect(m_task && m_task->exceptions > 3, "a restart without four exceptions");
    }
  }

  void TakeRetry(const std::string& text) {
    const auto times = NumberBehind(text, ",retry times(");
    if (!times) return;
    Expect(m_ended == 'r', "a retry that nobody asked for");
    ExpectTimes(*times);
    if (m_task) --m_task->retry_times;
    m_ended = 0;
  }

  const StoryLine* m_line = nullptr;
  std::optional<Task> m_task;
  bool m_level = false;    // the queue's one level exists
  bool m_running = false;  // between entry and exit of a run
  std::string m_worker;
  std::string m_run;  // its letters
  std::optional<int> m_answer;
  char m_ended = 0;  // 'r': a run ended that wants a retry; 'p': the task is to be removed
};

}  // namespace

std::vector<std::string> BrokenTaskRules(const std::vector<StoryLine>& lines) {
  Rules rules;
  for (const StoryLine& line : lines) rules.Take(line);
  return rules.broken;
}

}  // namespace nuvelta::test
