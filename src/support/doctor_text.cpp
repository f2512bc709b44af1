#include <algorithm>
#include <string>
#include <string_view>

#include "platform/fcc_marker.h"
#include "platform/vendor_service.h"
#include "support/doctor.h"
#include "support/doctor_words.h"
#include "support/printable.h"
#include "support/run_text.h"

namespace nuvelta::support {

namespace {

constexpr size_t kTextColumn = 21;
constexpr size_t kMostMarked = 20;

std::string Quote(std::string_view text) { return '"' + Printable(text) + '"'; }
std::string NotSeen(uint32_t error) {
  return "not seen: error " + (error < 0x10000 ? std::to_string(error) : HexCode(error));
}

class DoctorText {
 public:
  DoctorText(const Diagnosis& all, bool colour) : m_all(all), m_colour(colour) {}

  std::string Print() {
    m_text = "doctor, " + m_all.time + "\n";
    const StepStates states = StatesOf(m_all);
    Begin(states.service, "service");
    Service();
    Begin(states.log_folder, "log folder");
    LogFolder();
    Begin(states.switches, "switches");
    Switches();
    Begin(states.adapters, "adapters");
    Adapters();
    Begin(states.firmware, "firmware");
    Firmware();
    Begin(states.platform, "platform");
    Platform();
    Begin(states.devices, "devices");
    Devices();
    Begin(states.fcc_mode, "FCC mode");
    FccMode();
    Begin(states.modem, "modem");
    Modem();
    Begin(states.query, "query");
    Query();
    Conclusion();
    return m_text;
  }

 private:
  std::string Coloured(const char* colour, const std::string& text) const {
    return m_colour ? colour + text + "\x1B[0m" : text;
  }

  std::string MarkOf(StepState state) const {
    switch (state) {
      case StepState::kGood:
        return Coloured("\x1B[32m", "ok");
      case StepState::kWarning:
        return Coloured("\x1B[33m", "!!");
      case StepState::kBad:
        return Coloured("\x1B[31m", "NO");
      case StepState::kNotSeen:
        return Coloured("\x1B[35m", "??");
      case StepState::kTold:
        break;
    }
    return "  ";
  }

  void Begin(StepState state, std::string_view label) {
    m_head = "  " + MarkOf(state) + "  " + std::string(label);
    m_head += std::string(kTextColumn - 6 - std::min(label.size(), kTextColumn - 7), ' ');
  }

  void Line(const std::string& text) {
    m_text += m_head.empty() ? std::string(kTextColumn, ' ') : m_head;
    m_text += text + "\n";
    m_head.clear();
  }

  void Service() {
    const ServiceFacts& facts = m_all.service;
    if (facts.error == platform::kErrorServiceDoesNotExist) {
      return Line(Quote(facts.name) + " is NOT installed");
    }
    if (facts.error != 0) {
      Line(Quote(facts.name) + ": state " + NotSeen(facts.error));
    } else {
      std::string text =
          Quote(facts.name) + " is " + ServiceStateName(facts.process.dwCurrentState);
      if (facts.process.dwProcessId != 0) {
        text += ", process " + std::to_string(facts.process.dwProcessId);
        text += facts.since.empty() ? ", since when " + NotSeen(facts.since_error)
                                    : " since " + facts.since;
      } else if (facts.process.dwWin32ExitCode == platform::kErrorServiceNeverStarted) {
        text += ", and has not been started since Windows was";
      } else if (facts.process.dwWin32ExitCode != 0) {
        text += ", exit code " + std::to_string(facts.process.dwWin32ExitCode);
      }
      Line(text);
    }
    if (facts.configuration_error != 0) {
      Line("configuration " + NotSeen(facts.configuration_error));
    } else {
      Line(std::string("start ") + StartTypeName(facts.configuration.dwStartType) + ", account " +
           Printable(facts.account) + ", program " + Printable(facts.image));
    }
    Line("recovery " + Recovery());
  }

  std::string Recovery() const {
    const ServiceFacts& facts = m_all.service;
    if (facts.recovery_error != 0) return NotSeen(facts.recovery_error);
    if (facts.recovery.actions.empty()) return "none is set up";
    std::string text;
    for (const platform::ServiceAction& action : facts.recovery.actions) {
      text += (text.empty() ? "" : ", ") + std::string(ActionName(action.Type));
      if (action.Type != 0) text += " after " + std::to_string(action.Delay) + " ms";
    }
    return text + "; failures are forgotten after " + std::to_string(facts.recovery.dwResetPeriod) +
           " s";
  }

