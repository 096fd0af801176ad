#include "device/contacts/eds/eds_store.h"

#include <utility>

#include "device/contacts/eds/eds_book.h"

namespace kelpin::device::contacts {

EdsStore::EdsStore(std::string book, std::shared_ptr<EdsShared> shared)
    : book_(std::move(book)), shared_(std::move(shared)) {}

EdsStore::~EdsStore() = default;

std::unique_ptr<EdsStore> EdsStore::Open(const std::string& book, std::string& why) {
  auto shared = std::make_shared<EdsShared>();
  if (EdsBook::Open(book, shared, why) == nullptr) {
    return nullptr;
  }
  return std::unique_ptr<EdsStore>(new EdsStore(book, std::move(shared)));
}

std::shared_ptr<ContactBook> EdsStore::OpenBook() {
  std::string why;
  return EdsBook::Open(book_, shared_, why);
}

}  // namespace kelpin::device::contacts
