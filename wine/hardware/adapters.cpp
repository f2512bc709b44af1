// GetAdaptersAddresses of the story's notebook: its adapters, then the modem's.
#include <winsock2.h>

// The header declares as imported what this file exports.
#define GetAdaptersAddresses ImportedGetAdaptersAddresses
#include <iphlpapi.h>
#undef GetAdaptersAddresses

#include <cstring>
#include <string>
#include <vector>

#include "notebook/model/scenario.h"
#include "notebook/model/unicode.h"
#include "platform/network.h"
#include "wine/hardware/crash.h"
#include "wine/hardware/machine.h"

namespace nuvelta::wine {

namespace {

using virtual_notebook::Adapter;

std::vector<Adapter> PresentAdapters(Machine& machine) {
  std::vector<Adapter> adapters = machine.Notebook().adapters;
  const virtual_notebook::ModemDescription modem = machine.Modem().Description();
  if (modem.present) {
    adapters.push_back({.name = modem.adapter_name,
                        .description = modem.description,
                        .friendly_name = modem.friendly_name,
                        .if_type = platform::kIfTypeWwanPp,
                        .oper_status = modem.oper_status,
                        .instance_id = modem.instance_id});
  }
  return adapters;
}

// In the code page in which the registry's ANSI functions answer the same name.
std::string Ansi(const std::u16string& text) {
  std::string ansi(text.size() * 4, '\0');  // no code page needs more
  const int size = WideCharToMultiByte(CP_ACP, 0, reinterpret_cast<const wchar_t*>(text.data()),
                                       static_cast<int>(text.size()), ansi.data(),
                                       static_cast<int>(ansi.size()), nullptr, nullptr);
  ansi.resize(static_cast<size_t>(size));
  return ansi;
}

// A record and its three texts, as they lie in the caller's buffer.
class Layout {
 public:
  explicit Layout(const Adapter& adapter)
      : m_adapter(adapter),
        m_name(Ansi(virtual_notebook::Utf16(adapter.name))),
        m_description(virtual_notebook::Utf16(adapter.description)),
        m_friendly_name(virtual_notebook::Utf16(adapter.friendly_name)) {}

  size_t Size() const {
    const size_t size = sizeof(IP_ADAPTER_ADDRESSES) +
                        (m_description.size() + 1 + m_friendly_name.size() + 1) * sizeof(wchar_t) +
                        m_name.size() + 1;
    constexpr size_t kAlignment = alignof(IP_ADAPTER_ADDRESSES);
    return (size + kAlignment - 1) / kAlignment * kAlignment;
  }

  void Write(std::byte* at, bool last) const {
    auto* const description = reinterpret_cast<wchar_t*>(at + sizeof(IP_ADAPTER_ADDRESSES));
    wchar_t* const friendly = description + m_description.size() + 1;
    char* const name = reinterpret_cast<char*>(friendly + m_friendly_name.size() + 1);
    std::memcpy(description, m_description.c_str(), (m_description.size() + 1) * sizeof(wchar_t));
    std::memcpy(friendly, m_friendly_name.c_str(), (m_friendly_name.size() + 1) * sizeof(wchar_t));
    std::memcpy(name, m_name.c_str(), m_name.size() + 1);
    auto* const record = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(at);
    std::memset(record, 0, sizeof *record);
    record->Length = sizeof *record;
    record->Next = last ? nullptr : reinterpret_cast<IP_ADAPTER_ADDRESSES*>(at + Size());
    record->AdapterName = name;
    record->Description = description;
    record->FriendlyName = friendly;
    record->IfType = m_adapter.if_type;
    record->OperStatus = static_cast<IF_OPER_STATUS>(m_adapter.oper_status);
  }

 private:
  const Adapter& m_adapter;
  const std::string m_name;
  const std::u16string m_description;
  const std::u16string m_friendly_name;
};

}  // namespace

}  // namespace nuvelta::wine

// Of the reference page's answers: ERROR_NO_DATA, ERROR_BUFFER_OVERFLOW and success.
extern "C" __declspec(dllexport) ULONG WINAPI
    GetAdaptersAddresses(ULONG /*family*/, ULONG /*flags*/, void* /*reserved*/,
                         IP_ADAPTER_ADDRESSES* buffer, ULONG* size) {
  using namespace nuvelta::wine;
  Machine* const machine = Machine::Current();
  if (machine == nullptr) return ERROR_NO_DATA;
  if (const auto fault = machine->Count("GetAdaptersAddresses")) return fault->code;
  const std::vector<Adapter> adapters = PresentAdapters(*machine);
  if (adapters.empty()) return ERROR_NO_DATA;
  ULONG needed = 0;
  for (const Adapter& adapter : adapters) needed += static_cast<ULONG>(Layout(adapter).Size());
  const ULONG room = *size;
  *size = needed;
  if (buffer == nullptr || room < needed) return ERROR_BUFFER_OVERFLOW;
  auto* at = reinterpret_cast<std::byte*>(buffer);
  for (const Adapter& adapter : adapters) {
    const Layout layout(adapter);
    layout.Write(at, &adapter == &adapters.back());
    at += layout.Size();
  }
  if (PrepareCrash(machine->TakeCrashRequest())) {
    // Texts that nobody can read.
    for (auto* adapter = buffer; adapter != nullptr; adapter = adapter->Next) {
      adapter->FriendlyName = reinterpret_cast<wchar_t*>(16);
    }
  }
  return ERROR_SUCCESS;
}