  void LogFolder() {
    const LogFolderFacts& facts = m_all.log_folder;
    Line(Printable(facts.path));
    if (facts.error != 0) {
      Line("owner and rights " + NotSeen(facts.error));
    } else {
      Line("owner " + Printable(facts.owner) +
           (facts.has_list ? "" : "; NO list of rights: everybody may do everything"));
    }
    for (const LogFolderFacts::Entry& entry : facts.entries) {
      std::string text = (entry.allows ? "allows " : "DENIES ") + Printable(entry.account) + ": " +
                         AccessName(entry.mask);
      if (entry.inherit_only) text += ", below the folder only";
      if (entry.inherited) text += ", inherited";
      Line(text);
    }
    if (facts.logs == 0) return Line("no log of the service is seen in it");
    Line("newest log of " + std::to_string(facts.logs) + ": " + Printable(facts.newest) + ", " +
         (facts.newest_error == 0 ? std::to_string(facts.newest_size) + " bytes"
                                  : "size " + NotSeen(facts.newest_error)));
  }

  void Switches() {
    for (const SwitchFacts& facts : m_all.switches) {
      std::string text = facts.name;
      if (facts.error == platform::kErrorFileNotFound) {
        text += " is absent";
      } else if (facts.error != 0) {
        text += " " + NotSeen(facts.error);
      } else {
        text += std::string(" is ") + RegistryTypeName(facts.type) + " " + Hex(facts.data);
        text += facts.read == -1 ? ", not read by the service"
                                 : ", read as " + std::to_string(facts.read);
      }
      Line(text + ": " + MeaningOf(facts));
    }
  }

  void Adapters() {
    const AdapterListFacts& facts = m_all.network;
    if (facts.error != 0) Line("the list is " + NotSeen(facts.error));
    bool examined = false;
    for (const AdapterFacts& adapter : facts.adapters) {
      examined = examined || adapter.examined;
      Line((adapter.examined ? "> " : "  ") + Quote(adapter.description) + " (" +
           Printable(adapter.friendly_name) + "), " + Printable(adapter.name) + ", type " +
           std::to_string(adapter.type) + ", " + AdapterStateName(adapter.state));
    }
    if (!examined) {
      if (facts.error == 0) Line("none is a mobile-broadband adapter (type 243)");
      return;
    }
    if (facts.subkey.empty()) {
      return Line(facts.class_error != 0 ? "its class key entry is " + NotSeen(facts.class_error)
                                         : "it has NO class key entry");
    }
    if (facts.instance_id.empty()) {
      return Line("class key entry " + Printable(facts.subkey) + ": NO device instance id");
    }
    Line("class key entry " + Printable(facts.subkey) + ": device " + Printable(facts.instance_id));
    Line("compared as " + Printable(facts.compared) +
         (facts.expected ? ": one of the service's modems" : ": NOT one of the service's modems"));
  }

  void Firmware() {
    const FirmwareFacts& facts = m_all.firmware;
    if (!facts.has_table) return Line("the table is " + NotSeen(facts.error));
    Line("SMBIOS " + std::to_string(facts.major) + "." + std::to_string(facts.minor) + ", " +
         std::to_string(facts.size) + " bytes; " + Quote(facts.manufacturer) + " " +
         Quote(facts.product));
    Line("version " + Quote(facts.version) + ", family " + Quote(facts.family) + ", board " +
         Quote(facts.board_product));
  }

  void Platform() {
    const FirmwareFacts& facts = m_all.firmware;
    std::string text = "key " + Quote(facts.key);
    text += facts.cs24 ? ", of CS24, by its name alone" : ", newer than CS24, by name and board";
    if (facts.by_family) text += "; the name is the family's";
    Line(text);
    if (!facts.listed) return Line("not listed: every modem is approved by design");
    text = "listed, allows ";
    for (size_t i = 0; i < facts.allowed.size(); ++i)
      text += (i > 0 ? " or " : "") + facts.allowed[i];
    Line(text);
    Line(
        m_all.devices.id.empty()
            ? "no device of the maker is found: NOT approved"
            : "the modem is " + Printable(m_all.devices.id) +
                  (StatesOf(m_all).platform == StepState::kGood ? ": approved" : ": NOT approved"));
  }

