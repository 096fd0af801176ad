#include "tests/contract/radio_interface_contract.h"
#include "tests/support/fail_plan.h"
#include "tests/support/fake_radio.h"
#include "tests/support/journal.h"

namespace kelpin::contract {
namespace {

class FakeMaker {
 public:
  FakeMaker() {
    for (const KnownEntry& entry : kKnownEntries) {
      radio_.SetEntry(
          entry.index,
          {std::u16string(entry.name), std::u16string(entry.digits), entry.addressType, 1, {}});
    }
    for (const KnownFile& file : KnownFiles()) {
      radio_.SetFile(file.id, {file.recordLength, file.records});
    }
  }
  platform::RadioInterface& Port() { return radio_; }

  void TouchCard() {
    radio_.SetPhonebookChanged(1);
    radio_.Notify(platform::kRilNotifyPhonebookRewritten, nullptr, 0);
    platform::RilEquipmentState state;
    state.readyState = platform::kRilReadyPhonebook;
    radio_.Notify(platform::kRilNotifyEquipmentState, &state, sizeof(state));
  }

 private:
  test::Journal journal_;
  test::FailPlan failures_;
  test::FakeRadio radio_{journal_, failures_};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, RadioInterfaceContract, FakeMaker);

}  // namespace
}  // namespace kelpin::contract
