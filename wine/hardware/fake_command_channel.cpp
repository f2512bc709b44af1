#include "wine/hardware/fake_command_channel.h"

#include <bit>
#include <mutex>
#include <utility>
#include <vector>

#include "wine/hardware/fake_data_writer.h"

namespace nuvelta::wine {

namespace {

using abi::AsyncStatus;
using virtual_notebook::ModemReply;
using ReplyKind = virtual_notebook::Answer::Kind;

class FakeResult final : public Fake<abi::IMobileBroadbandDeviceServiceCommandResult> {
 public:
  explicit FakeResult(ModemReply reply) : m_reply(std::move(reply)) {}

  HRESULT STDMETHODCALLTYPE get_StatusCode(UINT32* value) override {
    return Answer("CommandResult::StatusCode", [&] {
      *value = m_reply.StatusCode();
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE get_ResponseData(abi::IBuffer** value) override {
    *value = nullptr;
    return Answer("CommandResult::ResponseData", [&] {
      if (m_reply.kind != ReplyKind::kNoData) *value = MakeFakeResponse(m_reply.data).Detach();
      return S_OK;
    });
  }

 private:
  const ModemReply m_reply;
};

// Outlives its session and its caller: the modem's answer may come when both have
// gone.
class FakeOperation final : public Fake<abi::ICommandOperation> {
 public:
  explicit FakeOperation(ModemReply reply) : m_reply(std::move(reply)) {}

  HRESULT STDMETHODCALLTYPE put_Completed(abi::ICommandCompletedHandler* handler) override {
    return Answer("CommandOperation::Completed", [&] {
      {
        const std::lock_guard lock(m_mutex);
        if (std::exchange(m_assigned, true)) return kIllegalDelegateAssignment;
        m_handler = ComPtr(handler);
      }
      CallHandler();
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE get_Completed(abi::ICommandCompletedHandler**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE
  GetResults(abi::IMobileBroadbandDeviceServiceCommandResult** result) override {
    *result = nullptr;
    return Answer("CommandOperation::GetResults", [&] {
      const std::lock_guard lock(m_mutex);
      if (m_status == AsyncStatus::kStarted) return kIllegalMethodCall;
      if (m_status != AsyncStatus::kCompleted) return E_FAIL;
      *result = Make<FakeResult>(m_reply).Detach();
      return S_OK;
    });
  }

  void Complete() {
    {
      const std::lock_guard lock(m_mutex);
      m_status = m_reply.EndState();
    }
    CallHandler();
  }

 private:
  // Once both the handler and the answer are there.
  void CallHandler() {
    ComPtr<abi::ICommandCompletedHandler> handler;
    AsyncStatus status{};
    {
      const std::lock_guard lock(m_mutex);
      status = m_status;
      if (status != AsyncStatus::kStarted) handler = std::exchange(m_handler, {});
    }
    // The platform takes an error of a handler and goes on.
    if (handler) handler->Invoke(this, status);
  }

  const ModemReply m_reply;
  std::mutex m_mutex;
  AsyncStatus m_status = AsyncStatus::kStarted;
  bool m_assigned = false;
  ComPtr<abi::ICommandCompletedHandler> m_handler;
};

std::vector<uint8_t> BytesOf(abi::IBuffer& buffer) {
  const ComPtr shared(&buffer);
  ComPtr<abi::IBufferByteAccess> access;
  UINT32 length = 0;
  BYTE* bytes = nullptr;
  if (FAILED(shared.As(access)) || FAILED(buffer.get_Length(&length)) ||
      FAILED(access->Buffer(&bytes))) {
    return {};
  }
  return {bytes, bytes + length};
}

class FakeSession final : public Fake<abi::IMobileBroadbandDeviceServiceCommandSession> {
 public:
  HRESULT STDMETHODCALLTYPE SendQueryCommandAsync(UINT32 command_id, abi::IBuffer* data,
                                                  abi::ICommandOperation** operation) override {
    *operation = nullptr;
    return Answer("CommandSession::SendQueryCommandAsync",
                  [&] { return Send(false, command_id, data, operation); });
  }
  HRESULT STDMETHODCALLTYPE SendSetCommandAsync(UINT32 command_id, abi::IBuffer* data,
                                                abi::ICommandOperation** operation) override {
    *operation = nullptr;
    return Answer("CommandSession::SendSetCommandAsync",
                  [&] { return Send(true, command_id, data, operation); });
  }
  HRESULT STDMETHODCALLTYPE CloseSession() override {
    return Answer("CommandSession::CloseSession", [&] {
      m_closed = true;
      return S_OK;
    });
  }

 private:
  HRESULT Send(bool set, UINT32 command_id, abi::IBuffer* data,
               abi::ICommandOperation** operation) const {
    if (m_closed) return kClosed;
    if (data == nullptr) return E_POINTER;
    ModemReply reply = Stage().Execute(set, command_id, BytesOf(*data));
    if (reply.kind == ReplyKind::kHresult) return static_cast<HRESULT>(reply.code);
    const bool answers = reply.kind != ReplyKind::kNever;
    const Duration after = reply.after;
    auto made = Make<FakeOperation>(std::move(reply));
    if (answers) Stage().RunLater(after, [made] { made->Complete(); });
    *operation = made.Detach();
    return S_OK;
  }

  std::atomic<bool> m_closed = false;
};

class FakeService final : public Fake<abi::IMobileBroadbandDeviceService> {
 public:
  HRESULT STDMETHODCALLTYPE
  OpenCommandSession(abi::IMobileBroadbandDeviceServiceCommandSession** session) override {
    *session = nullptr;
    return Answer("DeviceService::OpenCommandSession", [&] {
      *session = Make<FakeSession>().Detach();
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE get_DeviceServiceId(GUID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_SupportedCommands(IInspectable**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE OpenDataSession(IInspectable**) override { return E_NOTIMPL; }
};

class FakeServiceInformation final : public Fake<abi::IMobileBroadbandDeviceServiceInformation> {
 public:
  explicit FakeServiceInformation(const platform::Guid& id) : m_id(id) {}

  HRESULT STDMETHODCALLTYPE get_DeviceServiceId(GUID* value) override {
    return Answer("DeviceServiceInformation::DeviceServiceId", [&] {
      *value = std::bit_cast<GUID>(m_id);
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE get_IsDataReadSupported(boolean*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_IsDataWriteSupported(boolean*) override { return E_NOTIMPL; }

 private:
  const platform::Guid m_id;
};

class FakeServiceView final : public Fake<abi::IDeviceServiceInformationView> {
 public:
  explicit FakeServiceView(std::vector<platform::Guid> ids) : m_ids(std::move(ids)) {}

  HRESULT STDMETHODCALLTYPE GetAt(UINT32 index,
                                  abi::IMobileBroadbandDeviceServiceInformation** item) override {
    *item = nullptr;
    return Answer("DeviceServiceList::GetAt", [&] {
      if (index >= m_ids.size()) return kBounds;
      *item = Make<FakeServiceInformation>(m_ids[index]).Detach();
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE get_Size(UINT32* value) override {
    return Answer("DeviceServiceList::Size", [&] {
      *value = static_cast<UINT32>(m_ids.size());
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE IndexOf(abi::IMobileBroadbandDeviceServiceInformation*, UINT32*,
                                    boolean*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetMany(UINT32, UINT32, abi::IMobileBroadbandDeviceServiceInformation**,
                                    UINT32*) override {
    return E_NOTIMPL;
  }

 private:
  const std::vector<platform::Guid> m_ids;
};

class FakeModem final : public Fake<abi::IMobileBroadbandModem> {
 public:
  HRESULT STDMETHODCALLTYPE
  get_DeviceServices(abi::IDeviceServiceInformationView** value) override {
    *value = nullptr;
    return Answer("Modem::DeviceServices", [&] {
      *value = Make<FakeServiceView>(Stage().Modem().device_services).Detach();
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE GetDeviceService(GUID id,
                                             abi::IMobileBroadbandDeviceService** value) override {
    *value = nullptr;
    return Answer("Modem::GetDeviceService", [&] {
      for (const platform::Guid& listed : Stage().Modem().device_services) {
        if (listed != std::bit_cast<platform::Guid>(id)) continue;
        *value = Make<FakeService>().Detach();
        break;
      }
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE get_CurrentAccount(IInspectable**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_DeviceInformation(IInspectable**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_MaxDeviceServiceCommandSizeInBytes(UINT32*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE get_MaxDeviceServiceDataSizeInBytes(UINT32*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE get_IsResetSupported(boolean*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE ResetAsync(IInspectable**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetCurrentConfigurationAsync(IInspectable**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE get_CurrentNetwork(IInspectable**) override { return E_NOTIMPL; }
};

}  // namespace

ComPtr<abi::IMobileBroadbandModem> MakeFakeModem() {
  return ComPtr<abi::IMobileBroadbandModem>::Adopt(new FakeModem);
}

}  // namespace nuvelta::wine
