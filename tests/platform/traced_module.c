// A file that texts of traces could lie in.
extern const unsigned char traced_section[16];
const unsigned char traced_section[16] = {0xd8, 0x38};
