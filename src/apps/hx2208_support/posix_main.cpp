// The support program for the support desk.
#include <unistd.h>

#include "apps/hx2208_support/program.h"

int main(int argc, char** argv) {
  return nuvelta::support::RunProgram(argc, argv, {.colour = isatty(STDOUT_FILENO) != 0});
}
