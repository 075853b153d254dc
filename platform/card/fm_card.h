#pragma once

/* The card platform service: what this card is and what it can do. */

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A slot of the system. Filled by fm_local_slot, otherwise not looked into. */
typedef struct fm_slot {
  uint32_t chassis;
  uint32_t slot;
} fm_slot_t;

/* Opens the service; may be called again. 0, or another number on failure. */
int fm_init(void);

/* Identifies the slot of this card. 0, or another number on failure. */
int fm_local_slot(fm_slot_t* slot);

/* Capabilities. 0 where the card defines it; otherwise another number, and the variable is left as
 * it was. */
/* Is the upstream bandwidth of a PON link checked on this card? */
int fm_scalar_card_tarnd_do_bw_check(const fm_slot_t* slot, bool* flag);
/* Number of PON links that may be configured. */
int fm_scalar_card_tarnd_manageable_pon_links(const fm_slot_t* slot, uint32_t* count);
/* Number of service ports that may be configured. */
int fm_scalar_card_tarnd_max_service_ports(const fm_slot_t* slot, uint32_t* count);
/* Is this an XGS-PON card? */
int fm_scalar_card_tarnd_is_xgspon(const fm_slot_t* slot, bool* flag);

/* A function of the board that gives a count; the argument is 0. */
typedef uint32_t (*fm_board_count_t)(uint32_t argument);

/* The board's function for the number of ONUs per PON link, or of PON links; NULL where it has
 * none. */
fm_board_count_t fm_oper_card_tarnd_get_max_num_onu_per_ponlink_from_board(const fm_slot_t* slot);
fm_board_count_t fm_oper_card_tarnd_get_max_num_ponlink_from_board(const fm_slot_t* slot);

#ifdef __cplusplus
}
#endif
