// Commands to the modem, from the service's port down to the fakes.
#include <map>
#include <optional>
#include <string>

#include "fakes_test.h"
#include "notebook/model/port_calls.h"

namespace nuvelta::wine {

namespace {

using platform::AsyncStatus;
using virtual_notebook::Fault;
using virtual_notebook::ModemDescription;
using ReplyKind = virtual_notebook::Answer::Kind;
using Bytes = std::vector<uint8_t>;

using CommandChannelTest = FakesTest;

ModemDescription ModemThatAnswers(ReplyKind kind, uint32_t code = 0) {
  ModemDescription modem;
  modem.query.resize(1);
  modem.query.front().kind = kind;
  modem.query.front().code = code;
  return modem;
}

// Waits as the service does, with the answer on another thread.
AsyncStatus StatusOf(platform::CommandOperation& operation) {
  AsyncStatus seen = AsyncStatus::kStarted;
  operation.Completed([&seen](AsyncStatus status) { seen = status; });
  EXPECT_EQ(seen, AsyncStatus::kStarted);
  TestStage::Get().RunAll();
  return seen;
}

TEST_F(CommandChannelTest, ASetAndAQueryCarryTheirBytesThereAndBack) {
  const auto modem = port.GetDefault();
  const auto services = modem->DeviceServices();
  ASSERT_EQ(services->Size(), 2U);
  EXPECT_EQ(services->GetAt(0)->DeviceServiceId(), virtual_notebook::kSmsService);
  EXPECT_EQ(services->GetAt(1)->DeviceServiceId(), platform::kVendorService);
  EXPECT_EQ(Thrown([&] { services->GetAt(2); }), 0x8000000BU);

  const auto session = modem->GetDeviceService(platform::kVendorService)->OpenCommandSession();
  EXPECT_NE(session->Handle(), 0U);
  const auto set = session->SendSetCommandAsync(1, Payload(kSetBytes));
  ASSERT_EQ(StatusOf(*set), AsyncStatus::kCompleted);
  EXPECT_EQ(set->GetResults()->StatusCode(), 0U);

  const auto query = session->SendQueryCommandAsync(1, Payload(kQueryBytes));
  ASSERT_EQ(StatusOf(*query), AsyncStatus::kCompleted);
  const auto data = query->GetResults()->ResponseData();
  EXPECT_EQ(Bytes(data->Buffer(), data->Buffer() + data->Length()), (Bytes{1, 0, 0, 0}));

  const auto commands = TestStage::Get().Commands();
  ASSERT_EQ(commands.size(), 2U);
  EXPECT_TRUE(commands[0].set);
  EXPECT_EQ(commands[0].payload, Bytes(kSetBytes.begin(), kSetBytes.end()));
  EXPECT_FALSE(commands[1].set);
  EXPECT_EQ(commands[1].command_id, 1U);
  EXPECT_EQ(commands[1].payload, Bytes(kQueryBytes.begin(), kQueryBytes.end()));

  session->CloseSession();
  EXPECT_EQ(Thrown([&] { session->SendQueryCommandAsync(1, Payload(kQueryBytes)); }), 0x80000013U);
}

TEST_F(CommandChannelTest, NullObjectsAreAnswers) {
  const platform::Guid unknown{.Data1 = 1};
  EXPECT_EQ(port.GetDefault()->GetDeviceService(unknown), nullptr);

  const auto answers_null = [](const char* call) {
    TestStage::Get().Reset({}, {{.call = call, .kind = Fault::Kind::kNull}});
  };
  answers_null("DeviceService::OpenCommandSession");
  EXPECT_EQ(OpenSession(), nullptr);
  answers_null("Modem::DeviceServices");
  EXPECT_EQ(port.GetDefault()->DeviceServices(), nullptr);
  answers_null("DeviceServiceList::GetAt");
  EXPECT_EQ(port.GetDefault()->DeviceServices()->GetAt(0), nullptr);
  answers_null("MobileBroadband::CreateDataWriter");
  EXPECT_EQ(port.CreateDataWriter(), nullptr);
  answers_null("DataWriter::DetachBuffer");
  EXPECT_EQ(Payload(kQueryBytes), nullptr);
  answers_null("CommandSession::SendQueryCommandAsync");
  EXPECT_EQ(OpenSession()->SendQueryCommandAsync(1, Payload(kQueryBytes)), nullptr);
  answers_null("CommandSession::SendSetCommandAsync");
  EXPECT_EQ(OpenSession()->SendSetCommandAsync(1, Payload(kSetBytes)), nullptr);
  answers_null("MobileBroadband::CreateAccountWatcher");
  EXPECT_EQ(port.CreateAccountWatcher(), nullptr);

  TestStage::Get().Reset(ModemThatAnswers(ReplyKind::kNoData));
  const auto operation = OpenSession()->SendQueryCommandAsync(1, Payload(kQueryBytes));
  ASSERT_EQ(StatusOf(*operation), AsyncStatus::kCompleted);
  EXPECT_EQ(operation->GetResults()->ResponseData(), nullptr);

  answers_null("CommandOperation::GetResults");
  const auto empty = OpenSession()->SendQueryCommandAsync(1, Payload(kQueryBytes));
  ASSERT_EQ(StatusOf(*empty), AsyncStatus::kCompleted);
  EXPECT_EQ(empty->GetResults(), nullptr);

  ModemDescription absent;
  absent.present = false;
  TestStage::Get().Reset(absent);
  EXPECT_EQ(port.GetDefault(), nullptr);
}

TEST_F(CommandChannelTest, AFailureOfTheModemHasItsStatus) {
  const std::map<ReplyKind, AsyncStatus> statuses{{ReplyKind::kCanceled, AsyncStatus::kCanceled},
                                                  {ReplyKind::kError, AsyncStatus::kError}};
  for (const auto& [kind, status] : statuses) {
    TestStage::Get().Reset(ModemThatAnswers(kind));
    const auto operation = OpenSession()->SendQueryCommandAsync(1, Payload(kQueryBytes));
    EXPECT_EQ(StatusOf(*operation), status);
    EXPECT_EQ(Thrown([&] { operation->GetResults(); }), 0x80004005U);
  }
  TestStage::Get().Reset(ModemThatAnswers(ReplyKind::kStatus, 0x80000001));
  const auto operation = OpenSession()->SendQueryCommandAsync(1, Payload(kQueryBytes));
  ASSERT_EQ(StatusOf(*operation), AsyncStatus::kCompleted);
  EXPECT_EQ(operation->GetResults()->StatusCode(), 0x80000001U);

  TestStage::Get().Reset(ModemThatAnswers(ReplyKind::kHresult, 0x80070005));
  EXPECT_EQ(Thrown([&] { OpenSession()->SendQueryCommandAsync(1, Payload(kQueryBytes)); }),
            0x80070005U);
}

// The handler must be released with the operation that never calls it.
TEST_F(CommandChannelTest, AQueryWithoutAnAnswerLeavesNothingBehind) {
  TestStage::Get().Reset(ModemThatAnswers(ReplyKind::kNever));
  const auto held = std::make_shared<int>();
  {
    const auto operation = OpenSession()->SendQueryCommandAsync(1, Payload(kQueryBytes));
    operation->Completed([held](AsyncStatus) { ++*held; });
    EXPECT_EQ(TestStage::Get().RunAll(), 0U);
    EXPECT_EQ(*held, 0);
    EXPECT_EQ(Thrown([&] { operation->GetResults(); }), 0x8000000EU);
  }
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(CommandChannelTest, AnAnswerMayComeBeforeItsHandlerOrAfterItsCaller) {
  const auto held = std::make_shared<int>();
  const auto handler = [held](AsyncStatus status) {
    EXPECT_EQ(status, AsyncStatus::kCompleted);
    ++*held;
  };
  const auto early = OpenSession()->SendQueryCommandAsync(1, Payload(kQueryBytes));
  TestStage::Get().RunAll();
  early->Completed(handler);
  EXPECT_EQ(*held, 1);
  EXPECT_EQ(Thrown([&] { early->Completed(handler); }), 0x80000018U);

  OpenSession()->SendQueryCommandAsync(1, Payload(kQueryBytes))->Completed(handler);
  TestStage::Get().RunAll();
  EXPECT_EQ(*held, 2);
  EXPECT_EQ(held.use_count(), 2);  // here and in `handler`
}

// Every platform call of the service, in its order.
void WholeLife(platform::MobileBroadband& port) {
  const auto watcher = port.CreateAccountWatcher();
  watcher->AccountAdded([] {});
  watcher->AccountRemoved([] {});
  watcher->EnumerationCompleted([] {});
  watcher->Status();
  watcher->Start();
  const auto modem = port.GetDefault();
  const auto services = modem->DeviceServices();
  for (uint32_t i = 0; i < services->Size(); ++i) services->GetAt(i)->DeviceServiceId();
  const auto session = modem->GetDeviceService(platform::kVendorService)->OpenCommandSession();
  for (const bool set : {false, true}) {
    const auto writer = port.CreateDataWriter();
    writer->WriteBytes(kQueryBytes);
    const auto payload = writer->DetachBuffer();
    const auto operation =
        set ? session->SendSetCommandAsync(1, payload) : session->SendQueryCommandAsync(1, payload);
    operation->Completed([](AsyncStatus) {});
    TestStage::Get().RunAll();
    const auto result = operation->GetResults();
    result->StatusCode();
    const auto data = result->ResponseData();
    data->Length();
    data->Buffer();
  }
  session->CloseSession();
}

TEST_F(CommandChannelTest, EveryCallThatFailsThrows) {
  EXPECT_EQ(Thrown([&] { WholeLife(port); }), 0U);
  for (const virtual_notebook::PortCall& call : virtual_notebook::kPortCalls) {
    if (!call.can_throw) continue;
    const std::string name(call.name);
    TestStage::Get().Reset({}, {{.call = name, .kind = Fault::Kind::kHresult, .code = 0x8007001F}});
    EXPECT_EQ(Thrown([&] { WholeLife(port); }), 0x8007001FU) << name;
    TestStage::Get().Reset({}, {{.call = name, .kind = Fault::Kind::kBadAlloc}});
    EXPECT_THROW(WholeLife(port), std::bad_alloc) << name;
  }
}

}  // namespace

}  // namespace nuvelta::wine
