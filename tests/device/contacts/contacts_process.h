#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "device/contacts/sqlite/sqlite_store.h"

namespace kelpin::test {

// A contact's name is its content here.
inline device::contacts::ContactRecord Named(const std::string& name) {
  device::contacts::ContactRecord record;
  record[device::contacts::TextIndex(platform::ContactProperty::kFileAs)] = name;
  record[device::contacts::TextIndex(platform::ContactProperty::kEmail3Address)] = name + "@x";
  return record;
}

inline std::unique_ptr<device::contacts::SqliteStore> OpenContacts(const std::string& path) {
  std::string why;
  auto store = device::contacts::SqliteStore::Open(path, why);
  EXPECT_NE(store, nullptr) << why;
  return store;
}

// What is in the file: name by number. Every contact is checked to be whole.
inline std::map<std::int32_t, std::string> ContactsIn(const std::string& path) {
  std::map<std::int32_t, std::string> found;
  const auto store = OpenContacts(path);
  if (store == nullptr) return found;
  const auto book = store->OpenBook();
  std::vector<std::int32_t> numbers;
  std::vector<std::optional<device::contacts::ContactRecord>> records;
  EXPECT_EQ(book->Numbers(numbers), platform::ComResult::kOk);
  EXPECT_EQ(book->Read(numbers, records), platform::ComResult::kOk);
  EXPECT_EQ(numbers.size(), records.size());
  for (std::size_t i = 0; i < records.size() && i < numbers.size(); ++i) {
    const device::contacts::ContactRecord& record = *records[i];
    const std::string& name =
        record[device::contacts::TextIndex(platform::ContactProperty::kFileAs)];
    EXPECT_EQ(record, Named(name));
    found[numbers[i]] = name;
  }
  return found;
}

// What a process tells before it ends, or is ended.
struct Report {
  char what = 0;
  std::int32_t number = 0;
};

// Runs `work` in a process of its own, which tells reports as it goes.
class WorkProcess {
 public:
  using Tell = std::function<void(char what, std::int32_t number)>;

  explicit WorkProcess(const std::function<void(const Tell&)>& work) {
    int ends[2] = {-1, -1};
    EXPECT_EQ(pipe(ends), 0);
    process_ = fork();
    if (process_ == 0) {
      close(ends[0]);
      work([&ends](char what, std::int32_t number) {
        Report report;
        report.what = what;
        report.number = number;
        if (write(ends[1], &report, sizeof report) != sizeof report) _exit(1);
      });
      _exit(0);
    }
    close(ends[1]);
    reports_ = ends[0];
  }
  ~WorkProcess() {
    End();
    close(reports_);
  }
  WorkProcess(const WorkProcess&) = delete;
  WorkProcess& operator=(const WorkProcess&) = delete;

  // False when the process has ended and told all.
  bool Next(Report& report) {
    ssize_t got = 0;
    do {
      got = read(reports_, &report, sizeof report);
    } while (got < 0 && errno == EINTR);
    return got == sizeof report;
  }

  void Kill() { kill(process_, SIGKILL); }

  void End() {
    if (process_ <= 0) return;
    int status = 0;
    while (waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    process_ = -1;
  }

 private:
  pid_t process_ = -1;
  int reports_ = -1;
};

}  // namespace kelpin::test
