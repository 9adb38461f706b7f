// The identity of the show request message, which every show's bundle allows.
#include "ork/show_core.h"
#include "support/export.h"

extern "C" {

extern ORK_EXPORT const uint8_t message_ui_req_msg_luid[16];
extern ORK_EXPORT const char message_ui_req_msg_name[];

const uint8_t message_ui_req_msg_luid[16] = {0x5c, 0x0e, 0x71, 0xb8, 0x2f, 0x94, 0x4d, 0x63,
                                             0x9a, 0x17, 0xe3, 0x50, 0xc6, 0x8b, 0x2d, 0xf4};

const char message_ui_req_msg_name[] = "message ui_req_msg";

}  // extern "C"
