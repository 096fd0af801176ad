#pragma once

#include <string>
#include <vector>

#include "platform/dial_number.h"
#include "platform/mutex.h"
#include "platform/telephone.h"
#include "tests/support/call_text.h"
#include "tests/support/fail_plan.h"
#include "tests/support/journal.h"

namespace kelpin::test {

class FakeTelephone : public platform::Telephone {
 public:
  struct Call {
    std::uint32_t size = 0;
    std::uint32_t flags = 0;
    std::u16string number;
    std::u16string application;
    std::u16string called;
    std::u16string comment;
    bool operator==(const Call&) const = default;
  };

  FakeTelephone(Journal& journal, FailPlan& failures) : journal_(journal), failures_(failures) {}

  int PhoneMakeCall(const platform::PhoneCallRequest& request) override {
    journal_.Add(CallText("PhoneMakeCall", request.destinationAddress, request.calledParty));
    if (failures_.Fails("PhoneMakeCall")) return 0;
    if (request.size != platform::kCallRequestSize ||
        !platform::IsDialNumber(request.destinationAddress)) {
      return 0;
    }
    MutexLock lock(lock_);
    calls_.push_back({request.size, request.flags, std::u16string(request.destinationAddress),
                      std::u16string(request.applicationName), std::u16string(request.calledParty),
                      std::u16string(request.comment)});
    return 1;
  }

  // The calls that were handed over, in order.
  std::vector<Call> Calls() const {
    MutexLock lock(lock_);
    return calls_;
  }

 private:
  Journal& journal_;
  FailPlan& failures_;
  mutable Mutex lock_;
  std::vector<Call> calls_ GUARDED_BY(lock_);
};

}  // namespace kelpin::test
