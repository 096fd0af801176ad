#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "device/softcard/soft_channel.h"
#include "platform/mutex.h"
#include "tools/at_modem.h"
#include "tools/modem_line.h"

namespace kelpin::tools {

struct ModemOptions {
  std::string link;  // to the port; empty: none
  AtModem::Abilities abilities;
  std::chrono::milliseconds delay{0};  // of every answer
  int unsolicited = 0;                 // milliseconds between lines nobody asked for; 0: none
};

// A software card in a modem on a pseudo-terminal, for as long as it serves.
class SoftcardModem {
 public:
  SoftcardModem(device::softcard::SoftChannel& card, const ModemOptions& options)
      : options_(options), modem_(card, options.abilities) {}

  // Prints the port. False: `why` says what to do.
  bool Open(std::string& why);
  // Until Stop.
  void Serve();
  // Any thread.
  void Stop() EXCLUDES(lock_);

 private:
  // False when it was stopped meanwhile.
  bool Wait(std::chrono::milliseconds time) EXCLUDES(lock_);

  const ModemOptions options_;
  AtModem modem_;
  std::unique_ptr<ModemLine> line_;
  Mutex lock_;
  Condition changed_;
  bool stopped_ GUARDED_BY(lock_) = false;
};

}  // namespace kelpin::tools
