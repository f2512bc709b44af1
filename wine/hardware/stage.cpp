// The story as the fake mobile-broadband classes see it.
#include <thread>
#include <utility>

#include "wine/hardware/modem_stage.h"
#include "wine/hardware/played_story.h"
#include "wine/hardware/story_clock.h"

namespace nuvelta::wine {

namespace {

class StoryStage final : public ModemStage {
 public:
  std::optional<virtual_notebook::Fault> Count(virtual_notebook::KnownCall call) override {
    return PlayedStory::Current()->Count(call);
  }
  virtual_notebook::ModemDescription Modem() override {
    return PlayedStory::Current()->Modem().Description();
  }
  virtual_notebook::ModemReply Execute(bool set, uint32_t command_id,
                                       std::vector<uint8_t> payload) override {
    return PlayedStory::Current()->Execute(set, command_id, std::move(payload));
  }
  void RunLater(Duration after, std::function<void()> work) override {
    StoryClock::Get().SpawnLater(after, std::move(work));
  }
  uint32_t Accounts() override { return PlayedStory::Current()->Accounts(); }
  void ListenToAccounts(std::function<void(bool added)> listener) override {
    PlayedStory::Current()->ListenToAccounts(std::move(listener));
  }
};

// No story is played, and the service runs in real time: a notebook without a modem.
class StillStage final : public ModemStage {
 public:
  std::optional<virtual_notebook::Fault> Count(virtual_notebook::KnownCall /*call*/) override {
    return {};
  }
  virtual_notebook::ModemDescription Modem() override {
    virtual_notebook::ModemDescription modem;
    modem.present = false;
    return modem;
  }
  virtual_notebook::ModemReply Execute(bool /*set*/, uint32_t /*command_id*/,
                                       std::vector<uint8_t> /*payload*/) override {
    return {};
  }
  void RunLater(Duration after, std::function<void()> work) override {
    std::thread([after, work = std::move(work)] {
      std::this_thread::sleep_for(after);
      work();
    }).detach();
  }
  uint32_t Accounts() override { return 0; }
  void ListenToAccounts(std::function<void(bool added)> /*listener*/) override {}
};

ModemStage* MakeStage() {
  if (PlayedStory::HasStory()) return new StoryStage;
  return new StillStage;
}

}  // namespace

ModemStage& Stage() {
  static ModemStage* const stage = MakeStage();
  return *stage;
}

}  // namespace nuvelta::wine
