#include "notebook/machine/context.h"

#include <new>

#include "platform/mobile_broadband.h"

namespace nuvelta::virtual_notebook {

std::optional<Fault> Context::Count(KnownCall call) {
  if (call.Takes() > Duration()) scheduler.Sleep(call.Takes());
  const Duration late = delays == nullptr ? Duration() : delays->Count(call.Name());
  if (late > Duration()) scheduler.Sleep(late);
  return faults.Count(call.Name());
}

std::optional<uint32_t> Context::Error(KnownCall call) {
  const std::optional<Fault> fault = Count(call);
  return fault ? std::optional(fault->code) : std::nullopt;
}

bool Context::Fails(KnownCall call) {
  const std::optional<uint32_t> error = Error(call);
  if (error) SetLastError(*error);
  return error.has_value();
}

bool Context::Answers(KnownCall call) {
  const std::optional<Fault> fault = Count(call);
  if (!fault) return true;
  if (fault->kind == Fault::Kind::kBadAlloc) throw std::bad_alloc();
  if (fault->kind == Fault::Kind::kHresult) throw platform::HresultError{fault->code};
  return false;
}

}  // namespace nuvelta::virtual_notebook
