#include "tools/softcard_modem.h"

#include <iostream>
#include <thread>

namespace kelpin::tools {

bool SoftcardModem::Open(std::string& why) {
  line_ = ModemLine::Open(options_.link, why);
  if (line_ == nullptr) return false;
  std::cout << line_->Port() << std::endl;
  return true;
}

void SoftcardModem::Serve() {
  std::thread teller;
  if (options_.unsolicited > 0) {
    teller = std::thread([this] {
      while (Wait(std::chrono::milliseconds(options_.unsolicited))) {
        line_->Tell("\r\n+CSQ: 17,99\r\n");
      }
    });
  }
  line_->Serve([this](std::string_view command) {
    std::string answer = modem_.Answer(command);
    static_cast<void>(Wait(options_.delay));
    return answer;
  });
  if (teller.joinable()) teller.join();
}

void SoftcardModem::Stop() {
  const MutexLock hold(lock_);
  stopped_ = true;
  changed_.notify_all();
  if (line_ != nullptr) line_->Stop();
}

bool SoftcardModem::Wait(std::chrono::milliseconds time) {
  const auto until = std::chrono::steady_clock::now() + time;
  const MutexLock hold(lock_);
  while (!stopped_ && std::chrono::steady_clock::now() < until) {
    changed_.wait_until(lock_, until);
  }
  return !stopped_;
}

}  // namespace kelpin::tools
