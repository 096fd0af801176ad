#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "device/card/card_channel.h"
#include "device/pcsc/pcsc_channel.h"
#include "device/pcsc/pcsc_session.h"
#include "device/softcard/soft_channel.h"
#include "platform/mutex.h"
#include "tests/support/private_pcscd.h"
#include "tools/vpcd_link.h"

namespace kelpin::contract {

// The daemon that serves every test of this program; started with the first.
class Daemon {
 public:
  static test::PrivatePcscd& Get();
  // Ends it with `signal`, if it runs, and starts another one on the same socket.
  static void Restart(int signal);
};

// Another program with the card: plain calls, judged by nobody.
class OtherProgram {
 public:
  explicit OtherProgram(const std::string& reader);
  ~OtherProgram();
  OtherProgram(const OtherProgram&) = delete;
  OtherProgram& operator=(const OtherProgram&) = delete;

  void Reset();
  void Begin();
  void End();
  // The answer with its status word; empty when there was none.
  std::vector<std::uint8_t> Transmit(std::vector<std::uint8_t> command);

 private:
  device::pcsc::Context context_;
  SCARDHANDLE card_ = 0;
  DWORD protocol_ = 0;
};

// Whether a card is in the reader, as the daemon says; waits a minute at most until it is so.
bool AwaitCard(const std::string& reader, bool present);

// What becomes of a command that the reader hands to the card.
enum class Fate {
  kAnswered,
  kPulledBefore,  // the card is pulled out before it carries the command out
  kPulledAfter,   // and after, before it answers
  kSilent,        // the card does not answer until Speak
};

// A card, or one after the other, in a virtual reader. To the reader it is one and the same card
// until it is removed.
class ReaderCard final : private device::card::CardChannel {
 public:
  using Plan = std::function<Fate(std::span<const std::uint8_t> command)>;

  explicit ReaderCard(int slot) : slot_(slot) {}
  ~ReaderCard() override;

  // `card` in place of the one before; null: one that answers every command with a failure. Does
  // nothing to the reader.
  void Use(device::card::CardChannel* card);
  void SetPlan(Plan plan);
  // Both return when the daemon has noticed.
  void Insert();
  void Remove();
  // Out and in again before the daemon looks.
  void Flick();
  void Speak();
  std::string Reader() const { return Daemon::Get().ReaderName(slot_); }
  // The slot without a wait for the daemon, and with a card that was pulled.
  void Plug();
  void Unplug();

 private:
  device::card::TransportError Connect(std::vector<std::uint8_t>& atr) override;
  void Disconnect() override;
  device::card::TransportError Transmit(std::span<const std::uint8_t> command,
                                        std::vector<std::uint8_t>& response) override;
  device::card::TransportError BeginTransaction() override;
  void EndTransaction() override {}
  void SetListener(device::card::CardChannelListener*) override {}
  std::string Description() const override { return "card in slot"; }

  const int slot_;
  std::unique_ptr<tools::VpcdLink> link_;
  std::thread thread_;

  Mutex lock_;
  Condition changed_;
  device::card::CardChannel* card_ GUARDED_BY(lock_) = nullptr;
  Plan plan_ GUARDED_BY(lock_);
  bool silent_ GUARDED_BY(lock_) = false;
  std::vector<std::uint8_t> atr_ GUARDED_BY(lock_) = {0x3B, 0x00};
};

// The card that stays in slot 0 from test to test.
ReaderCard& LastingCard();

// The channel to a reader; a failure when there is none.
std::unique_ptr<device::pcsc::PcscChannel> OpenReader(const std::string& reader,
                                                      const device::pcsc::Patience& patience = {});

// Skips, with a message, on a machine without the daemon.
#define KELPIN_NEEDS_PCSCD()                                       \
  if (!::kelpin::test::PrivatePcscd::Installed()) {                \
    GTEST_SKIP() << "pcscd and vsmartcard-vpcd are not installed"; \
  }                                                                \
  static_cast<void>(0)

}  // namespace kelpin::contract
