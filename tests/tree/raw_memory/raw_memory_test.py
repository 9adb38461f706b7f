#!/usr/bin/env python3
"""Stores go through frame/call.h, which announces them; bytes of a buffer are reached through encoders/cursor.h.

The functions that do it by themselves stand here, each with what makes it right. --list prints those that the tree has.
"""

import re
import sys
import tempfile
import unittest
from pathlib import Path

from raw_memory import Engines, stores, walks

ROOT = Path(__file__).resolve().parents[3]

# The memory is no live object yet, was announced before, or is required to be written in silence.
STORES = {
    "frame::load": "into its own variable",
    "frame::put": "the unannounced store itself",
    "frame::store": "the announced store itself",
    "frame::make": "a block that is no object yet",
    "frame::share": "a descriptor's copy that no table holds yet",
    "frame::write_header": "the header, announced where the caller asks for it",
    "frame/initialize.cpp: frame::initialize": "the tracked flag, announced where the caller asks for it",
    "frame::store_type": "the type of an object read from the wire goes unannounced",
    "frame::mark_embedded": "the flags, announced in the line before",
    "frame::reinitialize": "the element and its state block, announced in the line before",
    "frame::enum_set": "the whole object, announced in the line before",
    "frame::flag_set_set": "the whole object, announced in the line before",
    "frame::copy_body": "the whole body, announced before",
    "frame::copy_states": "the whole state block, announced in the line before",
    "frame::clear_tracking_flags": "flags of a body that was announced whole, or of an element whose block is new",
    "frame::text_set": "the text is announced; its end goes unannounced",
    "frame::text_get": "a caller's buffer, within the size that it gives",
    "frame::read_field": "a caller's variable",
    "frame::array_get_mem": "a caller's buffer, of as many elements as it asks for",
    "frame::array_set_mem": "the new block",
    "frame::grow_block": "the new block",
    "frame::grow_values": "the new block",
    "frame::move_elements": "the new block",
    "frame::replace_block": "the pointer, announced before the allocation",
    "frame::refit_block": "the new block, or the old one, announced",
    "frame::compact_states": "state blocks, announced in the line before",
    "frame::grow_element_states": "the pointer, announced before the allocation, and the new bytes",
    "frame::reset_element_states": "the pointer, announced before the allocation, and the new bytes",
    "frame::refit_element_states": "element bytes, announced in the line before",
    "frame::array_states_set": "a caller's bytes go into the state entry unannounced",
    "frame::set_all_state_tracking_flag": "the whole state block goes unannounced",
    "frame::free_element_states": "the state entry of an object that is going",
    "encoders::Writer::put_state": "a caller's buffer",
    "encoders::Writer::copy": "a caller's buffer",
    "encoders::Writer::zeros": "a caller's buffer",
    "encoders::Reader::copy": "element bytes that were made for the count, or a block that was announced",
    "encoders::store_header": "the header of an object read from the wire goes unannounced",
    "encoders::flag_set_unmarshal": "the bits of an object read from the wire go unannounced",
    "encoders::unmarshal_end": "the header of an object read from the wire goes unannounced",
    "encoders::read_state": "state bytes read from the wire go unannounced",
    "encoders::unmarshal_array_states": "state bytes read from the wire go unannounced",
    "encoders::read_enum": "a value read from a document goes unannounced",
    "messages::create": "a block that is no object yet",
    "messages::create_shallow": "a block that is no object yet",
    "messages::fill_header": "nothing of a message object is announced",
    "messages::put_record": "nothing of a message object is announced",
    "messages::destroy": "nothing of a message object is announced",
}

# Arithmetic on pointers to bytes, and reading through them, outside of the frame and the cursor.
WALKS = {
    "encoders::flag_set_unmarshal": "the one byte that is read without a test of the image's length",
    "encoders::TextBuffer::here": "a place in a text, clamped to its end",
    "encoders::marshal_body": "the object's state block",
    "encoders::marshal_array_states": "the object's state block",
    "encoders::read_state": "the object's state block",
    "encoders::unmarshal_array_states": "the object's state block",
    "encoders::store_header": "the object's header",
    "encoders::unmarshal_end": "the object's header",
    "messages::fill_header": "the object's header",
}

