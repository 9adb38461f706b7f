"""Finds, on the syntax tree, the functions that touch memory past the helpers that guard it.

A raw store is a call of memcpy or its like, a call of frame::put, or a byte that is reached through a pointer and used as
more than a value: assigned, counted up, handed on by reference or address. Walking is arithmetic on a pointer to bytes,
or reading through one.
"""

import sys
from collections import defaultdict
from ctypes import c_uint
from pathlib import Path

sys.path.append("/usr/lib/python3/dist-packages")  # for interpreters other than the system's
from clang.cindex import Cursor, CursorKind, Index, TokenKind, TypeKind, conf  # noqa: E402

FOLDERS = ("frame", "encoders", "messages")
COPIES = {"memcpy", "memmove", "memset", "mempcpy", "memccpy", "strcpy", "strncpy", "stpcpy", "strcat", "strncat", "bcopy",
          "bzero"}
COPIES |= {prefix + name for name in COPIES for prefix in ("std::", "__builtin_")}
COPIES |= {"std::copy", "std::copy_n", "std::copy_backward", "std::fill", "std::fill_n", "frame::put"}
BYTES = {TypeKind.UCHAR, TypeKind.SCHAR, TypeKind.CHAR_S, TypeKind.CHAR_U}
CASTS = {CursorKind.CXX_STATIC_CAST_EXPR, CursorKind.CXX_REINTERPRET_CAST_EXPR, CursorKind.CSTYLE_CAST_EXPR}
# What has a name of its own that hits belong to.
NAMED = {CursorKind.FUNCTION_DECL, CursorKind.FUNCTION_TEMPLATE, CursorKind.CXX_METHOD, CursorKind.CONSTRUCTOR,
         CursorKind.DESTRUCTOR, CursorKind.CONVERSION_FUNCTION, CursorKind.VAR_DECL}
SCOPES = {CursorKind.NAMESPACE, CursorKind.STRUCT_DECL, CursorKind.CLASS_DECL, CursorKind.CLASS_TEMPLATE,
          CursorKind.CLASS_TEMPLATE_PARTIAL_SPECIALIZATION, CursorKind.LINKAGE_SPEC, CursorKind.UNEXPOSED_DECL}

conf.lib.clang_getNumOverloadedDecls.argtypes = [Cursor]
conf.lib.clang_getNumOverloadedDecls.restype = c_uint
conf.lib.clang_getOverloadedDecl.argtypes = [Cursor, c_uint]
conf.lib.clang_getOverloadedDecl.restype = Cursor


def qualified(cursor):
    names = []
    while cursor is not None and cursor.kind != CursorKind.TRANSLATION_UNIT:
        if cursor.spelling and cursor.kind not in (CursorKind.LINKAGE_SPEC, CursorKind.UNEXPOSED_DECL):
            names.insert(0, cursor.spelling.split("<")[0])
        cursor = cursor.semantic_parent
    return "::".join(names)


def bare(cursor):
    """Without parentheses and implicit conversions."""
    while cursor.kind in (CursorKind.PAREN_EXPR, CursorKind.UNEXPOSED_EXPR):
        inner = list(cursor.get_children())
        if len(inner) != 1:
            break
        cursor = inner[0]
    return cursor


def operator_of(cursor, operands):
    """The operator of a unary or binary expression as it is written; None inside a macro."""
    ends = [(o.extent.start.offset, o.extent.end.offset) for o in operands]
    for token in cursor.get_tokens():
        at = token.extent.start.offset
        if token.kind == TokenKind.PUNCTUATION and not any(start <= at < end for start, end in ends):
            return token.spelling
    return None


def is_byte_pointer(cursor_type):
    canonical = cursor_type.get_canonical()
    return canonical.kind == TypeKind.POINTER and canonical.get_pointee().get_canonical().kind in BYTES


def is_array(cursor):
    return bare(cursor).type.get_canonical().kind in (TypeKind.CONSTANTARRAY, TypeKind.INCOMPLETEARRAY, TypeKind.VECTOR)


