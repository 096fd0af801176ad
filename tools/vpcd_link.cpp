#include "tools/vpcd_link.h"

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <system_error>
#include <thread>

namespace kelpin::tools {
namespace {

using device::card::TransportError;
using std::chrono::milliseconds;

constexpr std::uint8_t kPowerOff = 0;
constexpr std::uint8_t kPowerOn = 1;
constexpr std::uint8_t kReset = 2;
constexpr std::uint8_t kTellAtr = 4;

constexpr milliseconds kTryAgain{50};

// What a card says to a command it cannot make out, and to one it got without power.
constexpr std::array<std::uint8_t, 2> kWrongLength = {0x67, 0x00};
constexpr std::array<std::uint8_t, 2> kNoDiagnosis = {0x6F, 0x00};

std::string ErrorText(int code) {
  return std::generic_category().message(code);
}

// -1 with `why` on failure.
int OpenSocket(const addrinfo& addresses, std::string& why) {
  for (const addrinfo* address = &addresses; address != nullptr; address = address->ai_next) {
    const int opened =
        ::socket(address->ai_family, address->ai_socktype | SOCK_CLOEXEC, address->ai_protocol);
    if (opened < 0) continue;
    if (::connect(opened, address->ai_addr, address->ai_addrlen) == 0) {
      const int on = 1;
      ::setsockopt(opened, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
      return opened;
    }
    why = ErrorText(errno);
    ::close(opened);
  }
  return -1;
}

}  // namespace

bool SplitAddress(const std::string& text, std::string& host, std::string& port) {
  const std::size_t colon = text.rfind(':');
  if (colon == std::string::npos || colon == 0) return false;
  std::string name = text.substr(0, colon);
  const std::string number = text.substr(colon + 1);
  if (name.front() == '[') {
    if (name.size() < 3 || name.back() != ']') return false;
    name = name.substr(1, name.size() - 2);
  } else if (name.find(':') != std::string::npos) {
    return false;  // where such an address ends is not to be seen
  }
  const bool digits = std::all_of(number.begin(), number.end(),
                                  [](char digit) { return digit >= '0' && digit <= '9'; });
  if (number.empty() || number.size() > 5 || !digits || std::stoi(number) == 0 ||
      std::stoi(number) > 0xFFFF) {
    return false;
  }
  host = name;
  port = number;
  return true;
}

std::unique_ptr<VpcdLink> VpcdLink::Connect(const std::string& host, const std::string& port,
                                            milliseconds patience, std::string& why) {
  addrinfo hints = {};
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* addresses = nullptr;
  if (const int code = ::getaddrinfo(host.c_str(), port.c_str(), &hints, &addresses); code != 0) {
    why = host + ": " + ::gai_strerror(code);
    return nullptr;
  }
  const auto limit = std::chrono::steady_clock::now() + patience;
  int opened = OpenSocket(*addresses, why);
  while (opened < 0 && std::chrono::steady_clock::now() < limit) {
    std::this_thread::sleep_for(kTryAgain);
    opened = OpenSocket(*addresses, why);
  }
  ::freeaddrinfo(addresses);
  if (opened < 0) {
    why = "no virtual reader listens on " + host + " port " + port + " (" + why +
          "); install the package vsmartcard-vpcd and start pcscd";
    return nullptr;
  }
  const int stop = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (stop < 0) {
    why = ErrorText(errno);
    ::close(opened);
    return nullptr;
  }
  return std::unique_ptr<VpcdLink>(new VpcdLink(opened, stop));
}

VpcdLink::~VpcdLink() {
  Close();
  ::close(stop_);
}

void VpcdLink::Close() {
  if (socket_ >= 0) ::close(socket_);
  socket_ = -1;
}

void VpcdLink::Stop() {
  const std::uint64_t one = 1;
  // A full counter means that it was stopped before.
  static_cast<void>(::write(stop_, &one, sizeof(one)) == sizeof(one));
}

bool VpcdLink::Wait(milliseconds time) const {
  const auto limit = std::chrono::steady_clock::now() + time;
  for (;;) {
    const auto left =
        std::chrono::ceil<milliseconds>(limit - std::chrono::steady_clock::now()).count();
    pollfd stop = {stop_, POLLIN, 0};
    const int ready = ::poll(&stop, 1, static_cast<int>(std::max<decltype(left)>(left, 0)));
    if (ready > 0) return false;
    if (ready == 0) return true;
    if (errno != EINTR) return false;
  }
}

bool VpcdLink::ReceiveBytes(std::span<std::uint8_t> bytes) {
  while (!bytes.empty()) {
    std::array<pollfd, 2> ready = {{{socket_, POLLIN, 0}, {stop_, POLLIN, 0}}};
    if (::poll(ready.data(), ready.size(), -1) < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    if (ready[1].revents != 0) return false;
    // The reader sends length and body apart; without a quick acknowledgement the second one waits
    // some 40 ms for the first one's. The setting holds for one read.
    const int on = 1;
    ::setsockopt(socket_, IPPROTO_TCP, TCP_QUICKACK, &on, sizeof(on));
    const auto received = ::recv(socket_, bytes.data(), bytes.size(), 0);
    if (received < 0 && errno == EINTR) continue;
    if (received <= 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(received));
  }
  return true;
}

bool VpcdLink::Receive(std::vector<std::uint8_t>& body) {
  std::array<std::uint8_t, 2> length = {};
  if (!ReceiveBytes(length)) return false;
  body.assign(static_cast<std::size_t>(length[0] << 8 | length[1]), 0);
  return ReceiveBytes(body);
}

bool VpcdLink::Send(std::span<const std::uint8_t> body) {
  std::vector<std::uint8_t> message = {static_cast<std::uint8_t>(body.size() >> 8),
                                       static_cast<std::uint8_t>(body.size() & 0xFF)};
  message.insert(message.end(), body.begin(), body.end());
  std::span<const std::uint8_t> left = message;
  while (!left.empty()) {
    const auto sent = ::send(socket_, left.data(), left.size(), MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent < 0) return false;
    left = left.subspan(static_cast<std::size_t>(sent));
  }
  return true;
}

VpcdLink::End VpcdLink::Serve(device::card::CardChannel& card, milliseconds delay) {
  std::vector<std::uint8_t> atr;
  if (card.Connect(atr) != TransportError::kNone) return End::kCardLost;
  bool powered = false;  // the reader begins with power on
  std::vector<std::uint8_t> body;
  while (Receive(body)) {
    if (body.size() == 1 && body[0] == kTellAtr) {
      if (!Send(atr)) break;
      continue;
    }
    if (body.size() == 1 && body[0] == kPowerOff) {
      card.Disconnect();
      powered = false;
      continue;
    }
    if (body.size() == 1 && (body[0] == kPowerOn || body[0] == kReset)) {
      powered = card.Connect(atr) == TransportError::kNone;
      if (!powered) return End::kCardLost;
      continue;
    }
    std::vector<std::uint8_t> answer(kNoDiagnosis.begin(), kNoDiagnosis.end());
    if (body.size() < 2) {
      // No command is so short; left without an answer the reader would wait for ever.
      answer.assign(kWrongLength.begin(), kWrongLength.end());
    } else if (powered) {
      const TransportError error = card.Transmit(body, answer);
      // What could not be kept is in the card's own answer.
      if (error != TransportError::kNone && error != TransportError::kStorage) {
        return Stopped() ? End::kStopped : End::kCardLost;
      }
    }
    if (delay.count() > 0 && !Wait(delay)) break;
    if (!Send(answer)) break;
  }
  return Stopped() ? End::kStopped : End::kReaderGone;
}

}  // namespace kelpin::tools