# Functions that must be found, put into a file of which others are listed.
RAW_STORES = [
    "void wipe(void* object, const FieldRow& field) { memset(field_of(object, field), 0xFF, 8); }",
    "void wipe(void* object, const FieldRow& field) { std::memcpy(field_of(object, field), object, 8); }",
    "void wipe(void* object, const FieldRow& field) { put(field_of(object, field), uint32_t{1}); }",
    "void wipe(void* object) { *byte_at(object, at_flags) = 0; }",
    "void wipe(void* object) { *byte_at(object, at_flags) |= 1; }",
    "void wipe(void* object) { ++*byte_at(object, at_flags); }",
    "void wipe(void* object, size_t i) { byte_at(object, at_flags)[i] = 0; }",
    "void wipe(void* object) { uint8_t& flags = *byte_at(object, at_flags); flags = 0; }",
    "void wipe(void* object) { auto change = [](uint8_t& flags) { flags = 0; }; change(*byte_at(object, at_flags)); }",
    "void wipe(void* object, const FieldRow& field) { *static_cast<uint32_t*>(field_of(object, field)) = 0; }",
    "template <class T> void wipe(T* object) { memset(object, 0, sizeof *object); }",
    "template <class T> void wipe(void* object) { put(object, T{}); }",
    "struct Wiper { void wipe(void* object) { memset(object, 0, 8); } };",
    "void wipe(void* object) { const auto fill = memset; fill(object, 0, 8); }",
]
# Functions in which there is nothing to find.
HARMLESS = [
    "uint8_t look(const void* object) { return *byte_at(object, at_flags); }",
    "bool look(void* object, size_t i) { return byte_at(object, at_flags)[i] == 0; }",
    "char look() { char name[8]; name[0] = 'x'; return name[0]; }",
    "void look(uint32_t* count) { *count = 0; ++*count; }",
    "void look(const Call& call, void* object) { store(call, object, uint8_t{1}, object); }",
]
RAW_WALKS = [
    "uint8_t peek(const uint8_t* from, size_t i) { return from[i]; }",
    "uint8_t peek(const uint8_t* from, size_t i) { return *(from + i); }",
    "uint8_t peek(Reader& in) { return *in.here(); }",
    "void peek(const uint8_t*& place) { ++place; }",
    "void peek(const uint8_t*& place, size_t n) { place += n; }",
    "bool peek(const char* text) { return text[1] == 'x'; }",
    "template <class T> uint8_t peek(const uint8_t* from, T i) { return from[i]; }",
]


class RawMemory(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        scratch = tempfile.TemporaryDirectory()
        cls.addClassCleanup(scratch.cleanup)
        cls.engines = Engines(ROOT, scratch.name)
        cls.functions = cls.engines.functions()

    def expect_listed(self, found, reasons):
        without = [f"{name}: {places}" for name, places in found.items() if name not in reasons]
        without += [f"{name}: no such function" for name in reasons if name not in found]
        self.assertEqual(without, [])

    def test_stores_past_the_announcing_ones_have_a_reason(self):
        self.expect_listed(stores(self.functions), STORES)

    def test_walking_outside_of_the_cursor_has_a_reason(self):
        self.expect_listed(walks(self.functions), WALKS)

    def added_to(self, name, stem, texts, hits):
        """Which of the functions, each called `stem`, are found in a source that they were all added to."""
        before = (ROOT / name).read_text()
        end = before.rindex("\n}  // namespace")
        added = "\n".join(re.sub(rf"\b{stem}\b", f"{stem}_{i}", text) for i, text in enumerate(texts))
        functions = self.engines.functions_in(name, f"{before[:end]}\n{added}\n{before[end:]}")
        found = " ".join(hits(functions))
        return [text for i, text in enumerate(texts) if re.search(rf"\b{stem}_{i}\b", found)]

    def test_a_new_raw_store_beside_listed_ones_is_found(self):
        self.assertEqual(self.added_to("frame/array.cpp", "wipe", RAW_STORES, stores), RAW_STORES)

    def test_nothing_is_found_where_nothing_is_stored(self):
        self.assertEqual(self.added_to("frame/array.cpp", "look", HARMLESS, stores), [])

    def test_a_new_walk_beside_the_cursor_is_found(self):
        self.assertEqual(self.added_to("encoders/marshal.cpp", "peek", RAW_WALKS, walks), RAW_WALKS)


def print_list():
    with tempfile.TemporaryDirectory() as scratch:
        functions = Engines(ROOT, scratch).functions()
        for title, found, reasons in (("STORES", stores(functions), STORES), ("WALKS", walks(functions), WALKS)):
            print(f"{title} = {{")
            for name, places in found.items():
                said = reasons.get(name, "? " + ", ".join(f"{place} {what}" for place, what in places.items()))
                print(f'    "{name}": "{said}",')
            print("}")


if __name__ == "__main__":
    if sys.argv[1:] == ["--list"]:
        print_list()
    else:
        unittest.main(verbosity=2)
