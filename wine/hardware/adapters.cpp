// GetAdaptersAddresses of the story's notebook: its adapters, then the modem's.
#include <winsock2.h>

// The header declares as imported what this file exports.
#define GetAdaptersAddresses ImportedGetAdaptersAddresses
#include <iphlpapi.h>
#undef GetAdaptersAddresses

#include <cstring>
#include <string>
#include <vector>

#include "notebook/model/device_tables.h"
#include "notebook/model/unicode.h"
#include "wine/hardware/crash.h"
#include "wine/hardware/played_story.h"

namespace nuvelta::wine {

namespace {

using virtual_notebook::Adapter;
using virtual_notebook::AdapterLayout;

// In the code page in which the registry's ANSI functions answer the same name.
std::string Ansi(const std::u16string& text) {
  std::string ansi(text.size() * 4, '\0');  // no code page needs more
  const int size = WideCharToMultiByte(CP_ACP, 0, reinterpret_cast<const wchar_t*>(text.data()),
                                       static_cast<int>(text.size()), ansi.data(),
                                       static_cast<int>(ansi.size()), nullptr, nullptr);
  ansi.resize(static_cast<size_t>(size));
  return ansi;
}

AdapterLayout LayoutOf(const Adapter& adapter) {
  return {adapter, Ansi(virtual_notebook::Utf16(adapter.name)), sizeof(IP_ADAPTER_ADDRESSES),
          alignof(IP_ADAPTER_ADDRESSES)};
}

void Write(std::byte* at, const Adapter& adapter, bool last) {
  const AdapterLayout layout = LayoutOf(adapter);
  const AdapterLayout::Texts texts = layout.WriteTexts(at);
  auto* const record = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(at);
  std::memset(record, 0, sizeof *record);
  record->Length = sizeof *record;
  record->Next = last ? nullptr : reinterpret_cast<IP_ADAPTER_ADDRESSES*>(at + layout.Size());
  record->AdapterName = texts.name;
  record->Description = reinterpret_cast<wchar_t*>(texts.description);
  record->FriendlyName = reinterpret_cast<wchar_t*>(texts.friendly_name);
  record->IfType = adapter.if_type;
  record->OperStatus = static_cast<IF_OPER_STATUS>(adapter.oper_status);
}

}  // namespace

}  // namespace nuvelta::wine

// Of the reference page's answers: ERROR_NO_DATA, ERROR_BUFFER_OVERFLOW and success.
extern "C" __declspec(dllexport) ULONG WINAPI
    GetAdaptersAddresses(ULONG /*family*/, ULONG /*flags*/, void* /*reserved*/,
                         IP_ADAPTER_ADDRESSES* buffer, ULONG* size) {
  using namespace nuvelta::wine;
  PlayedStory* const story = PlayedStory::Current();
  if (story == nullptr) return ERROR_NO_DATA;
  if (const auto fault = story->Count("GetAdaptersAddresses")) return fault->code;
  const std::vector<Adapter> adapters =
      PresentAdapters(story->Notebook().adapters, story->Modem().Description());
  if (adapters.empty()) return ERROR_NO_DATA;
  ULONG needed = 0;
  for (const Adapter& adapter : adapters) needed += static_cast<ULONG>(LayoutOf(adapter).Size());
  const ULONG room = *size;
  *size = needed;
  if (buffer == nullptr || room < needed) return ERROR_BUFFER_OVERFLOW;
  auto* at = reinterpret_cast<std::byte*>(buffer);
  for (const Adapter& adapter : adapters) {
    Write(at, adapter, &adapter == &adapters.back());
    at += LayoutOf(adapter).Size();
  }
  if (PrepareCrash(story->TakeCrashRequest())) {
    // Texts that nobody can read.
    for (auto* adapter = buffer; adapter != nullptr; adapter = adapter->Next) {
      adapter->FriendlyName = reinterpret_cast<wchar_t*>(16);
    }
  }
  return ERROR_SUCCESS;
}