class Function:
    """The hits of one function: what it does, and in which line."""

    def __init__(self, name, file):
        self.name, self.file = name, file
        self.stores, self.walks = {}, {}

    def visit(self, cursor, parent=None):
        kind = cursor.kind
        if kind in (CursorKind.DECL_REF_EXPR, CursorKind.OVERLOADED_DECL_REF):
            self.see_name(cursor)
        elif kind == CursorKind.CXX_NEW_EXPR:
            self.stores[cursor.location.line] = "new"
        elif kind in (CursorKind.UNARY_OPERATOR, CursorKind.ARRAY_SUBSCRIPT_EXPR, CursorKind.BINARY_OPERATOR,
                      CursorKind.COMPOUND_ASSIGNMENT_OPERATOR):
            self.see_operator(cursor, parent)
        for child in cursor.get_children():
            self.visit(child, cursor)

    def see_name(self, cursor):
        if not COPIES.isdisjoint(map(qualified, self.meant(cursor))):
            self.stores[cursor.location.line] = cursor.spelling

    @staticmethod
    def meant(cursor):
        if cursor.kind == CursorKind.DECL_REF_EXPR:
            return [cursor.referenced]
        lib = conf.lib
        return [lib.clang_getOverloadedDecl(cursor, i) for i in range(lib.clang_getNumOverloadedDecls(cursor))]

    def see_operator(self, cursor, parent):
        operands = list(cursor.get_children())
        line = cursor.location.line
        operator = "[]" if cursor.kind == CursorKind.ARRAY_SUBSCRIPT_EXPR else operator_of(cursor, operands)
        if operator == "[]" and is_array(operands[0]):
            return
        if operator in ("[]", "*") and cursor.kind != CursorKind.BINARY_OPERATOR:
            through = bare(operands[0])
            byte = is_byte_pointer(operands[0].type)
            if byte:
                self.walks[line] = f"reads with {operator}"
            # A conversion around it takes the value.
            is_value = parent is not None and parent.kind == CursorKind.UNEXPOSED_EXPR
            if (byte or through.kind in CASTS) and not is_value and not cursor.type.is_const_qualified():
                self.stores[line] = f"stores with {operator}"
        elif operator in ("+", "-", "++", "--", "+=", "-=") and any(is_byte_pointer(o.type) for o in operands):
            self.walks[line] = f"moves with {operator}"


def functions_of(unit, root, wanted):
    """The functions that are defined in files for which wanted(name) holds."""
    names = {}

    def file_of(cursor):
        file = cursor.location.file
        if file is None:
            return ""
        if file.name not in names:
            path = Path(file.name)
            names[file.name] = path.relative_to(root).as_posix() if path.is_relative_to(root) else ""
        return names[file.name]

    def visit(cursor):
        for child in cursor.get_children():
            name = file_of(child)
            if not wanted(name):
                continue
            if child.kind in SCOPES:
                yield from visit(child)
            elif child.kind in NAMED and child.is_definition():
                function = Function(qualified(child), name)
                function.visit(child)
                yield function

    return list(visit(unit.cursor))


class Engines:
    """The sources of the engines below root. Their headers are read once, for all files."""

    def __init__(self, root, scratch):
        self.root = Path(root).resolve()
        files = {path.relative_to(self.root).as_posix() for folder in FOLDERS for path in (self.root / folder).rglob("*.*")}
        headers = sorted(name for name in files if name.endswith(".h"))
        self.sources = sorted(files - set(headers))
        self.arguments = ["-std=c++20", f"-I{self.root}", f"-I{self.root / 'include'}"]
        self.index = Index.create()
        every_header = Path(scratch) / "every_header.h"
        every_header.write_text("".join(f'#include "{name}"\n' for name in headers))
        unit = self.parse(every_header, ["-xc++-header"])
        self.header_functions = functions_of(unit, self.root, lambda name: name in headers)
        self.compiled = Path(scratch) / "every_header.pch"
        unit.save(str(self.compiled))

    def parse(self, file, arguments, unsaved=()):
        unit = self.index.parse(str(file), args=self.arguments + arguments, unsaved_files=list(unsaved))
        wrong = [str(d) for d in unit.diagnostics if d.severity >= 3]
        if wrong:
            raise AssertionError("\n".join(wrong))
        return unit

    def functions_in(self, name, text=None):
        """The functions of one source, which may be given another text than it has."""
        path = self.root / name
        unsaved = [] if text is None else [(str(path), text)]
        unit = self.parse(path, ["-xc++", "-include-pch", str(self.compiled)], unsaved)
        return functions_of(unit, self.root, lambda file: file == name)

    def functions(self):
        return self.header_functions + [f for name in self.sources for f in self.functions_in(name)]


def by_name(functions, hits):
    """{function: {place: what it does}}; a name that stands in several files is told with its file."""
    homes, named = defaultdict(set), defaultdict(dict)
    for function in functions:
        homes[function.name].add(function.file)
    for function in functions:
        key = function.name if len(homes[function.name]) == 1 else f"{function.file}: {function.name}"
        for line, what in hits(function).items():
            named[key][f"{function.file}:{line}"] = what
    return dict(named)


def stores(functions):
    return by_name(functions, lambda function: function.stores)


def walks(functions):
    """Bytes of objects are the frame's to reach; the cursor walks for all others."""
    return by_name(functions, lambda function: {} if function.file.startswith("frame/") or
                   function.file == "encoders/cursor.h" else function.walks)
