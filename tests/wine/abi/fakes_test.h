// What the tests of the service's port against the fakes share.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <memory>
#include <new>
#include <span>
#include <vector>

#include "class_registration.h"
#include "platform/vendor_service.h"
#include "platform/windows/winrt/windows_mobile_broadband.h"
#include "test_stage.h"
#include "wine/hardware/fake_object.h"

namespace nuvelta::wine {

inline constexpr std::array<uint8_t, 1> kQueryBytes{0};
inline constexpr std::array<uint8_t, 4> kSetBytes{1, 0, 0, 0};

// Every test must leave no fake behind but the factories, which the port keeps.
class FakesTest : public testing::Test {
 protected:
  void SetUp() override {
    TestStage::Get().Reset();
    port.GetDefault();
    port.CreateDataWriter();
    port.CreateAccountWatcher();
    m_factories = g_live_fakes;
    TestStage::Get().Reset();
  }
  void TearDown() override {
    TestStage::Get().Reset();
    EXPECT_EQ(g_live_fakes, m_factories);
  }

  std::shared_ptr<platform::DataBuffer> Payload(std::span<const uint8_t> bytes) {
    const auto writer = port.CreateDataWriter();
    writer->WriteBytes(bytes);
    return writer->DetachBuffer();
  }
  std::shared_ptr<platform::CommandSession> OpenSession() {
    const auto service = port.GetDefault()->GetDeviceService(platform::kVendorService);
    return service->OpenCommandSession();
  }

  windows::WindowsMobileBroadband port;

 private:
  const ClassRegistration m_registration;
  int m_factories = 0;
};

// The HRESULT that `work` throws; 0 when it throws none.
inline uint32_t Thrown(const std::function<void()>& work) {
  try {
    work();
  } catch (const platform::HresultError& error) {
    return error.code;
  } catch (const std::bad_alloc&) {
    return static_cast<uint32_t>(E_OUTOFMEMORY);
  }
  return 0;
}

}  // namespace nuvelta::wine
