#include "lives/watched_modem.h"

#include <span>
#include <utility>

namespace nuvelta::explore {

using platform::CommandOperation;
using platform::CommandResult;
using platform::CommandSession;
using platform::DataBuffer;
using platform::DeviceService;
using platform::Modem;

namespace {

struct Ear {
  Watch& watch;
  const bool& on;
};

// Null stays null: it is an answer of its own.
template <class Watched, class Inner>
std::shared_ptr<Inner> Wrap(std::shared_ptr<Inner> inner, const Ear& ear) {
  if (inner == nullptr) return nullptr;
  return std::make_shared<Watched>(std::move(inner), ear);
}

// What a query was answered, heard when it is read.
class WatchedData final : public DataBuffer {
 public:
  WatchedData(std::shared_ptr<DataBuffer> inner, const Ear& ear)
      : m_inner(std::move(inner)), m_ear(ear) {}

  uint32_t Length() override { return m_length = m_inner->Length(); }
  const uint8_t* Buffer() override {
    const uint8_t* const bytes = m_inner->Buffer();
    if (!m_ear.on || bytes == nullptr || m_length < sizeof(int32_t)) return bytes;
    uint32_t level = 0;
    for (uint32_t i = 0; i < sizeof level; ++i) level |= uint32_t{bytes[i]} << (8 * i);
    m_ear.watch.commands.OnAnswer(static_cast<int32_t>(level));
    return bytes;
  }

 private:
  const std::shared_ptr<DataBuffer> m_inner;
  const Ear m_ear;
  uint32_t m_length = 0;
};

// An answer to a query.
class WatchedResult final : public CommandResult {
 public:
  WatchedResult(std::shared_ptr<CommandResult> inner, const Ear& ear)
      : m_inner(std::move(inner)), m_ear(ear) {}

  uint32_t StatusCode() override { return m_code = m_inner->StatusCode(); }
  std::shared_ptr<DataBuffer> ResponseData() override {
    std::shared_ptr<DataBuffer> data = m_inner->ResponseData();
    return m_code == 0 ? Wrap<WatchedData>(std::move(data), m_ear) : data;
  }

 private:
  const std::shared_ptr<CommandResult> m_inner;
  const Ear m_ear;
  uint32_t m_code = 1;
};

// A query under way.
class WatchedQuery final : public CommandOperation {
 public:
  WatchedQuery(std::shared_ptr<CommandOperation> inner, const Ear& ear)
      : m_inner(std::move(inner)), m_ear(ear) {}

  void Completed(CompletedHandler handler) override { m_inner->Completed(std::move(handler)); }
  std::shared_ptr<CommandResult> GetResults() override {
    return Wrap<WatchedResult>(m_inner->GetResults(), m_ear);
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
    return Wrap<WatchedQuery>(m_inner->SendQueryCommandAsync(command_id, data), m_ear);
  }
  std::shared_ptr<CommandOperation> SendSetCommandAsync(
      uint32_t command_id, const std::shared_ptr<DataBuffer>& data) override {
    if (m_ear.on) m_ear.watch.commands.OnSet(Bytes(data), m_ear.watch.Now());
    return m_inner->SendSetCommandAsync(command_id, data);
  }
  void CloseSession() override { m_inner->CloseSession(); }
  uintptr_t Handle() override { return m_inner->Handle(); }

 private:
  const std::shared_ptr<CommandSession> m_inner;
  const Ear m_ear;
};

class WatchedService final : public DeviceService {
 public:
  WatchedService(std::shared_ptr<DeviceService> inner, const Ear& ear)
      : m_inner(std::move(inner)), m_ear(ear) {}

  std::shared_ptr<CommandSession> OpenCommandSession() override {
    return Wrap<WatchedSession>(m_inner->OpenCommandSession(), m_ear);
  }

 private:
  const std::shared_ptr<DeviceService> m_inner;
  const Ear m_ear;
};

class WatchedModem final : public Modem {
 public:
  WatchedModem(std::shared_ptr<Modem> inner, const Ear& ear)
      : m_inner(std::move(inner)), m_ear(ear) {}

  std::shared_ptr<platform::DeviceServiceList> DeviceServices() override {
    return m_inner->DeviceServices();
  }
  std::shared_ptr<DeviceService> GetDeviceService(const platform::Guid& id) override {
    return Wrap<WatchedService>(m_inner->GetDeviceService(id), m_ear);
  }

 private:
  const std::shared_ptr<Modem> m_inner;
  const Ear m_ear;
};

}  // namespace

std::shared_ptr<Modem> WatchedMobileBroadband::GetDefault() {
  return Wrap<WatchedModem>(m_inner.GetDefault(), Ear{m_watch, m_on});
}

std::shared_ptr<platform::DataWriter> WatchedMobileBroadband::CreateDataWriter() {
  return m_inner.CreateDataWriter();
}

std::shared_ptr<platform::AccountWatcher> WatchedMobileBroadband::CreateAccountWatcher() {
  return m_inner.CreateAccountWatcher();
}

}  // namespace nuvelta::explore
