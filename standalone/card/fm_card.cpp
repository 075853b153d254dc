#include "card/fm_card.h"

#include "standalone/card/card_file.h"
#include "standalone/platform_calls.h"

namespace tarnd {
namespace {

constexpr int kDone = 0;
constexpr int kFailed = -1;
constexpr fm_slot_t kLocalSlot = {1, 1};

CardDescription& inserted_card() {
  static CardDescription card = CardDescription::standard();
  return card;
}

// If the card does not define the capability, the caller's variable keeps its value.
template <typename Value>
int answer(PlatformCall call, const std::optional<Value>& capability, Value* result) {
  if (!enter_platform_call(call) || !capability.has_value()) return kFailed;
  *result = *capability;
  return kDone;
}

// The board's functions. The calls below return them only if the card defines the figure.
std::uint32_t board_onus_per_link(std::uint32_t /*argument*/) {
  return inserted_card().onus_per_link.value_or(0);
}

std::uint32_t board_pon_links(std::uint32_t /*argument*/) {
  return inserted_card().pon_links.value_or(0);
}

}  // namespace

void insert_card(const CardDescription& card) {
  inserted_card() = card;
}

}  // namespace tarnd

using tarnd::PlatformCall;

int fm_init() {
  if (!tarnd::enter_platform_call(PlatformCall::fm_init)) return tarnd::kFailed;
  return tarnd::inserted_card().init_fails ? tarnd::kFailed : tarnd::kDone;
}

int fm_local_slot(fm_slot_t* slot) {
  if (!tarnd::enter_platform_call(PlatformCall::fm_local_slot)) return tarnd::kFailed;
  if (tarnd::inserted_card().local_slot_fails) return tarnd::kFailed;
  *slot = tarnd::kLocalSlot;
  return tarnd::kDone;
}

int fm_scalar_card_tarnd_do_bw_check(const fm_slot_t* /*slot*/, bool* flag) {
  return tarnd::answer(PlatformCall::fm_scalar_card_tarnd_do_bw_check,
                       tarnd::inserted_card().bw_check, flag);
}

int fm_scalar_card_tarnd_manageable_pon_links(const fm_slot_t* /*slot*/, std::uint32_t* count) {
  return tarnd::answer(PlatformCall::fm_scalar_card_tarnd_manageable_pon_links,
                       tarnd::inserted_card().manageable_links, count);
}

int fm_scalar_card_tarnd_max_service_ports(const fm_slot_t* /*slot*/, std::uint32_t* count) {
  return tarnd::answer(PlatformCall::fm_scalar_card_tarnd_max_service_ports,
                       tarnd::inserted_card().max_service_ports, count);
}

int fm_scalar_card_tarnd_is_xgspon(const fm_slot_t* /*slot*/, bool* flag) {
  return tarnd::answer(PlatformCall::fm_scalar_card_tarnd_is_xgspon, tarnd::inserted_card().xgspon,
                       flag);
}

fm_board_count_t fm_oper_card_tarnd_get_max_num_onu_per_ponlink_from_board(
    const fm_slot_t* /*slot*/) {
  const bool answers = tarnd::enter_platform_call(
      PlatformCall::fm_oper_card_tarnd_get_max_num_onu_per_ponlink_from_board);
  if (!answers || !tarnd::inserted_card().onus_per_link.has_value()) return nullptr;
  return tarnd::board_onus_per_link;
}

fm_board_count_t fm_oper_card_tarnd_get_max_num_ponlink_from_board(const fm_slot_t* /*slot*/) {
  const bool answers =
      tarnd::enter_platform_call(PlatformCall::fm_oper_card_tarnd_get_max_num_ponlink_from_board);
  if (!answers || !tarnd::inserted_card().pon_links.has_value()) return nullptr;
  return tarnd::board_pon_links;
}
