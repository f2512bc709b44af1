#include "lives/decision_rules.h"

#include <array>
#include <optional>
#include <regex>

#include "support/line_kinds.h"

namespace nuvelta::explore {

using support::Fits;
using support::LineKind;
using support::NumberBehind;

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

std::optional<char> LetterOf(std::string_view text) {
  for (const Letter& letter : kLetters) {
    if (Fits(text, letter.line)) return letter.letter;
  }
  return {};
}

}  // namespace

void DecisionRules::Take(const LogLine& line) {
  static const std::regex setting(kSetting);
  static const std::regex runs(kRuns);
  const LineKind kind = support::MeaningOf(line.text).kind;
  if (kind == LineKind::kRunBegins || kind == LineKind::kProcessBegins) {
    m_worker = line.thread;
    m_run.clear();
    m_answer.reset();
  }
  if (line.thread != m_worker) return;
  if (line.text == "i :   +SendSetCommandAsync" && !std::regex_match(m_run, setting)) {
    m_findings.Add("log: the radio is set on after \"" + m_run + '"');
  }
  if (Fits(line.text, "i :   Current CFUN = *") && NumberBehind(line.text, "CFUN = ") != m_answer) {
    m_findings.Add("log: another value than the answer: " + std::string(line.text));
  }
  if (const auto answer = NumberBehind(line.text, "cfun mode = ")) m_answer = answer;
  if (const auto letter = LetterOf(line.text)) m_run += *letter;
  if (kind != LineKind::kRunEnds) return;
  if (!std::regex_match(m_run, runs)) m_findings.Add("log: no run goes \"" + m_run + '"');
  m_worker = {};
}

}  // namespace nuvelta::explore
