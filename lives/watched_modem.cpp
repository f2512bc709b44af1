#include "lives/watched_modem.h"

#include <span>
#include <utility>

#include "platform/vendor_service.h"

namespace nuvelta::explore {

using platform::AsyncStatus;
using platform::CommandOperation;
using platform::CommandResult;
using platform::CommandSession;
using platform::DataBuffer;
using platform::DataWriter;
using platform::DeviceService;
using platform::DeviceServiceInformation;
using platform::DeviceServiceList;
using platform::Modem;

namespace {

struct Ear {
  Watch& watch;
  const bool& on;

  // Null outside of a run.
  RunAnswers* Run() const { return on ? watch.runs.AtHand() : nullptr; }
  ModemVisit* Visit() const { return on ? watch.runs.Visit() : nullptr; }
  void Raised() const {
    if (on) watch.runs.OnRaised();
  }
  // What throws, or answers null where only an object is of use, ends the visit.
  template <class Call>
  auto Hear(const Call& call) const {
    try {
      return call();
    } catch (...) {
      Raised();
      throw;
    }
  }
  template <class Call>
  auto HearObject(const Call& call) const {
    auto object = Hear(call);
    if (object == nullptr) Raised();
    return object;
  }
};

// Null stays null: it is an answer of its own.
template <class Watched, class Inner>
std::shared_ptr<Inner> Wrap(std::shared_ptr<Inner> inner, const Ear& ear) {
  if (inner == nullptr) return nullptr;
  return std::make_shared<Watched>(std::move(inner), ear);
}

// What a command was answered, heard when it is read.
class WatchedData final : public DataBuffer {
 public:
  WatchedData(std::shared_ptr<DataBuffer> inner, const Ear& ear)
      : m_inner(std::move(inner)), m_ear(ear) {}

  uint32_t Length() override {
    return m_length = m_ear.Hear([&] { return m_inner->Length(); });
  }
  const uint8_t* Buffer() override {
    const uint8_t* const bytes = m_ear.Hear([&] { return m_inner->Buffer(); });
    if (!m_ear.on || bytes == nullptr || m_length < sizeof(int32_t)) return bytes;
    uint32_t level = 0;
    for (uint32_t i = 0; i < sizeof level; ++i) level |= uint32_t{bytes[i]} << (8 * i);
    m_ear.watch.commands.OnAnswer(static_cast<int32_t>(level));
    m_ear.watch.runs.OnLevel(static_cast<int32_t>(level));
    return bytes;
  }

 private:
  const std::shared_ptr<DataBuffer> m_inner;
  const Ear m_ear;
  uint32_t m_length = 0;
};

class WatchedResult final : public CommandResult {
 public:
  WatchedResult(std::shared_ptr<CommandResult> inner, const Ear& ear)
      : m_inner(std::move(inner)), m_ear(ear) {}

  uint32_t StatusCode() override {
    m_code = m_ear.Hear([&] { return m_inner->StatusCode(); });
    if (m_ear.on) m_ear.watch.runs.OnStatus(m_code);
    return m_code;
  }
  std::shared_ptr<DataBuffer> ResponseData() override {
    std::shared_ptr<DataBuffer> data = m_ear.Hear([&] { return m_inner->ResponseData(); });
    return m_code == 0 ? Wrap<WatchedData>(std::move(data), m_ear) : data;
  }

 private:
  const std::shared_ptr<CommandResult> m_inner;
  const Ear m_ear;
  uint32_t m_code = 1;
};

// A command under way.
class WatchedOperation final : public CommandOperation {
 public:
  WatchedOperation(std::shared_ptr<CommandOperation> inner, const Ear& ear)
      : m_inner(std::move(inner)), m_ear(ear) {}

  void Completed(CompletedHandler handler) override {
    const std::shared_ptr<AsyncStatus> end = m_ear.watch.runs.OnOperation();
    m_ear.Hear([&] {
      m_inner->Completed([end, handler = std::move(handler)](AsyncStatus status) {
        *end = status;
        handler(status);
      });
    });
  }
  std::shared_ptr<CommandResult> GetResults() override {
    return Wrap<WatchedResult>(m_ear.HearObject([&] { return m_inner->GetResults(); }), m_ear);
  }

 private:
  const std::shared_ptr<CommandOperation> m_inner;
  const Ear m_ear;
};

std::span<const uint8_t> Bytes(const std::shared_ptr<DataBuffer>& data) {
  if (data == nullptr) return {};
  return {data->Buffer(), data->Length()};
}

class WatchedSession final : public CommandSession {
 public:
  WatchedSession(std::shared_ptr<CommandSession> inner, const Ear& ear)
      : m_inner(std::move(inner)), m_ear(ear) {}

  std::shared_ptr<CommandOperation> SendQueryCommandAsync(
      uint32_t command_id, const std::shared_ptr<DataBuffer>& data) override {
    if (m_ear.on) m_ear.watch.commands.OnQuery(Bytes(data));
    return Sent(false, [&] { return m_inner->SendQueryCommandAsync(command_id, data); });
  }
  std::shared_ptr<CommandOperation> SendSetCommandAsync(
      uint32_t command_id, const std::shared_ptr<DataBuffer>& data) override {
    if (m_ear.on) m_ear.watch.commands.OnSet(Bytes(data), m_ear.watch.Now());
    return Sent(true, [&] { return m_inner->SendSetCommandAsync(command_id, data); });
  }
  void CloseSession() override {
    m_ear.Hear([&] { m_inner->CloseSession(); });
  }
  uintptr_t Handle() override { return m_inner->Handle(); }

