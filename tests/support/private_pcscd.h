#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace kelpin::test {

// A smart-card daemon of our own, with two virtual readers, beside one that may serve the machine.
// It listens on a socket of its own and ends with us, however we end. Programs find it by
// PCSCLITE_CSOCK_NAME; a process reads that once.
class PrivatePcscd {
 public:
  // `folder` is for the socket, the configuration and the daemon's log. `reader` names the readers.
  PrivatePcscd(std::filesystem::path folder, std::string reader);
  ~PrivatePcscd();
  PrivatePcscd(const PrivatePcscd&) = delete;
  PrivatePcscd& operator=(const PrivatePcscd&) = delete;

  // The daemon and the driver of the virtual reader.
  static bool Installed();

  // On free ports and on the same socket as before. Clients may connect at once; they wait until
  // the daemon serves. On failure `why` says why. On the thread that lives longest: the daemon ends
  // with the thread that started it.
  bool Start(std::string& why);
  // Ends the daemon with this signal and waits for it. The socket's file stays, as after a crash.
  void Stop(int signal);
  bool Running() const { return process_ > 0; }

  // Where the card of slot 0 or 1 connects.
  std::uint16_t Port(int slot) const { return static_cast<std::uint16_t>(port_ + slot); }
  std::string ReaderName(int slot) const { return reader_ + " 00 0" + std::to_string(slot); }
  std::filesystem::path Socket() const { return folder_ / "pcscd.comm"; }
  std::filesystem::path Log() const { return folder_ / "pcscd.log"; }

 private:
  bool Configure(std::string& why);

  const std::filesystem::path folder_;
  const std::string reader_;
  std::uint16_t port_ = 0;
  pid_t process_ = -1;
};

}  // namespace kelpin::test
