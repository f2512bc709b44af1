// The identification texts of the machine, read from its firmware.
#pragma once

#include <string>

namespace nuvelta {

class SmbiosTable;

class Systeminfo {
 public:
  // Reads the firmware table anew and logs what it finds. A text whose source is
  // missing stays empty; nothing is reported to the caller.
  Systeminfo();

  // True when the firmware declares FCC mode. Reads the table on its own. Defined in
  // fcc_mode.cpp.
  static bool isFccMode();

  std::string family_;
  std::string manufacturer_;
  std::string productname_;
  std::string serialnumber_;
  std::string sku_;
  std::string uuid_;                    // its bytes printed in the order in which they are stored
  std::string project_name_;            // the system version, which holds the model's name
  std::string processor_manufacturer_;  // [fixed] the processor version
  std::string baseboard_manufacturer_;
  std::string baseboard_product_;
  std::string baseboard_version_;
  std::string baseboard_serialnumber_;
  std::string baseboard_asset_tag_;

 private:
  void ReadSystem(const SmbiosTable& table);
  void ReadProcessor(const SmbiosTable& table);
  void ReadBaseboard(const SmbiosTable& table);
};

}  // namespace nuvelta
