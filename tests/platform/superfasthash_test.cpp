// The answers come from superfasthash_vectors.py; with the length as seed they are those of the
// published form.
#include "ork/superfasthash.h"

#include "support.h"

namespace platform_test {
namespace {

uint32_t hash(std::string_view data, uint32_t seed) {
  return SuperFastHash(data.data(), static_cast<uint32_t>(data.size()), seed);
}

TEST(SuperFastHash, known_answers) {
  EXPECT_EQ(hash("a", 1), 0x115ea782u);
  EXPECT_EQ(hash("ab", 2), 0x516b8b44u);
  EXPECT_EQ(hash("abc", 3), 0xd2be198au);
  EXPECT_EQ(hash("abcd", 4), 0xdad8b8dbu);
  EXPECT_EQ(hash("The quick brown fox jumps over the lazy dog", 43), 0x05bf7ce3u);
  EXPECT_EQ(hash("\xff", 0), 0x7ffaa939u);
  EXPECT_EQ(hash("\x80\x81\x82", 7), 0xf9579749u);
}

TEST(SuperFastHash, every_byte_value) {
  std::string all;
  for (int i = 0; i < 256; ++i) {
    all.push_back(static_cast<char>(i));
  }
  EXPECT_EQ(hash(all, 0x12345678), 0x6a989599u);
}

TEST(SuperFastHash, empty_input_gives_the_seed) {
  EXPECT_EQ(SuperFastHash(nullptr, 0, 0xdeadbeef), 0xdeadbeefu);
  EXPECT_EQ(SuperFastHash(nullptr, 0, 0), 0u);
}

TEST(SuperFastHash, primitives_hash_their_value) {
  const uint32_t five = 5;
  EXPECT_EQ(u_int32_hash(&five, 0), 0x192bda6bu);
  const ork_boolean no = 0;
  EXPECT_EQ(ork_boolean_hash(&no, 0), 0u);
}

}  // namespace
}  // namespace platform_test
