#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "device/contacts/contact_book.h"
#include "device/contacts/sqlite/database.h"
#include "device/contacts/trouble.h"

namespace kelpin::device::contacts {

// A session on a contacts file.
class SqliteBook final : public ContactBook {
 public:
  // The file is there and was found to be ours. Null when it is not any more, or cannot be had:
  // `why` says why and what to do. What fails to be saved later is told to `trouble`.
  static std::shared_ptr<SqliteBook> Open(const std::string& path, std::string& why,
                                          TroubleListener trouble = {});
  SqliteBook(std::string path, TroubleListener trouble);

  platform::ComResult Numbers(std::vector<std::int32_t>& numbers) override;
  platform::ComResult Read(std::span<const std::int32_t> numbers,
                           std::vector<std::optional<ContactRecord>>& records) override;
  std::uint64_t Version() override;
  platform::ComResult Exists(std::int32_t number) override;
  platform::ComResult CompanyPhone(std::int32_t number, std::string& phone) override;
  platform::ComResult Find(std::string_view fileAs, std::int32_t& number,
                           std::int32_t& position) override;
  platform::ComResult Add(const ContactRecord& record, std::int32_t& number) override;
  platform::ComResult Change(std::int32_t number, const ContactRecord& record,
                             const ContactTextSet& changed) override;
  platform::ComResult Delete(std::int32_t number) override;

  // All of them or none.
  platform::ComResult AddAll(std::span<const ContactRecord> records);

 private:
  // Tells of others' changes.
  std::int64_t DataVersion();
  platform::ComResult PositionOf(std::int32_t number, std::int32_t& position);
  // Runs a statement that gives no rows.
  platform::ComResult Finish(Statement& statement);
  // Notes why the last call failed.
  platform::ComResult Fail(std::string_view english);

  const std::string path_;
  TroubleNote trouble_;
  Database database_;
  // All numbers, ascending, as long as the data version is the one they were taken at.
  std::vector<std::int32_t> known_;
  std::int64_t knownAt_ = -1;
  // Prepared when they are first needed.
  Statement numbers_;
  Statement read_;
  Statement version_;
  Statement exists_;
  Statement companyPhone_;
  Statement find_;
  Statement add_;
  Statement delete_;
};

}  // namespace kelpin::device::contacts
