// The suites of the SIM and radio interfaces on the card service over a software card.
#include <fstream>
#include <string>
#include <thread>

#include "device/card/sim_service.h"
#include "device/softcard/soft_channel.h"
#include "tests/card/soft_card.h"
#include "tests/contract/known_image.h"
#include "tests/contract/radio_interface_contract.h"
#include "tests/contract/sim_interface_contract.h"

namespace kelpin::contract {
namespace {

class KnownSoftCard {
 public:
  KnownSoftCard() {
    const std::string file = (folder_.Path() / "card.json").string();
    std::ofstream(file) << KnownImage().dump(1);
    std::string error;
    channel_ = device::softcard::SoftChannel::Open(file, error);
    EXPECT_NE(channel_, nullptr) << error;
    service_ = std::make_unique<device::card::SimService>(*channel_);
  }

  device::card::SimService& Service() { return *service_; }

  // Another program resets the card while it is in use.
  void Touch() {
    platform::SimHandle sim = 0;
    ASSERT_EQ(service_->SimInitialize(0, nullptr, nullptr, sim), platform::SimResult::kOk);
    std::uint32_t used = 0;
    std::uint32_t total = 0;
    EXPECT_EQ(service_->SimGetPhonebookStatus(sim, platform::kSimPhonebookStorageSim, used, total),
              platform::SimResult::kOk);
    EXPECT_EQ(service_->SimDeinitialize(sim), platform::SimResult::kOk);
    while (!channel_->Reset()) std::this_thread::yield();
  }

 private:
  device::card::ScratchFolder folder_;
  std::unique_ptr<device::softcard::SoftChannel> channel_;
  std::unique_ptr<device::card::SimService> service_;
};

class SimMaker {
 public:
  platform::SimInterface& Port() { return card_.Service(); }

 private:
  KnownSoftCard card_;
};

class RadioMaker {
 public:
  platform::RadioInterface& Port() { return card_.Service(); }
  void TouchCard() { card_.Touch(); }

 private:
  KnownSoftCard card_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(CardService, SimInterfaceContract, SimMaker);
INSTANTIATE_TYPED_TEST_SUITE_P(CardService, RadioInterfaceContract, RadioMaker);

}  // namespace
}  // namespace kelpin::contract
