#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "wine/story/journal_line.h"

namespace nuvelta::wine {

void AppendLine(const std::filesystem::path& file, std::string_view line) {
  const int descriptor = open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  const bool written = descriptor >= 0 && write(descriptor, line.data(), line.size()) ==
                                              static_cast<ssize_t>(line.size());
  const int error = errno;
  if (descriptor >= 0) close(descriptor);
  if (!written) throw std::runtime_error(file.string() + ": " + std::strerror(error));
}

}  // namespace nuvelta::wine
