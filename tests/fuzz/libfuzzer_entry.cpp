// Hands the inputs of libFuzzer to the one target that is linked in.
#include "target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const nuvelta::fuzz::Target target = nuvelta::fuzz::FindTarget({});
  target({data, size});
  return 0;
}
