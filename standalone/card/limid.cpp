#include "card/limid.h"

#include "standalone/platform_calls.h"

struct limid_type {
  int number;
};

namespace {

constexpr limid_type kGpon = {1};
constexpr limid_type kXgspon = {2};

}  // namespace

constinit const limid_type_t limid_type_gpon = &kGpon;
constinit const limid_type_t limid_type_xgspon = &kXgspon;

int limid_type_compare(limid_type_t left, limid_type_t right) {
  tarnd::enter_platform_call(tarnd::PlatformCall::limid_type_compare);
  if (left == nullptr || right == nullptr) return 0;
  return left->number == right->number ? 1 : 0;
}
