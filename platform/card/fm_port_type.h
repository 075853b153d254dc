#pragma once

/* The kinds of PON ports, by the card's own numbers. */
enum fm_port_type { FM_PORT_TYPE_GPON = 0, FM_PORT_TYPE_XGSPON = 7 };
