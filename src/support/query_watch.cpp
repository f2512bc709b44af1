#include "support/query_watch.h"

#include <mutex>
#include <new>
#include <utility>

#include "platform/clock.h"

namespace nuvelta::support {

using platform::AsyncStatus;

namespace {

constexpr uint32_t kOutOfMemory = 0x8007000E;   // E_OUTOFMEMORY
constexpr uint32_t kAccessDenied = 0x80070005;  // E_ACCESSDENIED

}  // namespace

struct QueryWatch::Shared {
  std::mutex mutex;
  QueryRecord record;

  template <class Change>
  void Note(Change change) {
    const std::lock_guard lock(mutex);
    change(record);
  }

  // Makes a call; what it throws is noted with its name.
  template <class Call>
  auto Try(const char* name, Call call) {
    try {
      return call();
    } catch (const platform::HresultError& error) {
      Fail(name, error.code);
      throw;
    } catch (const std::bad_alloc&) {
      Fail(name, kOutOfMemory);
      throw;
    }
  }

 private:
  void Fail(const char* name, uint32_t code) {
    const std::lock_guard lock(mutex);
    record.failed_call = name;
    record.failure = code;
  }
};

namespace {

using SharedRecord = std::shared_ptr<QueryWatch::Shared>;

class WatchedWriter final : public platform::DataWriter {
 public:
  WatchedWriter(std::shared_ptr<platform::DataWriter> inner, SharedRecord shared)
      : m_inner(std::move(inner)), m_shared(std::move(shared)) {}

  void WriteBytes(std::span<const uint8_t> bytes) override {
    m_shared->Note([&](QueryRecord& record) { record.payload.assign(bytes.begin(), bytes.end()); });
    m_shared->Try("DataWriter::WriteBytes", [&] { m_inner->WriteBytes(bytes); });
  }
  std::shared_ptr<platform::DataBuffer> DetachBuffer() override {
    return m_shared->Try("DataWriter::DetachBuffer", [&] { return m_inner->DetachBuffer(); });
  }

 private:
  const std::shared_ptr<platform::DataWriter> m_inner;
  const SharedRecord m_shared;
};

class WatchedResult final : public platform::CommandResult {
 public:
  WatchedResult(std::shared_ptr<platform::CommandResult> inner, SharedRecord shared)
      : m_inner(std::move(inner)), m_shared(std::move(shared)) {}

  uint32_t StatusCode() override {
    const uint32_t code =
        m_shared->Try("CommandResult::StatusCode", [&] { return m_inner->StatusCode(); });
    m_shared->Note([&](QueryRecord& record) { record.status = code; });
    return code;
  }

  // The bytes are read here as well as by the asker, who stops at an answer too short.
  std::shared_ptr<platform::DataBuffer> ResponseData() override {
    auto data =
        m_shared->Try("CommandResult::ResponseData", [&] { return m_inner->ResponseData(); });
    if (data == nullptr) return data;
    m_shared->Try("DataBuffer", [&] {
      const uint32_t length = data->Length();
      const uint8_t* const bytes = length == 0 ? nullptr : data->Buffer();
      m_shared->Note([&](QueryRecord& record) {
        record.data.emplace();
        if (bytes != nullptr) record.data->assign(bytes, bytes + length);
      });
    });
    return data;
  }

 private:
  const std::shared_ptr<platform::CommandResult> m_inner;
  const SharedRecord m_shared;
};

class WatchedOperation final : public platform::CommandOperation {
 public:
  WatchedOperation(std::shared_ptr<platform::CommandOperation> inner, SharedRecord shared)
      : m_inner(std::move(inner)), m_shared(std::move(shared)) {}

  void Completed(CompletedHandler handler) override {
    m_shared->Try("CommandOperation::Completed", [&] {
      m_inner->Completed(
          [shared = m_shared, begin = m_begin, handler = std::move(handler)](AsyncStatus status) {
            const auto took = platform::Os().clock->Now() - begin;
            shared->Note([&](QueryRecord& record) {
              record.state = status;
              record.took = std::chrono::duration_cast<std::chrono::nanoseconds>(took);
            });
            handler(status);
          });
    });
  }
  std::shared_ptr<platform::CommandResult> GetResults() override {
    auto result =
        m_shared->Try("CommandOperation::GetResults", [&] { return m_inner->GetResults(); });
    if (result == nullptr) return result;
    return std::make_shared<WatchedResult>(std::move(result), m_shared);
  }

