"""The descriptors as images, byte by byte, and the identifiers of the messages."""
import struct
import unittest

from elf import ALLOC, EXECUTE, WRITE
from subject import built, controls, types

WORDS = {"type": "type", "enum": "enum", "flag": "flag", "message": "message"}


class Descriptors(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.pointers = built.pointers()

    def test_56_records_11_enums_a_flag_set_and_28_messages(self):
        self.assertEqual([sum(t.kind == kind for t in types) for kind in WORDS], [56, 11, 1, 28])

    def test_each_is_an_image_of_272_bytes(self):
        for t in types:
            image = struct.pack("<I16s33s64s64s64s3xi4x8xI4x", 0xBEEFF00D, bytes.fromhex(t.luid), t.luid.encode(), t.name.encode(),
                                b"fwe_ui_wayfind", WORDS[t.kind].encode(), -1, 0)
            self.assertEqual(len(image), 272)
            held = bytearray(built.at(built.address_of(t.descriptor()), 272))
            held[256:264] = bytes(8)  # varinfo: the loader's
            self.assertEqual(bytes(held), image, t.name)

    def test_each_points_at_its_variants(self):
        for t in types:
            block = self.pointers[built.address_of(t.descriptor()) + 256]
            self.assertEqual(built.at(block, 8), struct.pack("<b7x", len(t.variants)), t.name)
            entries = built.at(self.pointers[block + 8], 40 * len(t.variants))
            told = b"".join(struct.pack("<III4x24x", v, used, slop) for v, (used, slop) in enumerate(t.variants))
            self.assertEqual(entries, told, t.name)

    def test_variants_of_a_record_end_at_one_body_size(self):
        for t in types:
            if t.kind == "type":
                newest = t.variants[-1][0]
                body = (newest + (8 if newest <= 64 else 16) + 7) // 8 * 8
                for used, slop in t.variants:
                    self.assertEqual(used + slop, body, t.name)


class Identifiers(unittest.TestCase):
    told = [(t.name, t.luid) for t in types if t.kind == "message"] + controls

    def test_82_messages_have_luid_text_and_name(self):
        self.assertEqual(len(self.told), 82)
        for name, luid in self.told:
            self.assertEqual(built.at(built.address_of(f"message_{name}_luid"), 16), bytes.fromhex(luid), name)
            self.assertEqual(built.at(built.address_of(f"message_{name}_luid_text"), 33), luid.encode() + b"\0", name)
            text = f"message {name}".encode() + b"\0"
            self.assertEqual(built.at(built.address_of(f"message_{name}_name"), len(text)), text, name)

    def test_they_are_read_only(self):
        told = {f"message_{name}_{what}" for name, _ in self.told for what in ("luid", "luid_text", "name")}
        flags = {name: built.list[index].flags & (ALLOC | WRITE | EXECUTE)
                 for name, _, _, index, _, _ in built.symbols() if name in told}
        self.assertEqual(flags, dict.fromkeys(told, ALLOC))


if __name__ == "__main__":
    unittest.main()
