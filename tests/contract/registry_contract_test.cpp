#include "tests/contract/registry_contract.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "device/registry/text_registry.h"
#include "tests/device/scratch_folder.h"
#include "tests/support/fail_plan.h"
#include "tests/support/fake_registry.h"
#include "tests/support/journal.h"

namespace kelpin::contract {
namespace {

class FakeMaker {
 public:
  platform::Registry& Port() { return registry_; }

 private:
  test::Journal journal_;
  test::FailPlan failures_;
  test::FakeRegistry registry_{journal_, failures_};
};

class TextMaker {
 public:
  TextMaker() {
    std::string why;
    registry_ = device::registry::TextRegistry::Open(folder_ / "registry.reg", {}, why);
    if (registry_ == nullptr) ADD_FAILURE() << why;
  }
  platform::Registry& Port() { return *registry_; }

 private:
  test::ScratchFolder folder_;
  std::unique_ptr<device::registry::TextRegistry> registry_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, RegistryContract, FakeMaker);
INSTANTIATE_TYPED_TEST_SUITE_P(Text, RegistryContract, TextMaker);

}  // namespace
}  // namespace kelpin::contract
