// What a card in a reader costs: commands for each operation, and the time of a list beside a bare
// loop of READ RECORD, through a smart-card daemon with a virtual reader. Prints tables; judges
// nothing.

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "device/card/sim_service.h"
#include "tests/card/radio_client.h"
#include "tests/card/sim_client.h"
#include "tests/card/soft_card.h"
#include "tests/contract/pcsc/reader_fixture.h"

namespace kelpin::bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kRuns = 5;
constexpr std::uint32_t kRecords = 250;

double Milliseconds(const std::function<void()>& work) {
  const auto start = Clock::now();
  work();
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// One sample card in the reader, with the service on it.
struct Bench {
  explicit Bench(const std::string& sample) : card(sample) {
    contract::LastingCard().Use(&card.Channel());
    channel = contract::OpenReader(contract::LastingCard().Reader());
    service = std::make_unique<device::card::SimService>(*channel);
    sim = std::make_unique<device::card::SimClient>(*service);
    radio = std::make_unique<device::card::RadioClient>(*service);
  }
  ~Bench() {
    radio.reset();
    sim.reset();
    service.reset();
    channel.reset();
    contract::LastingCard().Use(nullptr);
  }
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;

  std::uint64_t Commands(const std::function<void()>& work) {
    const std::uint64_t before = card.Channel().CommandCount();
    work();
    return card.Channel().CommandCount() - before;
  }

  device::card::SoftCard card;
  std::unique_ptr<device::pcsc::PcscChannel> channel;
  std::unique_ptr<device::card::SimService> service;
  std::unique_ptr<device::card::SimClient> sim;
  std::unique_ptr<device::card::RadioClient> radio;
};

void CommandsOfOperations() {
  std::printf("Card commands of each operation through a reader (T=0, answers fetched)\n\n");
  std::printf("%-11s %8s %8s %8s %8s %8s\n", "card", "connect", "list", "read", "write", "delete");
  for (const char* sample : {"sim-250", "usim", "usim-full", "usim-1000"}) {
    Bench bench(sample);
    std::uint32_t used = 0;
    std::uint32_t total = 0;
    bool done = true;
    const auto connect = bench.Commands(
        [&] { done = bench.sim->Status(used, total) == platform::SimResult::kOk && done; });
    const auto list = bench.Commands(
        [&] { done = bench.radio->ReadEntries(1, total).code == platform::kRilResultOk && done; });
    const auto read = bench.Commands([&] { bench.sim->Text(1); });
    const auto write = bench.Commands([&] {
      done = bench.sim->Write(1, u"Bench", u"+4930123") == platform::SimResult::kOk && done;
    });
    const auto erase =
        bench.Commands([&] { done = bench.sim->Delete(1) == platform::SimResult::kOk && done; });
    std::printf("%-11s %8llu %8llu %8llu %8llu %8llu%s\n", sample,
                static_cast<unsigned long long>(connect), static_cast<unsigned long long>(list),
                static_cast<unsigned long long>(read), static_cast<unsigned long long>(write),
                static_cast<unsigned long long>(erase), done ? "" : "  (an operation failed)");
  }
  std::printf("\nread: an entry of the list, which is known already.\n\n");
}

void TimeOfAList() {
  std::vector<double> bare;
  std::vector<double> ours;
  for (int run = 0; run < kRuns; ++run) {
    Bench bench("usim-full");
    {
      contract::OtherProgram raw(contract::LastingCard().Reader());
      raw.Transmit({0x00, 0xA4, 0x08, 0x04, 0x06, 0x7F, 0x10, 0x5F, 0x3A, 0x4F, 0x3A});
      bare.push_back(Milliseconds([&] {
        for (std::uint32_t record = 1; record <= kRecords; ++record) {
          raw.Transmit({0x00, 0xB2, static_cast<std::uint8_t>(record), 0x04, 0x1E});
        }
      }));
    }
    std::uint32_t used = 0;
    std::uint32_t total = 0;
    if (bench.sim->Status(used, total) != platform::SimResult::kOk) continue;
    ours.push_back(Milliseconds([&] { bench.radio->ReadEntries(1, kRecords); }));
  }
  if (bare.empty() || ours.empty()) {
    std::printf("The card could not be read\n\n");
    return;
  }
  std::printf("Time of %u records through a reader (median of %d)\n\n", kRecords, kRuns);
  std::printf("%-28s %8.1f ms\n", "bare loop of READ RECORD", Median(bare));
  std::printf("%-28s %8.1f ms\n", "list of the card", Median(ours));
  std::printf("%-28s %8.2f\n\n", "ratio", Median(ours) / Median(bare));
}

}  // namespace
}  // namespace kelpin::bench

int main() {
  if (!kelpin::test::PrivatePcscd::Installed()) {
    std::printf("Card readers: pcscd and vsmartcard-vpcd are not installed\n\n");
    return 0;
  }
  kelpin::bench::CommandsOfOperations();
  kelpin::bench::TimeOfAList();
  return 0;
}
