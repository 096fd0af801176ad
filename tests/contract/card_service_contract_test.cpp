// The suites of the SIM and radio interfaces on the card service over a software card.
#include <thread>

#include "tests/card/soft_card.h"
#include "tests/contract/known_image.h"
#include "tests/contract/known_service.h"
#include "tests/contract/radio_interface_contract.h"
#include "tests/contract/sim_interface_contract.h"

namespace kelpin::contract {
namespace {

class KnownSoftCard {
 public:
  device::card::CardChannel& Channel() { return card_.Channel(); }
  void Reset() {
    while (!card_.Channel().Reset()) std::this_thread::yield();
  }

 private:
  device::card::SoftCard card_ = device::card::SoftCard::FromText(KnownImage().dump(1));
};

INSTANTIATE_TYPED_TEST_SUITE_P(CardService, SimInterfaceContract, SimMaker<KnownSoftCard>);
INSTANTIATE_TYPED_TEST_SUITE_P(CardService, RadioInterfaceContract, RadioMaker<KnownSoftCard>);

}  // namespace
}  // namespace kelpin::contract
