#include "notebook/machine/virtual_command_channel.h"

#include <mutex>
#include <new>
#include <utility>

namespace nuvelta::virtual_notebook {

namespace {

using platform::HresultError;

constexpr uint32_t kPointer = 0x80004003;            // E_POINTER
constexpr uint32_t kBounds = 0x8000000B;             // E_BOUNDS
constexpr uint32_t kClosed = 0x80000013;             // RO_E_CLOSED
constexpr uint32_t kIllegalMethodCall = 0x8000000E;  // E_ILLEGAL_METHOD_CALL
constexpr uint32_t kFail = 0x80004005;               // E_FAIL
constexpr uint32_t kOutOfMemory = 0x8007000E;        // E_OUTOFMEMORY

// As the projection throws it.
[[noreturn]] void ThrowHresult(uint32_t code) {
  if (code == kOutOfMemory) throw std::bad_alloc();
  throw HresultError{code};
}

// What the writer makes; nothing of it can fail.
class Bytes final : public platform::DataBuffer {
 public:
  explicit Bytes(std::vector<uint8_t> bytes) : m_bytes(std::move(bytes)) {}
  uint32_t Length() override { return static_cast<uint32_t>(m_bytes.size()); }
  const uint8_t* Buffer() override { return m_bytes.data(); }

 private:
  std::vector<uint8_t> m_bytes;
};

// The modem's answer.
class ResponseBytes final : public platform::DataBuffer {
 public:
  ResponseBytes(Context& context, std::vector<uint8_t> bytes)
      : m_context(context), m_bytes(std::move(bytes)) {}
  uint32_t Length() override {
    m_context.Answers("DataBuffer::Length");
    return static_cast<uint32_t>(m_bytes.size());
  }
  const uint8_t* Buffer() override {
    return m_context.Answers("DataBuffer::Buffer") ? m_bytes.data() : nullptr;
  }

 private:
  Context& m_context;
  std::vector<uint8_t> m_bytes;
};

class Writer final : public platform::DataWriter {
 public:
  explicit Writer(Context& context) : m_context(context) {}

  void WriteBytes(std::span<const uint8_t> bytes) override {
    m_context.Answers("DataWriter::WriteBytes");
    m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
  }
  std::shared_ptr<platform::DataBuffer> DetachBuffer() override {
    if (!m_context.Answers("DataWriter::DetachBuffer")) return nullptr;
    return std::make_shared<Bytes>(std::exchange(m_bytes, {}));
  }

 private:
  Context& m_context;
  std::vector<uint8_t> m_bytes;
};

class Result final : public platform::CommandResult {
 public:
  Result(Context& context, ModemReply reply) : m_context(context), m_reply(std::move(reply)) {}

  uint32_t StatusCode() override {
    m_context.Answers("CommandResult::StatusCode");
    return m_reply.StatusCode();
  }
  std::shared_ptr<platform::DataBuffer> ResponseData() override {
    if (!m_context.Answers("CommandResult::ResponseData")) return nullptr;
    if (m_reply.kind == Answer::Kind::kNoData) return nullptr;
    return std::make_shared<ResponseBytes>(m_context, m_reply.data);
  }

 private:
  Context& m_context;
  ModemReply m_reply;
};

// The operation outlives its session and its caller: the modem's answer may
// come when both have gone.
class Operation final : public platform::CommandOperation {
 public:
  Operation(Context& context, ModemReply reply) : m_context(context), m_reply(std::move(reply)) {}

  void Completed(CompletedHandler handler) override {
    m_context.Answers("CommandOperation::Completed");
    platform::AsyncStatus status{};
    {
      const std::lock_guard lock(m_mutex);
      m_handler = std::move(handler);
      status = m_status;
    }
    if (status != platform::AsyncStatus::kStarted) CallHandler(status);
  }

  std::shared_ptr<platform::CommandResult> GetResults() override {
    if (!m_context.Answers("CommandOperation::GetResults")) return nullptr;
    const std::lock_guard lock(m_mutex);
    if (m_status == platform::AsyncStatus::kStarted) throw HresultError{kIllegalMethodCall};
    if (m_status != platform::AsyncStatus::kCompleted) throw HresultError{kFail};
    return std::make_shared<Result>(m_context, m_reply);
  }

  void Complete() {
    const platform::AsyncStatus status = m_reply.EndState();
    {
      const std::lock_guard lock(m_mutex);
      m_status = status;
    }
    CallHandler(status);
  }

 private:
  void CallHandler(platform::AsyncStatus status) {
    CompletedHandler handler;
    {
      const std::lock_guard lock(m_mutex);
      handler = std::exchange(m_handler, nullptr);
    }
    if (handler) handler(status);
  }

