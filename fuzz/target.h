// What libFuzzer calls, and replay.cpp where there is no libFuzzer.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
