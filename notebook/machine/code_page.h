// The virtual notebook's ANSI code page, windows-1252.
#pragma once

#include <string>
#include <string_view>

#include "notebook/machine/context.h"
#include "platform/text.h"

namespace nuvelta::virtual_notebook {

// Characters that the code page lacks become "?".
std::string ToCodePage(std::u16string_view wide);
std::u16string FromCodePage(std::string_view narrow);

class VirtualText final : public platform::Text {
 public:
  explicit VirtualText(Context& context) : m_context(context) {}
  int WideCharToMultiByte(std::u16string_view wide, std::span<char> out) override;
  int MultiByteToWideChar(std::string_view narrow, std::span<char16_t> out) override;

 private:
  Context& m_context;
};

}  // namespace nuvelta::virtual_notebook
