// The suites of the SIM and radio interfaces on the card service over a card in a reader.
#include <memory>

#include "device/card/sim_service.h"
#include "tests/card/soft_card.h"
#include "tests/contract/known_image.h"
#include "tests/contract/pcsc/reader_fixture.h"
#include "tests/contract/radio_interface_contract.h"
#include "tests/contract/sim_interface_contract.h"

namespace kelpin::contract {
namespace {

class KnownReaderCard {
 public:
  KnownReaderCard() : card_(device::card::SoftCard::FromText(KnownImage().dump(1))) {
    LastingCard().Use(&card_.Channel());
    channel_ = OpenReader(LastingCard().Reader());
    service_ = std::make_unique<device::card::SimService>(*channel_);
  }
  ~KnownReaderCard() {
    service_.reset();
    channel_.reset();
    LastingCard().Use(nullptr);
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
    OtherProgram(LastingCard().Reader()).Reset();
  }

 private:
  device::card::SoftCard card_;
  std::unique_ptr<device::pcsc::PcscChannel> channel_;
  std::unique_ptr<device::card::SimService> service_;
};

class SimMaker {
 public:
  platform::SimInterface& Port() { return card_.Service(); }

 private:
  KnownReaderCard card_;
};

class RadioMaker {
 public:
  platform::RadioInterface& Port() { return card_.Service(); }
  void TouchCard() { card_.Touch(); }

 private:
  KnownReaderCard card_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(CardReader, SimInterfaceContract, SimMaker);
INSTANTIATE_TYPED_TEST_SUITE_P(CardReader, RadioInterfaceContract, RadioMaker);

}  // namespace
}  // namespace kelpin::contract
