#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "tests/support/fake_radio.h"
#include "tests/support/fake_sim.h"

namespace kelpin::test {

// A SIM's entries as the radio's bulk reads give them, so that both ports show one card:
//   radio.SetEntrySource([&sim] { return RadioEntries(sim); });
inline std::map<std::uint32_t, FakeRadio::Entry> RadioEntries(const FakeSim& sim) {
  std::map<std::uint32_t, FakeRadio::Entry> entries;
  for (const auto& [index, entry] : sim.Entries()) {
    FakeRadio::Entry& out = entries[index];
    out.name = entry.text;
    out.digits = entry.address;
    out.addressType =
        out.digits.find(u'+') == std::u16string::npos ? 0 : platform::kAddressTypeInternational;
    std::erase(out.digits, u'+');
  }
  return entries;
}

}  // namespace kelpin::test