 private:
  template <class Send>
  std::shared_ptr<CommandOperation> Sent(bool set, const Send& send) {
    std::shared_ptr<CommandOperation> operation;
    try {
      operation = m_ear.HearObject(send);
    } catch (...) {
      if (m_ear.on) m_ear.watch.runs.OnSendingThrew(set);
      throw;
    }
    if (m_ear.on) m_ear.watch.runs.OnSent(operation != nullptr);
    return Wrap<WatchedOperation>(std::move(operation), m_ear);
  }

  const std::shared_ptr<CommandSession> m_inner;
  const Ear m_ear;
};

class WatchedService final : public DeviceService {
 public:
  WatchedService(std::shared_ptr<DeviceService> inner, const Ear& ear)
      : m_inner(std::move(inner)), m_ear(ear) {}

  std::shared_ptr<CommandSession> OpenCommandSession() override {
    auto session = m_ear.Hear([&] { return m_inner->OpenCommandSession(); });
    if (ModemVisit* const visit = m_ear.Visit()) visit->session = session != nullptr;
    return Wrap<WatchedSession>(std::move(session), m_ear);
  }

 private:
  const std::shared_ptr<DeviceService> m_inner;
  const Ear m_ear;
};

// The id is compared as the text that it is then converted to.
class WatchedInformation final : public DeviceServiceInformation {
 public:
  WatchedInformation(std::shared_ptr<DeviceServiceInformation> inner, const Ear& ear)
      : m_inner(std::move(inner)), m_ear(ear) {}

  platform::Guid DeviceServiceId() override {
    const platform::Guid id = m_ear.Hear([&] { return m_inner->DeviceServiceId(); });
    if (RunAnswers* const run = m_ear.Run()) {
      run->text_for = id == platform::kVendorService ? RunAnswers::TextFor::kVendorService
                                                     : RunAnswers::TextFor::kOther;
    }
    return id;
  }

 private:
  const std::shared_ptr<DeviceServiceInformation> m_inner;
  const Ear m_ear;
};

class WatchedServices final : public DeviceServiceList {
 public:
  WatchedServices(std::shared_ptr<DeviceServiceList> inner, const Ear& ear)
      : m_inner(std::move(inner)), m_ear(ear) {}

  uint32_t Size() override {
    return m_ear.Hear([&] { return m_inner->Size(); });
  }
  std::shared_ptr<DeviceServiceInformation> GetAt(uint32_t index) override {
    return Wrap<WatchedInformation>(m_ear.HearObject([&] { return m_inner->GetAt(index); }), m_ear);
  }

 private:
  const std::shared_ptr<DeviceServiceList> m_inner;
  const Ear m_ear;
};

class WatchedModem final : public Modem {
 public:
  WatchedModem(std::shared_ptr<Modem> inner, const Ear& ear)
      : m_inner(std::move(inner)), m_ear(ear) {}

  std::shared_ptr<DeviceServiceList> DeviceServices() override {
    return Wrap<WatchedServices>(m_ear.HearObject([&] { return m_inner->DeviceServices(); }),
                                 m_ear);
  }
  std::shared_ptr<DeviceService> GetDeviceService(const platform::Guid& id) override {
    auto service = m_ear.Hear([&] { return m_inner->GetDeviceService(id); });
    if (ModemVisit* const visit = m_ear.Visit()) visit->service = service != nullptr;
    return Wrap<WatchedService>(std::move(service), m_ear);
  }

 private:
  const std::shared_ptr<Modem> m_inner;
  const Ear m_ear;
};

class WatchedWriter final : public DataWriter {
 public:
  WatchedWriter(std::shared_ptr<DataWriter> inner, const Ear& ear)
      : m_inner(std::move(inner)), m_ear(ear) {}

  void WriteBytes(std::span<const uint8_t> bytes) override {
    m_ear.Hear([&] { m_inner->WriteBytes(bytes); });
  }
  std::shared_ptr<DataBuffer> DetachBuffer() override {
    return m_ear.HearObject([&] { return m_inner->DetachBuffer(); });
  }

 private:
  const std::shared_ptr<DataWriter> m_inner;
  const Ear m_ear;
};

}  // namespace

std::shared_ptr<Modem> WatchedMobileBroadband::GetDefault() {
  const Ear ear{m_watch, m_on};
  if (m_on) m_watch.runs.OnVisit();
  auto modem = ear.Hear([&] { return m_inner.GetDefault(); });
  if (ModemVisit* const visit = ear.Visit()) visit->modem = modem != nullptr;
  return Wrap<WatchedModem>(std::move(modem), ear);
}

std::shared_ptr<DataWriter> WatchedMobileBroadband::CreateDataWriter() {
  const Ear ear{m_watch, m_on};
  return Wrap<WatchedWriter>(ear.HearObject([&] { return m_inner.CreateDataWriter(); }), ear);
}

std::shared_ptr<platform::AccountWatcher> WatchedMobileBroadband::CreateAccountWatcher() {
  return m_inner.CreateAccountWatcher();
}

}  // namespace nuvelta::explore
