"""How the library is loaded: its name, what it needs, its one constructor and destructor, and what its segments may do."""
import unittest

from elf import ALLOC, EXECUTE, WRITE
from subject import SANITIZED, built

NEEDED, SONAME, SYMBOLIC, TEXTREL, FLAGS = 1, 14, 16, 22, 30
INIT, FINI, INIT_ARRAY_SIZE, FINI_ARRAY_SIZE, PREINIT_ARRAY = 12, 13, 27, 28, 32
FLAG_SYMBOLIC, FLAG_TEXTREL, FLAG_BIND_NOW = 2, 4, 8
LOAD, STACK, READ_ONLY_AFTER_LOAD = 1, 0x6474E551, 0x6474E552

PLATFORM = {"orklib", "flight", "tawny", "superfasthash", "ctl_link", "feat_defs", "show_base", "card_stats", "port_common",
            "match_trace_common", "show_core"}


def values(tag):
    return [value for entry, value in built.dynamic() if entry == tag]


class Loading(unittest.TestCase):
    def test_name_carries_the_major_version(self):
        self.assertEqual(values(SONAME), ["libfwe_ui_wayfind.so.1"])

    @unittest.skipIf(SANITIZED, "a sanitizer brings its run-time library")
    def test_needs_the_platform_and_the_c_library_alone(self):
        self.assertEqual(set(values(NEEDED)), {f"lib{name}.so.1" for name in PLATFORM} | {"libc.so.6"})

    @unittest.skipIf(SANITIZED, "a sanitizer starts its own checks")
    def test_one_constructor_and_one_destructor(self):
        self.assertEqual(values(INIT_ARRAY_SIZE), [8])
        self.assertEqual(values(FINI_ARRAY_SIZE), [8])
        for tag in (INIT, FINI, PREINIT_ARRAY):
            self.assertEqual(values(tag), [])

    @unittest.skipIf(SANITIZED, "a sanitizer starts its own checks")
    def test_no_object_needs_start_up_code(self):
        starters = ("_GLOBAL__sub_I", "_GLOBAL__I_", "__cxx_global_var_init", "_Z41__static_initialization_and_destruction")
        self.assertEqual([name for name, *_ in built.symbols(".symtab") if name.startswith(starters)], [])

    def test_exported_objects_can_be_replaced_and_code_is_never_relocated(self):
        self.assertEqual(values(SYMBOLIC) + values(TEXTREL), [])
        self.assertEqual(sum(values(FLAGS)) & (FLAG_SYMBOLIC | FLAG_TEXTREL), 0)

    def test_tables_are_read_only_once_loaded(self):
        (start, size), = [(address, size) for kind, _, _, address, _, _, size, _ in built.segments if kind == READ_ONLY_AFTER_LOAD]
        for name in (".data.rel.ro", ".got"):
            section = built.sections[name]
            self.assertTrue(start <= section.address and section.address + section.size <= start + size, name)
        self.assertTrue(sum(values(FLAGS)) & FLAG_BIND_NOW, "the table of functions is filled at load")

    def test_no_segment_is_both_written_and_executed(self):
        for kind, flags, *_ in built.segments:
            self.assertFalse(kind == LOAD and flags & 2 and flags & 1)

    def test_stack_is_not_executable(self):
        stacks = [flags for kind, flags, *_ in built.segments if kind == STACK]
        self.assertEqual(len(stacks), 1)
        self.assertEqual(stacks[0] & 1, 0)

    def test_no_loaded_section_is_both_written_and_executed(self):
        for section in built.list:
            self.assertFalse(section.flags & ALLOC and section.flags & WRITE and section.flags & EXECUTE, section.name)


if __name__ == "__main__":
    unittest.main()
