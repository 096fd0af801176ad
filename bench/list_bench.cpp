// What it costs until the list is shown: card commands and card time for each sample image, and our
// own processor time by the number of rows. Prints tables; judges nothing.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/app_state.h"
#include "bench/card_time.h"
#include "bench/counting_channel.h"
#include "bench/extended_bench.h"
#include "device/card/card_devices.h"
#include "device/card/sim_service.h"
#include "device/kernel/kernel.h"
#include "device/softcard/soft_channel.h"
#include "program.h"
#include "res/ids.h"
#include "tests/support/fake_clock.h"
#include "tests/support/fake_contacts.h"
#include "tests/support/fake_devices.h"
#include "tests/support/fake_log.h"
#include "tests/support/fake_programs.h"
#include "tests/support/fake_radio.h"
#include "tests/support/fake_registry.h"
#include "tests/support/fake_shell.h"
#include "tests/support/fake_sim.h"
#include "tests/support/fake_telephone.h"
#include "tests/support/headless_screen.h"
#include "tests/support/radio_entries.h"

namespace kelpin::bench {
namespace {

namespace fs = std::filesystem;

double ProcessSeconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

struct Shown {
  int rows = 0;
  double seconds = 0;  // of all processors, from the start of the program to the shown list
};

// The whole program on a screen without a display, until the list is there.
Shown RunOnce(platform::SimInterface& sim, platform::RadioInterface& radio,
              platform::Devices& devices, const fs::path& runtime) {
  test::Journal journal;
  test::FailPlan failures;
  test::FakeClock clock(journal);
  test::HeadlessScreen screen(journal, failures);
  test::FakeRegistry registry(journal, failures);
  test::FakeShell shell(journal, failures);
  test::FakePrograms programs(journal, failures);
  test::FakeTelephone telephone(journal, failures);
  test::FakeContacts contacts(journal, failures);
  test::FakeLog log;
  std::string why;
  const auto kernel = device::kernel::Kernel::Open(runtime, why);
  if (kernel == nullptr) {
    std::fprintf(stderr, "%s\n", why.c_str());
    return {};
  }
  Shown shown;
  const double start = ProcessSeconds();
  ProgramHooks hooks;
  hooks.listLoaded = [&](app::AppState& state) {
    shown.seconds = ProcessSeconds() - start;
    shown.rows = state.dialog->List(res::kMainList)->ItemCount();
    state.dialog->PostClose();
  };
  const app::Ports ports{sim,      radio,     devices,  registry, *kernel, shell,
                         programs, telephone, contacts, clock,    log,     screen};
  RunProgram(ports, hooks);
  return shown;
}

struct Image {
  const char* name;
  int used;     // entries, also those the list hides
  int headers;  // files whose header has to be asked once: every EF_ADN, and EF_MSISDN
};

constexpr Image kImages[] = {
    {"sim-250", 120, 2},   {"usim", 180, 3},      {"usim-empty", 0, 2},
    {"usim-full", 250, 2}, {"usim-1000", 900, 5}, {"usim-local", 81, 2},
};

void CardCommands(const fs::path& scratch) {
  std::printf("Card commands until the list is shown\n\n");
  std::printf("%-11s %5s %5s %9s %6s %9s %12s %14s\n", "card", "rows", "used", "commands", "bound",
              "beyond", "9600 bit/s", "20 ms/command");
  for (const Image& image : kImages) {
    const fs::path file = scratch / (std::string(image.name) + ".json");
    fs::copy_file(fs::path(KELPIN_SOURCE_DIR) / "res/cards" / file.filename(), file,
                  fs::copy_options::overwrite_existing);
    std::string why;
    const auto soft = device::softcard::SoftChannel::Open(file.string(), why);
    if (soft == nullptr) {
      std::fprintf(stderr, "%s\n", why.c_str());
      continue;
    }
    CountingChannel channel(*soft);
    device::card::SimService service(channel);
    device::card::CardDevices devices;
    const Shown shown = RunOnce(service, service, devices, scratch);
    const auto commands = static_cast<int>(channel.commands);
    const int bound = image.used + image.headers;
    std::printf("%-11s %5d %5d %9d %6d %9d %10.1f s %12.1f s\n", image.name, shown.rows, image.used,
                commands, bound, commands - bound,
                static_cast<double>(channel.bytes) * kSecondsPerByte,
                commands * kSecondsPerCommand);
  }
  std::printf("\nbound: one READ RECORD for each used entry and one header for each file.\n\n");
}

void OwnTime(const fs::path& scratch) {
  std::printf("Our own processor time until the list is shown (median of 5, all threads)\n\n");
  std::printf("%7s %12s\n", "rows", "ms");
  for (const std::uint32_t rows : {250U, 1000U, 10000U}) {
    test::Journal journal;
    test::FailPlan failures;
    test::FakeSim sim(journal, failures);
    test::FakeRadio radio(journal, failures);
    test::FakeDevices devices(journal, failures);
    sim.SetCapacity(rows);
    for (std::uint32_t index = 1; index <= rows; ++index) {
      const std::string number = "+4930" + std::to_string(2312500000 + index);
      const std::string name = "Name " + std::to_string(index * 7919 % rows);
      sim.SetEntry(index, std::u16string(name.begin(), name.end()),
                   std::u16string(number.begin(), number.end()));
    }
    const auto entries = test::RadioEntries(sim);
    for (const auto& [index, entry] : entries) {
      radio.SetEntry(index, entry);
    }
    std::vector<double> times;
    int shown = 0;
    for (int run = 0; run < 5; ++run) {
      const Shown result = RunOnce(sim, radio, devices, scratch);
      times.push_back(result.seconds * 1000);
      shown = result.rows;
    }
    std::sort(times.begin(), times.end());
    std::printf("%7d %12.1f\n", shown, times[2]);
  }
  std::printf("\nwith the test radio's own cost in it\n\n");
}

}  // namespace
}  // namespace kelpin::bench

int main() {
  std::string scratch = (std::filesystem::temp_directory_path() / "kelpin-bench-XXXXXX").string();
  if (mkdtemp(scratch.data()) == nullptr) {
    std::perror("no scratch folder");
    return 1;
  }
  kelpin::bench::CardCommands(scratch);
  kelpin::bench::ExtendedCosts();
  kelpin::bench::OwnTime(scratch);
  std::filesystem::remove_all(scratch);
  return 0;
}
