// The suites of the SIM and radio interfaces on the card service over a card in a reader.
#include <memory>

#include "tests/card/soft_card.h"
#include "tests/contract/known_image.h"
#include "tests/contract/known_service.h"
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
  }
  ~KnownReaderCard() {
    channel_.reset();
    LastingCard().Use(nullptr);
  }

  device::card::CardChannel& Channel() { return *channel_; }
  void Reset() { OtherProgram(LastingCard().Reader()).Reset(); }

 private:
  device::card::SoftCard card_;
  std::unique_ptr<device::pcsc::PcscChannel> channel_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(CardReader, SimInterfaceContract, SimMaker<KnownReaderCard>);
INSTANTIATE_TYPED_TEST_SUITE_P(CardReader, RadioInterfaceContract, RadioMaker<KnownReaderCard>);

}  // namespace
}  // namespace kelpin::contract
