#include "vlan_mapping.h"

#include <dlfcn.h>

#include <array>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "gpon_vlan_limit.h"
#include "gpon_vlan_match.h"
#include "standalone/confd/format.h"
#include "tests/support/card_fixture.h"

// Last, for its macros.
#include "tests/support/keypaths.h"

// The store's leaf-lists have no repetitions and no values of another type. To see what a validator
// does if ConfD returns such a list, the test replaces it by one of its own.
namespace {

const std::vector<confd_value_t>* list_in_place = nullptr;

int give_list(confd_value_t** values, int* n) {
  *n = static_cast<int>(list_in_place->size());
  *values = static_cast<confd_value_t*>(std::calloc(list_in_place->size(), sizeof(confd_value_t)));
  std::copy(list_in_place->begin(), list_in_place->end(), *values);
  return CONFD_OK;
}

}  // namespace

// Found before the platform's function of the same name, which it calls unless a list is in place.
extern "C" int maapi_get_list_elem(int sock, int thandle, confd_value_t** values, int* n,
                                   const char* fmt, ...) {
  if (list_in_place != nullptr) {
    return give_list(values, n);
  }
  std::va_list arguments;
  va_start(arguments, fmt);
  const std::optional<std::string> path = tarnd::confd::format_path(fmt, arguments);
  va_end(arguments);
  using Function = int (*)(int, int, confd_value_t**, int*, const char*, ...);
  static const auto platform = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "maapi_get_list_elem"));
  return path ? platform(sock, thandle, values, n, "%s", path->c_str()) : CONFD_ERR;
}

namespace tarnd::test {
namespace {

confd_value_t port(std::uint8_t number) {
  confd_value_t value;
  CONFD_SET_UINT8(&value, number);
  return value;
}

class PortLists : public CardFixture {
 protected:
  PortLists() { running(service_profile("sp", vlan_mapping("m", on_ethernet({1})))); }
  ~PortLists() override { list_in_place = nullptr; }

  // Answers of the two validators for the mapping with these ports.
  std::int32_t limit_for(const std::vector<confd_value_t>& ports) {
    open();
    list_in_place = &ports;
    return validate_vlan_limit(sock(), tctx(), &keypath_, nullptr);
  }
  std::int32_t match_for(const std::vector<confd_value_t>& ports) {
    open();
    list_in_place = &ports;
    return validate_vlan_match(sock(), tctx(), &keypath_, nullptr);
  }

 private:
  confd_hkeypath_t keypath_ = mapping_keypath("sp");
};

TEST_F(PortLists, APortListedTwiceCountsTwice) {
  EXPECT_EQ(limit_for(std::vector<confd_value_t>(20, port(1))), CONFD_OK);
  EXPECT_EQ(limit_for(std::vector<confd_value_t>(21, port(1))), CONFD_ERR);
}

TEST_F(PortLists, APortListedTwiceConflictsWithItself) {
  EXPECT_EQ(match_for({port(1), port(2)}), CONFD_OK);
  EXPECT_EQ(match_for({port(1), port(1)}), CONFD_ERR);
}

TEST_F(PortLists, AnEmptyListNamesNoPort) {
  EXPECT_EQ(limit_for({}), CONFD_OK);
  EXPECT_EQ(match_for({}), CONFD_OK);
}

TEST_F(PortLists, ThePortsAfterARefusedOneAreReleasedToo) {
  EXPECT_EQ(match_for({port(1), port(1), port(2)}), CONFD_ERR);
  EXPECT_EQ(calls(PlatformCall::confd_free_value), 3U);
}

using PortListsDeathTest = PortLists;

TEST_F(PortListsDeathTest, APortOfAnotherTypeEndsTheProcess) {
  confd_value_t number;
  CONFD_SET_UINT16(&number, 1);
  constexpr const char* kAssertion = R"(\(&ports\[listpos\]\)->type == C_UINT8)";
  EXPECT_DEATH(limit_for({port(1), number}), kAssertion);
  EXPECT_DEATH(match_for({port(1), number}), kAssertion);
}

TEST_F(PortLists, APortAfterARefusedOneIsNotLookedAt) {
  confd_value_t number;
  CONFD_SET_UINT16(&number, 1);
  EXPECT_EQ(match_for({port(1), port(1), number}), CONFD_ERR);
}

}  // namespace
}  // namespace tarnd::test
