#pragma once

#include "tests/support/fail_plan.h"
#include "tests/support/fake_clock.h"
#include "tests/support/fake_devices.h"
#include "tests/support/fake_kernel.h"
#include "tests/support/fake_radio.h"
#include "tests/support/fake_sim.h"
#include "tests/support/journal.h"

namespace kelpin::test {

// The ports that the card's sessions stand on. Waits end by the bench's clock.
struct SimBench {
  Journal journal;
  FailPlan failures;
  FakeClock clock{journal};
  FakeKernel kernel{journal, failures, &clock};
  FakeSim sim{journal, failures};
  FakeRadio radio{journal, failures};
  FakeDevices devices{journal, failures};
};

}  // namespace kelpin::test
