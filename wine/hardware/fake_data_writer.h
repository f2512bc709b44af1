// Windows.Storage.Streams.DataWriter and Buffer, as far as the service uses them.
#pragma once

#include <cstdint>
#include <vector>

#include "wine/hardware/fake_object.h"

namespace nuvelta::wine {

ComPtr<abi::IDataWriter> MakeFakeDataWriter();

ComPtr<abi::IBuffer> MakeFakeBuffer(std::vector<uint8_t> bytes);
ComPtr<abi::IBuffer> MakeFakeResponse(std::vector<uint8_t> bytes);

}  // namespace nuvelta::wine