  Context& m_context;
  const ModemReply m_reply;
  std::mutex m_mutex;
  platform::AsyncStatus m_status = platform::AsyncStatus::kStarted;
  CompletedHandler m_handler;
};

class VirtualSession final : public platform::CommandSession {
 public:
  VirtualSession(Context& context, ModemModel& modem) : m_context(context), m_modem(modem) {}

  std::shared_ptr<platform::CommandOperation> SendQueryCommandAsync(
      uint32_t command_id, const std::shared_ptr<platform::DataBuffer>& data) override {
    if (!m_context.Answers("CommandSession::SendQueryCommandAsync")) return nullptr;
    return Send(false, command_id, data);
  }
  std::shared_ptr<platform::CommandOperation> SendSetCommandAsync(
      uint32_t command_id, const std::shared_ptr<platform::DataBuffer>& data) override {
    if (!m_context.Answers("CommandSession::SendSetCommandAsync")) return nullptr;
    return Send(true, command_id, data);
  }
  void CloseSession() override {
    m_context.Answers("CommandSession::CloseSession");
    m_closed = true;
  }
  uintptr_t Handle() override { return 0x51A0; }

 private:
  std::shared_ptr<platform::CommandOperation> Send(
      bool set, uint32_t command_id, const std::shared_ptr<platform::DataBuffer>& data) {
    if (m_closed) throw HresultError{kClosed};
    if (data == nullptr) throw HresultError{kPointer};
    std::vector<uint8_t> payload(data->Buffer(), data->Buffer() + data->Length());
    const ModemReply reply =
        m_modem.Execute(set, command_id, std::move(payload), m_context.scheduler.Now());
    if (reply.kind == Answer::Kind::kHresult) ThrowHresult(reply.code);
    auto operation = std::make_shared<Operation>(m_context, reply);
    if (reply.kind != Answer::Kind::kNever) {
      m_context.scheduler.Spawn(
          "modem answer", Scheduler::CurrentProcess(),
          [this_operation = operation, &scheduler = m_context.scheduler, after = reply.after] {
            scheduler.Sleep(after);
            this_operation->Complete();
          });
    }
    return operation;
  }

  Context& m_context;
  ModemModel& m_modem;
  bool m_closed = false;
};

class Service final : public platform::DeviceService {
 public:
  Service(Context& context, ModemModel& modem) : m_context(context), m_modem(modem) {}

  std::shared_ptr<platform::CommandSession> OpenCommandSession() override {
    if (!m_context.Answers("DeviceService::OpenCommandSession")) return nullptr;
    return std::make_shared<VirtualSession>(m_context, m_modem);
  }

 private:
  Context& m_context;
  ModemModel& m_modem;
};

class ServiceInformation final : public platform::DeviceServiceInformation {
 public:
  ServiceInformation(Context& context, const platform::Guid& id) : m_context(context), m_id(id) {}

  platform::Guid DeviceServiceId() override {
    m_context.Answers("DeviceServiceInformation::DeviceServiceId");
    return m_id;
  }

 private:
  Context& m_context;
  platform::Guid m_id;
};

class ServiceList final : public platform::DeviceServiceList {
 public:
  ServiceList(Context& context, std::vector<platform::Guid> ids)
      : m_context(context), m_ids(std::move(ids)) {}

  uint32_t Size() override {
    m_context.Answers("DeviceServiceList::Size");
    return static_cast<uint32_t>(m_ids.size());
  }
  std::shared_ptr<platform::DeviceServiceInformation> GetAt(uint32_t index) override {
    if (!m_context.Answers("DeviceServiceList::GetAt")) return nullptr;
    if (index >= m_ids.size()) throw HresultError{kBounds};
    return std::make_shared<ServiceInformation>(m_context, m_ids[index]);
  }

 private:
  Context& m_context;
  std::vector<platform::Guid> m_ids;
};

class DefaultModem final : public platform::Modem {
 public:
  DefaultModem(Context& context, ModemModel& modem) : m_context(context), m_modem(modem) {}

  std::shared_ptr<platform::DeviceServiceList> DeviceServices() override {
    if (!m_context.Answers("Modem::DeviceServices")) return nullptr;
    return std::make_shared<ServiceList>(m_context, m_modem.Description().device_services);
  }
  std::shared_ptr<platform::DeviceService> GetDeviceService(const platform::Guid& id) override {
    if (!m_context.Answers("Modem::GetDeviceService")) return nullptr;
    for (const platform::Guid& listed : m_modem.Description().device_services) {
      if (listed == id) return std::make_shared<Service>(m_context, m_modem);
    }
    return nullptr;
  }

 private:
  Context& m_context;
  ModemModel& m_modem;
};

}  // namespace

std::shared_ptr<platform::Modem> MakeModem(Context& context, ModemModel& modem) {
  return std::make_shared<DefaultModem>(context, modem);
}

std::shared_ptr<platform::DataWriter> MakeDataWriter(Context& context) {
  return std::make_shared<Writer>(context);
}

}  // namespace nuvelta::virtual_notebook
