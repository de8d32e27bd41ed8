// Values in TLV arrays, messages and the cache: bytes at any address; words are in network byte
// order unless a name says host.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

namespace mcec {

using Bytes = std::span<const uint8_t>;
using Word = std::array<uint8_t, 4>;

template <class Unsigned>
constexpr Unsigned swap_to_network(Unsigned host) {
  if constexpr (std::endian::native == std::endian::big) return host;
  if constexpr (sizeof(Unsigned) == 2) return __builtin_bswap16(host);
  if constexpr (sizeof(Unsigned) == 4) return __builtin_bswap32(host);
  if constexpr (sizeof(Unsigned) == 8) return __builtin_bswap64(host);
}

// Reads sizeof(Value) bytes in host order.
template <class Value>
Value load(const void *at) {
  Value value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

template <class Unsigned>
void store(void *at, Unsigned value) {
  std::memcpy(at, &value, sizeof value);
}

// Copies sizeof(Unsigned) bytes from src to dst, reversed on little-endian machines, and returns
// the result. dst may be src.
template <class Unsigned>
Unsigned swap_copy(void *dst, const void *src) {
  const auto swapped = swap_to_network(load<Unsigned>(src));
  store(dst, swapped);
  return swapped;
}

// Returns the first word of a value in host order. If the value is shorter than 4 bytes, the
// missing low-order bytes are 0.
inline uint32_t word_of(Bytes value) {
  Word word{};
  std::copy_n(value.begin(), std::min(value.size(), word.size()), word.begin());
  return swap_to_network(load<uint32_t>(word.data()));
}

inline Word to_network(uint32_t host) {
  return std::bit_cast<Word>(swap_to_network(host));
}

// Returns a text value up to its NUL, or all of it if there is none.
inline std::string_view text_of(Bytes value) {
  const auto *chars = reinterpret_cast<const char *>(value.data());
  return {chars, static_cast<std::size_t>(std::ranges::find(value, 0) - value.begin())};
}

// Copies a value to a block of fixed length: as many bytes as fit; the rest of the block becomes 0.
inline void fill(std::span<uint8_t> block, Bytes value) {
  const auto fits = std::min(block.size(), value.size());
  std::copy_n(value.begin(), fits, block.begin());
  std::fill(block.begin() + static_cast<std::ptrdiff_t>(fits), block.end(), uint8_t{0});
}

}  // namespace mcec
