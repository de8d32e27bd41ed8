// What the tests share: values, arrays, messages and commands in one line each, and what came of a
// call as text that a table can hold.
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
Bytes vlans(const std::string &ranges);         // a bitmap record, size in network order
Bytes host_words(std::vector<uint32_t> words);  // as command attributes have them
std::string hex(const Bytes &bytes);
std::string in_hex(uint32_t code);
std::string vlans_of(const bmp4096_t &record);

Bytes array(const Entries &entries);
std::string entries_of(const void *array);  // "1:00000004 6:00000001"

// Cache an entry as a cache update of the scope would.
void cache(uint32_t if_index, uint16_t type, const Bytes &value);
std::string cached(uint32_t if_index, uint16_t type);  // its bytes, or "-"

// The lines logged since the last call, "operation: text"; a line that the next one continues ends
// with a backslash.
Lines log();

// A message with the header of an update message before an array.
struct Message {
  void *msg;
  explicit Message(void *made) : msg(made) {}
  Message(const Message &) = delete;
  Message &operator=(const Message &) = delete;
  ~Message() { standin_message_free(msg); }
};
Bytes update_payload(uint32_t global, uint32_t if_index, uint32_t length, const Bytes &array);

struct Attribute {
  uint32_t id;
  Bytes value;
};

// What an extraction made of a message, released: "0 | ok | cmd 1 | 1,1,1,0 | 1:00000004": result,
// answers, is_cmd, records, array; "-" for what was left alone, "null" for an array set to NULL.
std::string extract(void *msg);
constexpr bool set_form = true;
constexpr bool no_form = false;
constexpr uint32_t routed_command = 62;  // no command, but routed to an extractor
std::string command(uint32_t id, bool positive, const std::vector<Attribute> &attributes = {});
std::string update(uint32_t global, uint32_t if_index, const Entries &entries);

// An empty switch with a trunk before each test; nothing leaked after it.
class LibraryTest : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;
};

void empty_cache();

}  // namespace test
