#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

#include "device/kernel/shared_folder.h"
#include "device/kernel/wait_gate.h"
#include "platform/kernel_objects.h"
#include "platform/mutex.h"

namespace kelpin::device::kernel {

// Named mutexes and events for all processes of this user, and the program's threads. A process
// that is killed, however it held or waited, stops nobody else.
class Kernel final : public platform::KernelObjects {
 public:
  // `runtimeFolder` holds the named objects: a folder of this user's alone that exists. Null when
  // it is not; `why` says what is wrong with it.
  static std::unique_ptr<Kernel> Open(const std::filesystem::path& runtimeFolder, std::string& why);
  ~Kernel() override;

  std::unique_ptr<platform::NamedMutex> CreateMutex(std::u16string_view name, bool initiallyOwned,
                                                    bool& alreadyExists) override;
  // An event may outlive the kernel.
  std::unique_ptr<platform::Event> CreateEvent(std::u16string_view name) override;
  // Whether a named object can be called so: not empty, nor too long for a file's name.
  static bool IsName(std::u16string_view name);
  // Pulses the event of this name; `freed` tells whether somebody waited. False when it cannot be
  // opened.
  bool Pulse(std::u16string_view name, bool& freed);
  // 0 also when the program is ending.
  int CreateThread(std::function<void()> body) override;
  void EndThreads() override;

 private:
  struct Worker {
    std::thread thread;
    std::atomic<bool> ended = false;
  };

  explicit Kernel(std::unique_ptr<SharedFolder> folder) : folder_(std::move(folder)) {}

  const std::unique_ptr<SharedFolder> folder_;
  const std::shared_ptr<WaitGate> gate_ = std::make_shared<WaitGate>();
  Mutex lock_;
  std::list<Worker> workers_ GUARDED_BY(lock_);
};

}  // namespace kelpin::device::kernel
