#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace kelpin::device::modem {

// A serial port, or a pseudo-terminal in its place, that is ours alone: 115200 8N1, every byte as
// it is. What comes in is told at once on a thread of the port's own.
class AtPort {
 public:
  // Both are called on the port's thread, `gone` once and as the last; they must not end the port.
  struct Listener {
    std::function<void(std::span<const std::uint8_t> bytes)> received;
    std::function<void()> gone;  // unplugged, or hung up
  };

  // Null when it cannot be opened; `why` says why and what to do.
  static std::unique_ptr<AtPort> Open(const std::string& path, Listener listener, std::string& why);
  // When it returns, nobody is called any more and the port is as it was found.
  ~AtPort();
  AtPort(const AtPort&) = delete;
  AtPort& operator=(const AtPort&) = delete;

  // False when the bytes did not go out in time, or the port has gone. Not on the port's thread.
  // The bytes are wiped when they are out: a PIN may be in them.
  bool Write(std::string bytes, std::chrono::milliseconds patience);

 private:
  struct State;
  explicit AtPort(std::unique_ptr<State> state);

  const std::unique_ptr<State> state_;
};

// The ports that a modem may be on, for a message.
std::string KnownPorts();

}  // namespace kelpin::device::modem
