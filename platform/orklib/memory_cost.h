// What a block, a distance and a kept message really take from the process.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ork {

// No block is larger, so that no cost overflows.
constexpr size_t largest_block = PTRDIFF_MAX / 8;

// In front of each block.
constexpr size_t block_head = 64;

// malloc puts a word of its own in front of what it gives and deals in pieces of 16 bytes.
constexpr size_t malloc_cost(size_t size) { return (size + sizeof(size_t) + 15) & ~size_t{15}; }

constexpr size_t block_cost(size_t size) { return malloc_cost(block_head + size); }

// A node of the map of distances.
constexpr size_t distance_cost = malloc_cost(48);

// No object that has a distance is smaller.
constexpr size_t smallest_object = 24;

// The distances that the objects in so many bytes could ask for.
constexpr size_t possible_distances(size_t bytes) { return bytes / smallest_object; }

// A block and all the distances that it could come to.
constexpr size_t full_cost(size_t size, bool tracked) {
  return block_cost(size) + (tracked ? possible_distances(size) * distance_cost : 0);
}

}  // namespace ork
