// Account events, from the fakes up to the service's port.
#include <windows.h>

#include "fakes_test.h"

namespace nuvelta::wine {

namespace {

using platform::WatcherStatus;

struct Heard {
  int added = 0;
  int removed = 0;
  int enumerated = 0;
  DWORD thread = 0;
};

class AccountWatcherTest : public FakesTest {
 protected:
  std::shared_ptr<platform::AccountWatcher> Watch(const std::shared_ptr<Heard>& heard) {
    const auto watcher = port.CreateAccountWatcher();
    EXPECT_EQ(watcher->AccountAdded([heard] {
      ++heard->added;
      heard->thread = GetCurrentThreadId();
      throw std::bad_alloc();  // must stop at the platform
    }),
              1);
    EXPECT_EQ(watcher->AccountRemoved([heard] { ++heard->removed; }), 2);
    EXPECT_EQ(watcher->EnumerationCompleted([heard] { ++heard->enumerated; }), 3);
    return watcher;
  }
};

TEST_F(AccountWatcherTest, PresentAccountsComeFirstAndChangesFollow) {
  TestStage::Get().Reset({}, {}, 2);
  const auto heard = std::make_shared<Heard>();
  auto watcher = Watch(heard);
  EXPECT_EQ(watcher->Status(), WatcherStatus::kCreated);
  TestStage::Get().ChangeAccounts(false);
  watcher->Start();
  EXPECT_EQ(watcher->Status(), WatcherStatus::kStarted);
  EXPECT_EQ(heard->added, 0);

  TestStage::Get().RunAll();
  EXPECT_EQ(watcher->Status(), WatcherStatus::kEnumerationCompleted);
  EXPECT_EQ(heard->added, 1);
  EXPECT_NE(heard->thread, GetCurrentThreadId());
  EXPECT_EQ(heard->enumerated, 1);

  TestStage::Get().ChangeAccounts(true);
  TestStage::Get().ChangeAccounts(false);
  EXPECT_EQ(heard->added, 2);
  EXPECT_EQ(heard->removed, 1);
  EXPECT_EQ(heard->enumerated, 1);

  // The stage still listens on its behalf.
  watcher.reset();
  EXPECT_EQ(heard.use_count(), 1);
  TestStage::Get().ChangeAccounts(true);
  EXPECT_EQ(heard->added, 2);
}

}  // namespace

}  // namespace nuvelta::wine
