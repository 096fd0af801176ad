#include "tests/contract/kernel_contract.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

#include "device/kernel/kernel.h"
#include "tests/device/scratch_folder.h"
#include "tests/support/fail_plan.h"
#include "tests/support/fake_kernel.h"
#include "tests/support/journal.h"

namespace kelpin::contract {
namespace {

class FakeMaker {
 public:
  platform::KernelObjects& Port() { return kernel_; }
  platform::KernelObjects& Other() { return kernel_; }
  void AwaitWaiters(std::u16string_view name, std::size_t count) {
    kernel_.AwaitWaiters(name, count);
  }

 private:
  test::Journal journal_;
  test::FailPlan failures_;
  test::FakeKernel kernel_{journal_, failures_};
};

class KernelMaker {
 public:
  platform::KernelObjects& Port() { return *kernel_; }
  platform::KernelObjects& Other() { return *other_; }
  void AwaitWaiters(std::u16string_view name, std::size_t count) {
    std::string why;
    const auto folder = device::kernel::SharedFolder::Open(folder_.Path(), why);
    const auto memory = folder->OpenEvent(name);
    while (memory->Block().Waiters() < count) {
      std::this_thread::sleep_for(std::chrono::microseconds(50));
    }
  }

 private:
  static std::unique_ptr<device::kernel::Kernel> Open(const std::filesystem::path& folder) {
    std::string why;
    auto kernel = device::kernel::Kernel::Open(folder, why);
    if (kernel == nullptr) ADD_FAILURE() << why;
    return kernel;
  }

  test::ScratchFolder folder_;
  std::unique_ptr<device::kernel::Kernel> kernel_ = Open(folder_.Path());
  std::unique_ptr<device::kernel::Kernel> other_ = Open(folder_.Path());
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, KernelContract, FakeMaker);
INSTANTIATE_TYPED_TEST_SUITE_P(Kernel, KernelContract, KernelMaker);

}  // namespace
}  // namespace kelpin::contract
