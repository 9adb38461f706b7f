#!/usr/bin/env python3
"""Works out the known answers of superfasthash_test.cpp from the published description, with numbers of any size."""

MASK = 0xFFFFFFFF


def signed(byte):
    return byte - 256 if byte > 127 else byte


def super_fast_hash(data, seed):
    if not data:
        return seed
    h = seed
    whole = len(data) - len(data) % 4
    for i in range(0, whole, 4):
        low = data[i] + 256 * data[i + 1]
        high = data[i + 2] + 256 * data[i + 3]
        h = (h + low) & MASK
        h = ((h * 65536) & MASK) ^ ((high * 2048) ^ h)
        h &= MASK
        h = (h + h // 2048) & MASK
    tail = data[whole:]
    if len(tail) == 3:
        h = (h + tail[0] + 256 * tail[1]) & MASK
        h ^= (h * 65536) & MASK
        h ^= (signed(tail[2]) * 262144) & MASK
        h = (h + h // 2048) & MASK
    elif len(tail) == 2:
        h = (h + tail[0] + 256 * tail[1]) & MASK
        h ^= (h * 2048) & MASK
        h = (h + h // 131072) & MASK
    elif len(tail) == 1:
        h = (h + signed(tail[0])) & MASK
        h ^= (h * 1024) & MASK
        h = (h + h // 2) & MASK
    for left, right in ((8, 32), (16, 131072), (33554432, 64)):
        h ^= (h * left) & MASK
        h = (h + h // right) & MASK
    return h


if __name__ == "__main__":
    for data, seed in (
        (b"", 0),
        (b"", 0xDEADBEEF),
        (b"a", 1),
        (b"ab", 2),
        (b"abc", 3),
        (b"abcd", 4),
        (b"The quick brown fox jumps over the lazy dog", 43),
        (b"\xff", 0),
        (b"\x80\x81\x82", 7),
        (bytes(range(256)), 0x12345678),
        (bytes(4), 0),
        (b"\x05\x00\x00\x00", 0),
    ):
        print(f"{data.hex() or '-'} seed 0x{seed:08x} -> 0x{super_fast_hash(data, seed):08x}")
