// Shared by the tests of the library: values, arrays, messages, commands, and outcomes as text.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "draimiofaf/cache.h"
#include "draimiofaf/check.h"
#include "draimiofaf/extract.h"
#include "draimiofaf/extract_port.h"
#include "draimiofaf/foundation.h"
#include "draimiofaf/stp.h"
#include "mtrack.h"
#include "mts.h"
#include "standin.h"
#include "tlv.h"

namespace test {

using Bytes = std::vector<uint8_t>;
using Lines = std::vector<std::string>;

struct Entry {
  uint16_t type;
  Bytes value;
};
using Entries = std::vector<Entry>;

Bytes word(uint32_t value);
Bytes name(const std::string &text);            // 32 bytes
Bytes vlans(const std::string &ranges);         // a bitmap record in network byte order
Bytes host_words(std::vector<uint32_t> words);  // for command attributes
std::string hex(const Bytes &bytes);
std::string in_hex(uint32_t code);
std::string vlans_of(const bmp4096_t &record);

Bytes array(const Entries &entries);
std::string entries_of(const void *array);  // "1:00000004 6:00000001"

// An array that a call must not change.
struct ConstantArray {
  Bytes bytes;
  explicit ConstantArray(const Entries &entries) : bytes(array(entries)), before(bytes) {}
  ~ConstantArray() { EXPECT_EQ(bytes, before); }

 private:
  Bytes before;
};

uint32_t cache_update(int32_t gbl, uint32_t if_index, const Entries &entries);
uint32_t rebuild(uint32_t if_index, const Entries &entries);

// Adds an entry to the cache.
void cache(uint32_t if_index, uint16_t type, const Bytes &value);
std::string cached(uint32_t if_index, uint16_t type);  // its value in hexadecimal, or "-"

// Returns the lines logged since the last call, except for the first ones, as "operation: text".
// A line that the next one continues ends with a backslash.
Lines log(std::size_t skipped = 0);

struct Message {
  void *msg;
  explicit Message(void *made) : msg(made) {}
  Message(const Message &) = delete;
  Message &operator=(const Message &) = delete;
  ~Message() { standin_message_free(msg); }
};
struct Attribute {
  uint32_t id;
  Bytes value;
};

// Returns the outcome of an extraction: result, answers, is_cmd and count, records, array. Example:
// "0 | ok | cmd 1 count 1 | type 16 1,1,1,0 | type 9 1:00000004". Unchanged arguments are omitted.
std::string extract(void *msg);
constexpr bool set_form = true;
constexpr bool no_form = false;
constexpr uint32_t routed_command = 62;  // not a command, but routed to an extractor
std::string command(uint32_t id, bool positive, const std::vector<Attribute> &attributes = {});
// Extracts from an update message. The header has the length of the array, or another length.
constexpr uint32_t whole_array = UINT32_MAX;
std::string update(uint32_t global, uint32_t if_index, const Entries &entries,
                   uint32_t length = whole_array);
std::string extract_message(uint32_t opcode, const Bytes &payload);

// Each test begins with a trunk and an empty cache, and must not leak blocks.
class LibraryTest : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;
};

void empty_cache();

}  // namespace test
