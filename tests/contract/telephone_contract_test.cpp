#include "tests/contract/telephone_contract.h"

#include <filesystem>

#include "device/desktop/desktop_telephone.h"
#include "tests/device/fake_opener.h"
#include "tests/device/scratch_folder.h"
#include "tests/support/call_text.h"
#include "tests/support/fail_plan.h"
#include "tests/support/fake_telephone.h"
#include "tests/support/journal.h"

namespace kelpin::contract {
namespace {

class FakeTelephoneMaker {
 public:
  static const char* Missing() { return nullptr; }
  platform::Telephone& Port() { return telephone_; }
  std::string NextNumber() {
    const auto calls = telephone_.Calls();
    return next_ < calls.size() ? test::Utf8(calls[next_++].number) : "nothing was handed over";
  }
  void MakeUnreachable() { failures_.FailCallOf("PhoneMakeCall", 1); }

 private:
  test::Journal journal_;
  test::FailPlan failures_;
  test::FakeTelephone telephone_{journal_, failures_};
  std::size_t next_ = 0;
};

// An address as it is read by who opens it (RFC 3986 2.1).
std::string Decoded(const std::string& text) {
  std::string decoded;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '%' && at + 2 < text.size()) {
      decoded.push_back(static_cast<char>(std::stoi(text.substr(at + 1, 2), nullptr, 16)));
      at += 2;
    } else {
      decoded.push_back(text[at]);
    }
  }
  return decoded;
}

class DesktopTelephoneMaker {
 public:
  static const char* Missing() { return nullptr; }
  platform::Telephone& Port() { return telephone_; }
  std::string NextNumber() {
    const std::string opened = opener_.Await();
    const std::string start = "1\ntel:";
    if (!opened.starts_with(start) || !opened.ends_with('\n')) return opened;
    return Decoded(opened.substr(start.size(), opened.size() - start.size() - 1));
  }
  void MakeUnreachable() { std::filesystem::remove(opener_.Program()); }

 private:
  test::ScratchFolder folder_;
  test::FakeOpener opener_{folder_.Path()};
  device::desktop::DesktopTelephone telephone_{opener_.Program()};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TelephoneContract, FakeTelephoneMaker);
INSTANTIATE_TYPED_TEST_SUITE_P(Desktop, TelephoneContract, DesktopTelephoneMaker);

}  // namespace
}  // namespace kelpin::contract
