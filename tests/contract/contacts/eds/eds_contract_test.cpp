#include "tests/contract/contacts/contacts_object_contract.h"
#include "tests/contract/contacts/contacts_text_contract.h"
#include "tests/contract/contacts/eds/eds_fixture.h"

namespace kelpin::contract {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(Eds, ContactsObjectContract, EdsMaker);
INSTANTIATE_TYPED_TEST_SUITE_P(Eds, ContactsTextContract, EdsMaker);

}  // namespace
}  // namespace kelpin::contract
