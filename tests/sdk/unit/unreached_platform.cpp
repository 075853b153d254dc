// What the plug-in calls and no test here reaches. It must be there when the plug-in is loaded, so
// it is: by name only, which is all that C linkage knows. No header is included on purpose.

#include <cstdlib>

#define UNREACHED(name)                 \
  extern "C" [[noreturn]] void name() { \
    std::abort();                       \
  }

UNREACHED(cdb_get_str)
UNREACHED(confd_decrypt)
UNREACHED(confd_hash2str)
UNREACHED(confd_max_object_size)
UNREACHED(fm_init)
UNREACHED(fm_local_slot)
UNREACHED(fm_oper_card_tarnd_get_max_num_onu_per_ponlink_from_board)
UNREACHED(fm_oper_card_tarnd_get_max_num_ponlink_from_board)
UNREACHED(fm_scalar_card_tarnd_do_bw_check)
UNREACHED(fm_scalar_card_tarnd_is_xgspon)
UNREACHED(fm_scalar_card_tarnd_manageable_pon_links)
UNREACHED(fm_scalar_card_tarnd_max_service_ports)
UNREACHED(maapi_get_list_elem)
UNREACHED(maapi_get_objects)
UNREACHED(maapi_get_str_elem)
UNREACHED(maapi_get_values)
UNREACHED(maapi_xpath_eval_expr)
UNREACHED(qzconfd_config_session_end)
UNREACHED(qzconfd_config_session_start)
UNREACHED(qzmw_gen_fault)
UNREACHED(qzmw_print_backtrace)
UNREACHED(sdk_cdb_read)
UNREACHED(sdk_find_node)
UNREACHED(sdk_install_keys)
UNREACHED(sdk_iterate)
