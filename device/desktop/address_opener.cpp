#include "device/desktop/address_opener.h"

#include <chrono>
#include <utility>

#include "device/desktop/detached_process.h"
#include "platform/mutex.h"

namespace kelpin::device::desktop {
namespace {

using Time = std::chrono::steady_clock;

// Some openers stay until the opened program ends; what that ends with says nothing of the opening.
constexpr std::chrono::seconds kOpeningTime(10);

}  // namespace

// Outlives the opener while a process runs that it started.
struct AddressOpener::Listener {
  Mutex lock;
  Failed failed GUARDED_BY(lock);

  void Tell(const std::string& uri, int code) {
    const MutexLock hold(lock);
    if (failed) failed(uri, code);
  }
  void Close() {
    const MutexLock hold(lock);
    failed = nullptr;
  }
};

AddressOpener::AddressOpener(std::string program, Failed failed)
    : program_(std::move(program)), listener_(std::make_shared<Listener>()) {
  const MutexLock hold(listener_->lock);
  listener_->failed = std::move(failed);
}

AddressOpener::~AddressOpener() {
  listener_->Close();
}

bool AddressOpener::Open(const std::string& uri) const {
  const Time::time_point start = Time::now();
  return StartDetached({program_, uri}, [listener = listener_, uri, start](int code) {
    if (code > 0 && Time::now() - start < kOpeningTime) listener->Tell(uri, code);
  });
}

}  // namespace kelpin::device::desktop
