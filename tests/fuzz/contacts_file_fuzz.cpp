// A contacts file of somebody else's making: it is refused and left as it is, or it can be read,
// changed and searched without harm.
// Links: kelpin_contacts_sqlite

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "device/contacts/sqlite/sqlite_store.h"
#include "tests/device/contacts/memory_disk.h"
#include "tests/device/scratch_folder.h"

namespace {

using kelpin::device::contacts::ContactRecord;
using kelpin::device::contacts::ContactTextSet;
using kelpin::device::contacts::SqliteStore;

void Expect(bool truth) {
  if (!truth) std::abort();
}

void Use(SqliteStore& store) {
  const auto book = store.OpenBook();
  if (book == nullptr) return;
  std::vector<std::int32_t> numbers;
  std::vector<std::optional<ContactRecord>> records;
  if (Succeeded(book->Numbers(numbers))) {
    Expect(std::is_sorted(numbers.begin(), numbers.end()));
    Expect(numbers.empty() || numbers.front() > 0);
    if (Succeeded(book->Read(numbers, records))) Expect(records.size() == numbers.size());
  }
  std::int32_t number = 0;
  std::int32_t position = 0;
  std::string phone;
  static_cast<void>(book->Find("Ann", number, position));
  static_cast<void>(book->CompanyPhone(1, phone));
  ContactRecord record;
  record.fill("text");
  ContactTextSet all;
  all.set();
  if (Succeeded(book->Add(record, number))) Expect(number > 0);
  static_cast<void>(book->Change(1, record, all));
  static_cast<void>(book->Delete(number));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const kelpin::test::ScratchFolder folder;
  const std::string path = folder / "contacts.db";
  for (const char* file : {"", "-wal", "-shm", "-journal"}) {
    std::filesystem::remove(path + file);
  }
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  kelpin::test::WriteText(path, bytes);
  std::string why;
  const auto store = SqliteStore::Open(path, why);
  if (store != nullptr) {
    Use(*store);
  } else {
    Expect(!why.empty());
    Expect(kelpin::test::ReadText(path) == bytes);
  }
  return 0;
}
