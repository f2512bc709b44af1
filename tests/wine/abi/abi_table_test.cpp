// The declarations against facts from elsewhere: a fake that is built from the same
// header as the service would be wrong alike. The texts and numbers here are typed
// in from the platform's published metadata.
#include "platform/windows/winrt/abi.h"

#include <bcrypt.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace nuvelta::windows::abi {

namespace {

// Lower case, without braces.
std::string Text(const GUID& id) {
  std::array<char, 37> text{};
  const auto& tail = id.Data4;
  std::snprintf(text.data(), text.size(), "%08lx-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x",
                id.Data1, unsigned{id.Data2}, unsigned{id.Data3}, unsigned{tail[0]},
                unsigned{tail[1]}, unsigned{tail[2]}, unsigned{tail[3]}, unsigned{tail[4]},
                unsigned{tail[5]}, unsigned{tail[6]}, unsigned{tail[7]});
  return text.data();
}

template <class Interface>
std::string IdText() {
  return Text(IdOf<Interface>());
}

// The identifier of a parameterised interface: RFC 4122 version 5 of its signature.
std::string IdFromSignature(const std::string& signature) {
  std::vector<UCHAR> bytes{0x11, 0xf4, 0x7a, 0xd5, 0x7b, 0x73, 0x42, 0xc0,
                           0xab, 0xae, 0x87, 0x8b, 0x1e, 0x16, 0xad, 0xee};
  bytes.insert(bytes.end(), signature.begin(), signature.end());
  std::array<UCHAR, 20> hash{};
  BCRYPT_ALG_HANDLE sha1 = nullptr;
  BCRYPT_HASH_HANDLE work = nullptr;
  EXPECT_EQ(BCryptOpenAlgorithmProvider(&sha1, BCRYPT_SHA1_ALGORITHM, nullptr, 0), 0);
  EXPECT_EQ(BCryptCreateHash(sha1, &work, nullptr, 0, nullptr, 0, 0), 0);
  EXPECT_EQ(BCryptHashData(work, bytes.data(), static_cast<ULONG>(bytes.size()), 0), 0);
  EXPECT_EQ(BCryptFinishHash(work, hash.data(), static_cast<ULONG>(hash.size()), 0), 0);
  BCryptDestroyHash(work);
  BCryptCloseAlgorithmProvider(sha1, 0);
  hash[6] = static_cast<UCHAR>((hash[6] & 0x0FU) | 0x50U);
  hash[8] = static_cast<UCHAR>((hash[8] & 0x3FU) | 0x80U);
  std::string text;
  for (size_t i = 0; i < 16; ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    std::array<char, 3> digits{};
    std::snprintf(digits.data(), digits.size(), "%02x", unsigned{hash[i]});
    text += digits.data();
  }
  return text;
}

template <class DefaultInterface>
std::string Class(const std::string& name) {
  return "rc(Windows.Networking.NetworkOperators." + name + ";{" + IdText<DefaultInterface>() +
         "})";
}

TEST(AbiIds, ParameterisedOnesFollowFromTheirSignatures) {
  const std::string view = "pinterface({bbe1fa4c-b0e3-4583-baef-1f1b2e483e56};";
  const std::string operation = "pinterface({9fc2b0bb-e446-44e2-aa61-9cab8f636af2};";
  const std::string completed = "pinterface({fcdcf02c-e5d8-4478-915a-4d90b74b83a5};";
  const std::string handler = "pinterface({9de1c534-6ae1-11e0-84e1-18a905bcc53f};";
  const std::string information =
      Class<IMobileBroadbandDeviceServiceInformation>("MobileBroadbandDeviceServiceInformation");
  const std::string result = Class<IMobileBroadbandDeviceServiceCommandResult>(
      "MobileBroadbandDeviceServiceCommandResult");
  const std::string watcher =
      Class<IMobileBroadbandAccountWatcher>("MobileBroadbandAccountWatcher");
  const std::string args =
      Class<IMobileBroadbandAccountEventArgs>("MobileBroadbandAccountEventArgs");
  // Nothing here needs the interface of this one.
  const std::string updated =
      "rc(Windows.Networking.NetworkOperators.MobileBroadbandAccountUpdatedEventArgs;"
      "{7bc31d88-a6bd-49e1-80ab-6b91354a57d4})";

  // A published value, to try the rule itself.
  EXPECT_EQ("2f13c006-a03a-5f69-b090-75a43e33423e", IdFromSignature(view + "string)"));

  EXPECT_EQ(IdText<IDeviceServiceInformationView>(), IdFromSignature(view + information + ")"));
  EXPECT_EQ(IdText<ICommandOperation>(), IdFromSignature(operation + result + ")"));
  EXPECT_EQ(IdText<ICommandCompletedHandler>(), IdFromSignature(completed + result + ")"));
  EXPECT_EQ(IdText<IAccountHandler>(), IdFromSignature(handler + watcher + ";" + args + ")"));
  EXPECT_EQ(IdText<IAccountUpdatedHandler>(),
            IdFromSignature(handler + watcher + ";" + updated + ")"));
  EXPECT_EQ(IdText<IWatcherHandler>(),
            IdFromSignature(handler + watcher + ";cinterface(IInspectable))"));
}

TEST(AbiIds, OthersAreThePublishedOnes) {
  EXPECT_EQ(IdText<IActivationFactory>(), "00000035-0000-0000-c000-000000000046");
  EXPECT_EQ(IdText<IAgileObject>(), "94ea2b94-e9cc-49e0-c0ff-ee64ca8f5b90");
  EXPECT_EQ(IdText<IBuffer>(), "905a0fe0-bc53-11df-8c49-001e4fc686da");
  EXPECT_EQ(IdText<IBufferByteAccess>(), "905a0fef-bc53-11df-8c49-001e4fc686da");
  EXPECT_EQ(IdText<IDataWriter>(), "64b89265-d341-4922-b38a-dd4af8808c4e");
  EXPECT_EQ(IdText<IInspectable>(), "af86e2e0-b12d-4c6a-9c5a-d7aa65101e90");
  EXPECT_EQ(IdText<IMobileBroadbandDeviceService>(), "22be1a52-bd80-40ac-8e1f-2e07836a3dbd");
  EXPECT_EQ(IdText<IMobileBroadbandDeviceServiceCommandSession>(),
            "fc098a45-913b-4914-b6c3-ae6304593e75");
  EXPECT_EQ(IdText<IMobileBroadbandModem>(), "d0356912-e9f9-4f67-a03d-43189a316bf1");
  EXPECT_EQ(IdText<IMobileBroadbandModemStatics>(), "f99ed637-d6f1-4a78-8cbc-6421a65063c8");
}

// The slot of a virtual method: a pointer to it holds 1 + the offset in the table.
template <class Method>
size_t Slot(Method method) {
  std::array<uintptr_t, 2> words{};
  static_assert(sizeof(words) == sizeof(method));
  std::memcpy(words.data(), &method, sizeof(words));
  return (words[0] - 1) / sizeof(void*);
}

TEST(AbiSlots, UsedMethodsAreInThePublishedOnes) {
  EXPECT_EQ(Slot(&IActivationFactory::ActivateInstance), 6U);
  EXPECT_EQ(Slot(&IMobileBroadbandModemStatics::GetDefault), 8U);
  EXPECT_EQ(Slot(&IMobileBroadbandModem::get_DeviceServices), 10U);
  EXPECT_EQ(Slot(&IMobileBroadbandModem::GetDeviceService), 11U);
  EXPECT_EQ(Slot(&IDeviceServiceInformationView::GetAt), 6U);
  EXPECT_EQ(Slot(&IDeviceServiceInformationView::get_Size), 7U);
  EXPECT_EQ(Slot(&IMobileBroadbandDeviceServiceInformation::get_DeviceServiceId), 6U);
  EXPECT_EQ(Slot(&IMobileBroadbandDeviceService::OpenCommandSession), 9U);
  EXPECT_EQ(Slot(&IMobileBroadbandDeviceServiceCommandSession::SendQueryCommandAsync), 6U);
  EXPECT_EQ(Slot(&IMobileBroadbandDeviceServiceCommandSession::SendSetCommandAsync), 7U);
  EXPECT_EQ(Slot(&IMobileBroadbandDeviceServiceCommandSession::CloseSession), 8U);
  EXPECT_EQ(Slot(&ICommandOperation::put_Completed), 6U);
  EXPECT_EQ(Slot(&ICommandOperation::GetResults), 8U);
  EXPECT_EQ(Slot(&ICommandCompletedHandler::Invoke), 3U);
  EXPECT_EQ(Slot(&IMobileBroadbandDeviceServiceCommandResult::get_StatusCode), 6U);
  EXPECT_EQ(Slot(&IMobileBroadbandDeviceServiceCommandResult::get_ResponseData), 7U);
  EXPECT_EQ(Slot(&IDataWriter::WriteBytes), 12U);
  EXPECT_EQ(Slot(&IDataWriter::DetachBuffer), 31U);
  EXPECT_EQ(Slot(&IBuffer::get_Length), 7U);
  EXPECT_EQ(Slot(&IBufferByteAccess::Buffer), 3U);
  EXPECT_EQ(Slot(&IMobileBroadbandAccountWatcher::add_AccountAdded), 6U);
  EXPECT_EQ(Slot(&IMobileBroadbandAccountWatcher::add_AccountRemoved), 10U);
  EXPECT_EQ(Slot(&IMobileBroadbandAccountWatcher::add_EnumerationCompleted), 12U);
  EXPECT_EQ(Slot(&IMobileBroadbandAccountWatcher::get_Status), 16U);
  EXPECT_EQ(Slot(&IMobileBroadbandAccountWatcher::Start), 17U);
  EXPECT_EQ(Slot(&IAccountHandler::Invoke), 3U);
  EXPECT_EQ(Slot(&IWatcherHandler::Invoke), 3U);
}

}  // namespace

}  // namespace nuvelta::windows::abi
