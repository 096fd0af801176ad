#include "device/contacts/eds/eds_store.h"

#include <utility>

#include "device/contacts/eds/eds_book.h"

namespace kelpin::device::contacts {

EdsStore::EdsStore(std::string book, std::shared_ptr<EdsShared> shared, TroubleListener trouble)
    : book_(std::move(book)), trouble_(std::move(trouble)), shared_(std::move(shared)) {}

EdsStore::~EdsStore() = default;

std::unique_ptr<EdsStore> EdsStore::Open(const std::string& book, std::string& why,
                                         TroubleListener trouble) {
  auto shared = std::make_shared<EdsShared>();
  if (EdsBook::Open(book, shared, why) == nullptr) {
    return nullptr;
  }
  return std::unique_ptr<EdsStore>(new EdsStore(book, std::move(shared), std::move(trouble)));
}

std::shared_ptr<ContactBook> EdsStore::OpenBook() {
  std::string why;
  std::shared_ptr<ContactBook> book = EdsBook::Open(book_, shared_, why, trouble_);
  if (book == nullptr && trouble_) {
    trouble_(why);
  }
  return book;
}

}  // namespace kelpin::device::contacts
