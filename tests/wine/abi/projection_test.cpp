// The projection itself: factories and handlers.
#include <combaseapi.h>

#include <atomic>
#include <thread>

#include "fakes_test.h"
#include "platform/windows/winrt/activation.h"
#include "platform/windows/winrt/delegate.h"

namespace nuvelta::wine {

namespace {

using windows::winrt::Delegate;
using windows::winrt::Factory;

TEST(Factories, AFailedLookUpIsTriedAgainAndAGoodOneIsKept) {
  Factory<IActivationFactory> factory(abi::kDataWriterClass);
  EXPECT_EQ(Thrown([&] { factory.Get(); }), static_cast<uint32_t>(REGDB_E_CLASSNOTREG));
  const IActivationFactory* found = nullptr;
  {
    const ClassRegistration registration;
    found = &factory.Get();
  }
  EXPECT_EQ(&factory.Get(), found);
}

// Wine looks up without one; Windows does not.
TEST(Factories, ALookUpBringsAnApartmentForAllThreads) {
  const ClassRegistration registration;
  Factory<IActivationFactory>(abi::kDataWriterClass).Get();
  std::thread([] {
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    EXPECT_EQ(CoGetApartmentType(&type, &qualifier), S_OK);
    EXPECT_EQ(type, APTTYPE_MTA);
    EXPECT_EQ(qualifier, APTTYPEQUALIFIER_IMPLICIT_MTA);
  }).join();
}

// The threads of one round look up at once; all but one must give theirs back.
TEST(Factories, ThreadsShareOne) {
  constexpr int kRounds = 50;
  constexpr int kThreads = 4;
  const ClassRegistration registration;
  const int before = g_live_fakes;
  for (int round = 0; round < kRounds; ++round) {
    Factory<IActivationFactory> factory(abi::kDataWriterClass);
    // No std::latch: this library's waits on an atomic have lost a wake-up here.
    std::atomic<int> missing = kThreads;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([&] {
        --missing;
        while (missing > 0) std::this_thread::yield();
        factory.Get();
      });
    }
    for (std::thread& thread : threads) thread.join();
  }
  EXPECT_EQ(g_live_fakes, before + kRounds);
}

TEST(Delegates, AreAgileAndTranslateWhatTheyThrow) {
  using Handler =
      Delegate<abi::IWatcherHandler, abi::IMobileBroadbandAccountWatcher*, IInspectable*>;
  const auto held = std::make_shared<std::function<void()>>([] {});
  auto handler =
      Handler::Make([held](abi::IMobileBroadbandAccountWatcher*, IInspectable*) { (*held)(); });

  ComPtr<IAgileObject> agile;
  ASSERT_EQ(handler.As(agile), S_OK);
  ComPtr<IUnknown> identity;
  ASSERT_EQ(agile.As(identity), S_OK);
  ComPtr<abi::IWatcherHandler> same;
  EXPECT_EQ(identity.As(same), S_OK);
  EXPECT_EQ(same.Get(), handler.Get());
  ComPtr<IInspectable> inspectable;
  EXPECT_EQ(handler.As(inspectable), E_NOINTERFACE);
  EXPECT_EQ(inspectable.Get(), nullptr);

  EXPECT_EQ(handler->Invoke(nullptr, nullptr), S_OK);
  *held = [] { throw platform::HresultError{0x80070005}; };
  EXPECT_EQ(handler->Invoke(nullptr, nullptr), E_ACCESSDENIED);
  *held = [] { throw std::bad_alloc(); };
  EXPECT_EQ(handler->Invoke(nullptr, nullptr), E_OUTOFMEMORY);
  *held = [] { throw 1; };
  EXPECT_EQ(handler->Invoke(nullptr, nullptr), E_FAIL);

  agile = {};
  identity = {};
  same = {};
  handler = {};
  EXPECT_EQ(held.use_count(), 1);
}

}  // namespace

}  // namespace nuvelta::wine
