// Which library is the home of the fake classes: this executable.
#pragma once

namespace nuvelta::wine {

// While one lives, the runtime classes that the service uses are registered to this
// executable, which exports DllGetActivationFactory. One at a time.
class ClassRegistration {
 public:
  ClassRegistration();
  ~ClassRegistration();
  ClassRegistration(const ClassRegistration&) = delete;
  ClassRegistration& operator=(const ClassRegistration&) = delete;

  // Takes away what is registered, by an earlier run that crashed above all.
  static void Clear();
};

}  // namespace nuvelta::wine