 private:
  const std::shared_ptr<platform::CommandOperation> m_inner;
  const SharedRecord m_shared;
  const std::chrono::system_clock::time_point m_begin = platform::Os().clock->Now();
};

class WatchedSession final : public platform::CommandSession {
 public:
  WatchedSession(std::shared_ptr<platform::CommandSession> inner, SharedRecord shared)
      : m_inner(std::move(inner)), m_shared(std::move(shared)) {}

  std::shared_ptr<platform::CommandOperation> SendQueryCommandAsync(
      uint32_t command_id, const std::shared_ptr<platform::DataBuffer>& data) override {
    auto operation = m_shared->Try("CommandSession::SendQueryCommandAsync", [&] {
      return m_inner->SendQueryCommandAsync(command_id, data);
    });
    if (operation == nullptr) return operation;
    m_shared->Note([](QueryRecord& record) { record.sent = true; });
    return std::make_shared<WatchedOperation>(std::move(operation), m_shared);
  }

  // Nobody asks for it; it could not get through either.
  std::shared_ptr<platform::CommandOperation> SendSetCommandAsync(
      uint32_t /*command_id*/, const std::shared_ptr<platform::DataBuffer>& /*data*/) override {
    m_shared->Note([](QueryRecord& record) { ++record.sets_held_back; });
    throw platform::HresultError{kAccessDenied};
  }

  void CloseSession() override {
    m_shared->Try("CommandSession::CloseSession", [&] { m_inner->CloseSession(); });
  }
  uintptr_t Handle() override { return m_inner->Handle(); }

 private:
  const std::shared_ptr<platform::CommandSession> m_inner;
  const SharedRecord m_shared;
};

class WatchedService final : public platform::DeviceService {
 public:
  WatchedService(std::shared_ptr<platform::DeviceService> inner, SharedRecord shared)
      : m_inner(std::move(inner)), m_shared(std::move(shared)) {}

  std::shared_ptr<platform::CommandSession> OpenCommandSession() override {
    auto session = m_shared->Try("DeviceService::OpenCommandSession",
                                 [&] { return m_inner->OpenCommandSession(); });
    if (session == nullptr) return session;
    m_shared->Note([](QueryRecord& record) { record.session = true; });
    return std::make_shared<WatchedSession>(std::move(session), m_shared);
  }

 private:
  const std::shared_ptr<platform::DeviceService> m_inner;
  const SharedRecord m_shared;
};

class WatchedModem final : public platform::Modem {
 public:
  WatchedModem(std::shared_ptr<platform::Modem> inner, SharedRecord shared)
      : m_inner(std::move(inner)), m_shared(std::move(shared)) {}

  std::shared_ptr<platform::DeviceServiceList> DeviceServices() override {
    return m_shared->Try("Modem::DeviceServices", [&] { return m_inner->DeviceServices(); });
  }
  std::shared_ptr<platform::DeviceService> GetDeviceService(const platform::Guid& id) override {
    auto service =
        m_shared->Try("Modem::GetDeviceService", [&] { return m_inner->GetDeviceService(id); });
    if (service == nullptr) return service;
    return std::make_shared<WatchedService>(std::move(service), m_shared);
  }

 private:
  const std::shared_ptr<platform::Modem> m_inner;
  const SharedRecord m_shared;
};

}  // namespace

QueryWatch::QueryWatch()
    : m_before(platform::Os()), m_platform(m_before), m_shared(std::make_shared<Shared>()) {
  m_platform.mobile_broadband = this;
  platform::Install(&m_platform);
}

QueryWatch::~QueryWatch() { platform::Install(&m_before); }

std::shared_ptr<platform::Modem> QueryWatch::GetDefault() {
  auto modem = m_shared->Try("MobileBroadbandModem::GetDefault",
                             [&] { return m_before.mobile_broadband->GetDefault(); });
  if (modem == nullptr) return modem;
  return std::make_shared<WatchedModem>(std::move(modem), m_shared);
}

std::shared_ptr<platform::DataWriter> QueryWatch::CreateDataWriter() {
  auto writer =
      m_shared->Try("DataWriter", [&] { return m_before.mobile_broadband->CreateDataWriter(); });
  if (writer == nullptr) return writer;
  return std::make_shared<WatchedWriter>(std::move(writer), m_shared);
}

std::shared_ptr<platform::AccountWatcher> QueryWatch::CreateAccountWatcher() {
  return m_before.mobile_broadband->CreateAccountWatcher();
}

QueryRecord QueryWatch::Record() const {
  const std::lock_guard lock(m_shared->mutex);
  return m_shared->record;
}

}  // namespace nuvelta::support
