#include "gpon_capabilities.h"

namespace {

using valid::allowed_dynamic_tconts;
using valid::kStaticTconts;

struct Capabilities {
  bool do_bw_check = true;
  std::uint32_t num_onus_per_ponlink = 128;
  std::uint32_t num_ponlinks = 8;
  std::uint32_t num_manageable_ponlinks = 8;
  std::uint32_t max_dynamic_tconts = allowed_dynamic_tconts(true);
  std::uint32_t max_static_tconts = kStaticTconts;
};

Capabilities capabilities;

}  // namespace

void set_do_bw_check(bool enabled) {
  capabilities.do_bw_check = enabled;
  capabilities.max_static_tconts = kStaticTconts;
  capabilities.max_dynamic_tconts = allowed_dynamic_tconts(enabled);
}

bool get_do_bw_check() {
  return capabilities.do_bw_check;
}

void set_num_onus_per_ponlink(std::uint32_t count) {
  capabilities.num_onus_per_ponlink = count;
}

std::uint32_t get_num_onus_per_ponlink() {
  return capabilities.num_onus_per_ponlink;
}

void set_num_ponlinks(std::uint32_t count) {
  capabilities.num_ponlinks = count;
}

std::uint32_t get_num_ponlinks() {
  return capabilities.num_ponlinks;
}

void set_num_manageable_ponlinks(std::uint32_t count) {
  capabilities.num_manageable_ponlinks = count;
}

std::uint32_t get_num_manageable_ponlinks() {
  return capabilities.num_manageable_ponlinks;
}

std::uint32_t valid::max_dynamic_tconts() {
  return capabilities.max_dynamic_tconts;
}

std::uint32_t valid::max_static_tconts() {
  return capabilities.max_static_tconts;
}
