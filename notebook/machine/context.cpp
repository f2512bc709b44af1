#include "notebook/machine/context.h"

#include <new>

#include "platform/mobile_broadband.h"

namespace nuvelta::virtual_notebook {

std::optional<Fault> Context::Count(std::string_view call) {
  const Duration late = delays == nullptr ? Duration() : delays->Count(call);
  if (late > Duration()) scheduler.Sleep(late);
  return faults.Count(call);
}

std::optional<uint32_t> Context::Error(std::string_view call) {
  const std::optional<Fault> fault = Count(call);
  return fault ? std::optional(fault->code) : std::nullopt;
}

bool Context::Fails(std::string_view call) {
  const std::optional<uint32_t> error = Error(call);
  if (error) SetLastError(*error);
  return error.has_value();
}

bool Context::Answers(std::string_view call) {
  const std::optional<Fault> fault = Count(call);
  if (!fault) return true;
  if (fault->kind == Fault::Kind::kBadAlloc) throw std::bad_alloc();
  if (fault->kind == Fault::Kind::kHresult) throw platform::HresultError{fault->code};
  return false;
}

}  // namespace nuvelta::virtual_notebook
