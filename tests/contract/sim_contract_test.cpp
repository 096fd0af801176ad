#include "tests/contract/sim_interface_contract.h"
#include "tests/support/fail_plan.h"
#include "tests/support/fake_sim.h"
#include "tests/support/journal.h"

namespace kelpin::contract {
namespace {

class FakeMaker {
 public:
  FakeMaker() {
    sim_.SetCapacity(kKnownTotal);
    sim_.SetLengths(kKnownMaxAddress, kKnownMaxText);
    sim_.SetSms(kKnownSmsUsed, kKnownSmsTotal);
    for (const KnownEntry& entry : kKnownEntries) {
      sim_.SetEntry(entry.index, entry.name, entry.number);
    }
  }
  platform::SimInterface& Port() { return sim_; }

 private:
  test::Journal journal_;
  test::FailPlan failures_;
  test::FakeSim sim_{journal_, failures_};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, SimInterfaceContract, FakeMaker);

}  // namespace
}  // namespace kelpin::contract
