#include <windows.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "class_registration.h"

namespace {

// Wine would report a crash as success.
LONG WINAPI OnCrash(EXCEPTION_POINTERS* crash) {
  std::fprintf(stderr, "the tests crashed, exception 0x%lx\n",
               crash->ExceptionRecord->ExceptionCode);
  std::_Exit(EXIT_FAILURE);
}

}  // namespace

int main(int argc, char** argv) {
  SetUnhandledExceptionFilter(OnCrash);
  testing::InitGoogleTest(&argc, argv);
  nuvelta::wine::ClassRegistration::Clear();
  return RUN_ALL_TESTS();
}