  void Devices() {
    const DeviceListFacts& facts = m_all.devices;
    if (facts.error != 0) Line("the list is " + NotSeen(facts.error));
    Line(std::to_string(facts.marked.size()) + " of " + std::to_string(facts.devices) +
         " present devices carry the maker's marks");
    size_t shown = 0;
    for (const DeviceFacts& device : facts.marked) {
      if (shown++ >= kMostMarked && !device.decides) continue;
      Line((device.decides ? "> " : "  ") + Printable(device.hardware_id) +
           (device.decides ? ": decides, as " + Printable(facts.id) : ""));
    }
  }

  void FccMode() {
    const FccFacts& facts = m_all.fcc;
    if (!facts.structure) return Line("NOT declared: no structure of type 133");
    if (!facts.right_length) {
      return Line("NOT declared: the first structure of type 133 has the length " +
                  std::to_string(facts.length) + ", expected 5");
    }
    Line(facts.declared ? "declared by the firmware"
                        : "NOT declared: the content differs from what is expected");
    Line("found     " + std::to_string(facts.content_length) + " bytes  " + Hex(facts.content) +
         (facts.closed ? "" : ", without an end"));
    Line("expected  " + std::to_string(platform::kFccMarkerSize) + " bytes  " +
         Hex(platform::kFccMarker) + ", letter case and the last byte aside");
  }

  void Modem() {
    const ModemFacts& facts = m_all.modem;
    if (facts.error != 0) {
      Line(Printable(facts.failed_call) + ": " + NotSeen(facts.error));
      if (!facts.present) return;
    } else if (!facts.present) {
      return Line("Windows offers NO mobile-broadband modem");
    } else {
      Line("offered by Windows, " + std::string(facts.vendor_service ? "with" : "WITHOUT") +
           " the vendor's service");
    }
    for (const std::string& service : facts.services) {
      Line((service == platform::kVendorServiceText ? "> " : "  ") + service);
    }
  }

  void Query() {
    const ModemFacts& facts = m_all.modem;
    const QueryRecord& query = facts.query;
    if (!facts.asked) return Line("not asked: the modem was left alone");
    if (!query.sent) {
      Line("NOT sent");
    } else {
      std::string text = Hex(query.payload) + ": " + QueryStateName(query);
      if (facts.milliseconds) text += " after " + std::to_string(*facts.milliseconds) + " ms";
      if (query.status) text += ", status " + HexCode(*query.status);
      if (query.data)
        text += ", " + std::to_string(query.data->size()) + " bytes " + Hex(*query.data);
      if (facts.level) {
        text += ", level " + std::to_string(*facts.level);
        text += *facts.level == 1 ? " (on)" : " (not on)";
      }
      Line(text);
    }
    if (!query.failed_call.empty()) {
      Line(query.failed_call + " failed with " + HexCode(query.failure));
    }
  }

  void Conclusion() {
    const CauseInfo& info = InfoOf(m_all.run.cause);
    m_text +=
        "\n  => " +
        Coloured(ColourOf(info.verdict), std::string(NameOf(info.verdict)) + " [" + info.id + "]") +
        ", if an adapter arrived now\n";
    m_text += std::string("     reason      ") + info.reason + "\n";
    std::string_view line = m_all.run.deciding;
    while (line.ends_with(' ') || line.ends_with('\n')) line.remove_suffix(1);
    if (!line.empty()) m_text += "     would log   " + Printable(line) + "\n";
    m_text += std::string("     what to do  ") + info.advice + "\n";
    if (m_all.service.error == platform::kErrorServiceDoesNotExist) {
      m_text += "     but         the service is not installed: nothing switches the radio\n";
    } else if (m_all.service.installed &&
               m_all.service.process.dwCurrentState != platform::kServiceRunning) {
      m_text += "     but         the service does not run: start it\n";
    }
  }

  const Diagnosis& m_all;
  const bool m_colour;
  std::string m_text;
  std::string m_head;
};

}  // namespace

std::string DiagnosisText(const Diagnosis& diagnosis, bool colour) {
  return DoctorText(diagnosis, colour).Print();
}

}  // namespace nuvelta::support
