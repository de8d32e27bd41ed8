// The contracts of platform/, held by whichever platform the tests run on.

#include <algorithm>
#include <cstring>
#include <random>

#include "avl.h"
#include "support.h"

namespace {

using namespace test;

struct Platform : LibraryTest {};

constexpr uint32_t mem_type = STP_MCEC_LIB_MEM_tlv_array_t;

TEST_F(Platform, ArraysTakeWhatTheirSizeWasMadeFor) {
  Entries entries;
  for (const std::size_t length : {8192U, 0U, 1U, 2U, 3U, 4U, 5U, 32U, 516U}) {
    entries.push_back({uint16_t(0xFFFF - length), Bytes(length, uint8_t(length + 1))});
  }
  const Bytes one = array(entries);
  for (std::size_t shift = 0; shift < 4; ++shift) {
    std::rotate(entries.begin(), entries.begin() + 1, entries.end());
    const Bytes made = array(entries);
    ASSERT_EQ(made.size(), one.size());
    Bytes copy(shift);
    copy.insert(copy.end(), made.begin(), made.end());
    uint8_t *at = copy.data() + shift;
    EXPECT_NE(tlv_aligned_array_add_tlv(at, uint32_t(made.size()), 1, 0, nullptr, 1), 0U);
    EXPECT_TRUE(std::equal(made.begin(), made.end(), at));
    EXPECT_EQ(tlv_aligned_array_get_num_tlvs(at, 1), entries.size());
    uint32_t cursor = 0;
    for (const Entry &entry : entries) {
      uint16_t type = 0;
      uint16_t length = 0;
      void *values[2] = {};
      ASSERT_EQ(tlv_aligned_array_get_next_tlv(at, &type, &length, values, 1, &cursor), 0U);
      EXPECT_EQ(type, entry.type);
      ASSERT_EQ(length, entry.value.size());
      EXPECT_TRUE(
          std::equal(entry.value.begin(), entry.value.end(), static_cast<uint8_t *>(values[0])));
      ASSERT_EQ(tlv_aligned_array_find_tlv(at, entry.type, &length, values + 1, 1), 0U);
      EXPECT_EQ(values[1], values[0]);
    }
    uint16_t length = 0;
    void *value = nullptr;
    EXPECT_NE(tlv_aligned_array_find_tlv(at, 1, &length, &value, 1), 0U);
  }
  Bytes large(0x10010);
  const Bytes longest(0xFFFF, 7);
  const uint32_t code =
      tlv_aligned_array_add_tlv(large.data(), uint32_t(large.size()), 1, 0xFFFF, longest.data(), 1);
  EXPECT_EQ(entries_of(large.data()), code == 0 ? "1:" + hex(longest) : "");
}

// An array from another machine, with any byte of it wrong: what is handed out lies within its block.
TEST_F(Platform, ReadersStayWithinTheBlock) {
  const Bytes made = array({{1, word(5)}, {2, Bytes(6, 9)}, {3, {}}});
  auto *block = static_cast<uint8_t *>(mtrack_alloc(633, mem_type, uint32_t(made.size())));
  const auto within = [&](const void *value, uint16_t length) {
    const auto *start = static_cast<const uint8_t *>(value);
    return start >= block && start + length <= block + made.size();
  };
  for (std::size_t wrong = 0; wrong < made.size() * 256; ++wrong) {
    std::copy(made.begin(), made.end(), block);
    block[wrong / 256] = uint8_t(wrong);
    uint16_t type = 0;
    uint16_t length = 0;
    void *value = nullptr;
    uint32_t cursor = 0;
    const uint32_t count = tlv_aligned_array_get_num_tlvs(block, 1);
    ASSERT_LE(count, made.size());
    for (uint32_t i = 0; i < count; ++i) {
      if (tlv_aligned_array_get_next_tlv(block, &type, &length, &value, 1, &cursor) != 0) break;
      ASSERT_TRUE(within(value, length)) << wrong;
    }
    for (const uint16_t wanted : {uint16_t{1}, uint16_t{3}, uint16_t{0xFFFF}}) {
      if (tlv_aligned_array_find_tlv(block, wanted, &length, &value, 1) == 0) {
        ASSERT_TRUE(within(value, length)) << wrong;
      }
    }
  }
  mtrack_free(block);
}

int released;

TEST_F(Platform, TreesFindWhatIsLinked) {
  std::vector<int> nodes(500);
  for (int i = 0; i < 500; ++i) nodes[std::size_t(i)] = i;
  std::mt19937 random(1);
  std::shuffle(nodes.begin(), nodes.end(), random);
  avl_tree_t *tree = avl_create(
      [](const void *a, const void *b) {
        return *static_cast<const int *>(a) - *static_cast<const int *>(b);
      },
      0);
  for (int &node : nodes) avl_insert(tree, &node);
  for (int &node : nodes) {
    if (node % 3 == 0) avl_delete(tree, &node);
  }
  for (int &node : nodes) {
    const int key = node;
    EXPECT_EQ(avl_find(tree, &key), node % 3 == 0 ? nullptr : &node);
  }
  released = 0;
  avl_destroy(tree, [](void *node) {
    ++released;
    std::memset(node, 0xEE, sizeof(int));
  });
  EXPECT_EQ(released, 333);
}

TEST_F(Platform, BlocksDoNotOverlap) {
  struct Block {
    uint8_t *at;
    uint32_t size;
    uint8_t fill;
  };
  std::vector<Block> blocks;
  std::mt19937 random(1);
  for (int round = 0; round < 3000; ++round) {
    if (blocks.size() > 100) {
      std::swap(blocks[random() % blocks.size()], blocks.back());
      const Block &old = blocks.back();
      ASSERT_EQ(std::count(old.at, old.at + old.size, old.fill), old.size);
      mtrack_free(old.at);
      blocks.pop_back();
    }
    const auto size = uint32_t(random() % 300);
    Block block{static_cast<uint8_t *>(mtrack_alloc(633, mem_type, size)), size, uint8_t(round)};
    ASSERT_EQ(reinterpret_cast<uintptr_t>(block.at) % alignof(max_align_t), 0U);
    std::memset(block.at, block.fill, size);
    blocks.push_back(block);
  }
  EXPECT_EQ(standin_live_blocks(mem_type), blocks.size());
  for (const Block &block : blocks) mtrack_free(block.at);
}

}  // namespace
