#include "support.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>

#include "avl.h"

namespace test {
namespace {

const std::regex head("^(\\w+)\\((\\d+)\\): ");

// Returns the first and last line of each exported function in its source file.
std::map<std::string, std::pair<int, int>> definitions() {
  std::map<std::string, std::pair<int, int>> found;
  for (const auto &file : std::filesystem::recursive_directory_iterator(SOURCES)) {
    std::ifstream in(file.path());
    std::string name;
    for (int number = 1, first = 0; in; ++number) {
      std::string line;
      std::getline(in, line);
      if (line.starts_with("extern \"C\" ")) first = number;
      std::smatch match;
      if (first > 0 && name.empty() && std::regex_search(line, match, std::regex("(\\w+)\\("))) {
        name = match[1];
      }
      if (line != "}" || first == 0) continue;
      found[std::exchange(name, "")] = {std::exchange(first, 0), number};
    }
  }
  return found;
}

// Expects that the head of a log line has an exported function, and a line of this function.
void check_head(const char *line) {
  static const auto defined = definitions();
  std::cmatch match;
  if (!std::regex_search(line, match, head)) return;
  const auto operation = defined.find(match[1]);
  ASSERT_NE(operation, defined.end()) << line;
  EXPECT_GT(std::stoi(match[2]), operation->second.first) << line;
  EXPECT_LT(std::stoi(match[2]), operation->second.second) << line;
}

// Suspends injected failures, which are for calls of the library only.
struct SuspendedFailures {
  SuspendedFailures() { standin_suspend_failures(1); }
  ~SuspendedFailures() { standin_suspend_failures(0); }
};

// The header of an update message and an array.
Bytes update_payload(uint32_t global, uint32_t if_index, uint32_t length, const Bytes &array) {
  Bytes payload = host_words({global, if_index, 0xDEADBEEF, length});
  payload.insert(payload.end(), array.begin(), array.end());
  return payload;
}

}  // namespace

Bytes word(uint32_t value) {
  return {uint8_t(value >> 24), uint8_t(value >> 16), uint8_t(value >> 8), uint8_t(value)};
}

Bytes name(const std::string &text) {
  Bytes value(text.begin(), text.end());
  value.resize(32);
  return value;
}

Bytes vlans(const std::string &ranges) {
  Bytes record(sizeof(bmp4096_t));
  record[2] = 2;
  std::istringstream in(ranges);
  for (std::string range; std::getline(in, range, ',');) {
    const std::size_t dash = range.find('-');
    const unsigned long first = std::stoul(range);
    const unsigned long last = dash == range.npos ? first : std::stoul(range.substr(dash + 1));
    for (unsigned long vlan = first; vlan <= last; ++vlan) {
      record[4 + vlan / 8] = uint8_t(record[4 + vlan / 8] | 0x80U >> vlan % 8);
    }
  }
  return record;
}

Bytes host_words(std::vector<uint32_t> words) {
  Bytes bytes(words.size() * 4);
  if (!words.empty()) std::memcpy(bytes.data(), words.data(), bytes.size());
  return bytes;
}

std::string hex(const Bytes &bytes) {
  constexpr char digits[] = "0123456789abcdef";
  std::string text;
  for (const uint8_t byte : bytes) {
    text.append({digits[byte >> 4], digits[byte & 15]});
  }
  return text;
}

std::string in_hex(uint32_t code) {
  std::ostringstream text;
  text << std::hex << code;
  return text.str();
}

std::string vlans_of(const bmp4096_t &record) {
  return stp_mcec_lib_bmp4096_to_str(&record);
}

Bytes array(const Entries &entries) {
  uint32_t size = STP_MCEC_TLV_ARRAY_HDR_SIZE;
  for (const Entry &entry : entries)
    size += tlv_aligned_data_size_get(uint32_t(entry.value.size()));
  Bytes made(size);
  const SuspendedFailures suspended;
  for (const Entry &entry : entries) {
    EXPECT_EQ(tlv_aligned_array_add_tlv(made.data(), size, entry.type, uint16_t(entry.value.size()),
                                        entry.value.data(), 1),
              0U);
  }
  return made;
}

std::string entries_of(const void *array) {
  std::string text;
  const SuspendedFailures suspended;
  uint32_t cursor = 0;
  for (uint32_t left = tlv_aligned_array_get_num_tlvs(array, 1); left > 0; --left) {
    uint16_t type = 0;
    uint16_t length = 0;
    void *value = nullptr;
    EXPECT_EQ(tlv_aligned_array_get_next_tlv(array, &type, &length, &value, 1, &cursor), 0U);
    const auto *bytes = static_cast<const uint8_t *>(value);
    text += (text.empty() ? "" : " ") + std::to_string(type) + ":" + hex({bytes, bytes + length});
  }
  return text;
}

uint32_t rebuild(uint32_t if_index, const Entries &entries) {
  ConstantArray given(entries);
  return stp_mcec_type1_cfg_cache_rebuild(given.bytes.data(), 77, if_index);
}

uint32_t cache_update(int32_t gbl, uint32_t if_index, const Entries &entries) {
  const ConstantArray given(entries);
  const Bytes payload = update_payload(0, 0, 0, given.bytes);
  const Message message(standin_message(0, payload.data(), payload.size()));
  return stp_mcec_type1_cfg_cache_update(0, gbl, if_index, message.msg);
}

void cache(uint32_t if_index, uint16_t type, const Bytes &value) {
  EXPECT_EQ(rebuild(if_index, {{type, value}}), 0U);
  standin_history_clear();
}

std::string cached(uint32_t if_index, uint16_t type) {
  const type1_cfg_avl_node_t key{if_index, type, 0, nullptr};
  const auto *node =
      static_cast<const type1_cfg_avl_node_t *>(avl_find(stp_mcec_type1_cfg_avl, &key));
  return node != nullptr ? hex({node->val, node->val + node->len}) : "-";
}

Lines log(std::size_t skipped) {
  Lines lines;
  for (auto i = uint32_t(skipped); i < standin_history_count(); ++i) {
    std::string line = std::regex_replace(standin_history_line(i), head, "$1: ");
    if (line.ends_with('\n')) {
      line.pop_back();
    } else {
      line += '\\';
    }
    lines.push_back(line);
  }
  standin_history_clear();
  return lines;
}

std::string extract(void *msg) {
  constexpr uint32_t untouched = 0xEEEEEEEE;
  uint8_t no_array = 0;
  mcecm_app_cmd_extract_info_t no_records{};
  uint8_t *tlvs = &no_array;
  uint32_t count = untouched;
  uint32_t is_cmd = untouched;
  mcecm_app_cmd_extract_info_t *records = &no_records;
  standin_answers_clear();
  const uint32_t result = stp_mcec_type1_cfg_param_extractor(msg, &tlvs, &count, &is_cmd, &records);

  std::ostringstream text;
  text << std::hex << result << std::dec << " |";
  for (uint32_t i = 0; i < standin_answer_count(); ++i) {
    const standin_answer_t answer = standin_answer_at(i);
    text << ' ' << (answer.accepted != 0 ? "ok" : answer.text);
  }
  text << " |";
  if (is_cmd != untouched) text << " cmd " << is_cmd;
  if (count != untouched) text << " count " << count;
  text << " |";
  if (records == nullptr) {
    text << " null";
  } else if (records != &no_records) {
    EXPECT_EQ(standin_block_size(records) % sizeof *records, 0U);
    const uint32_t have = standin_block_size(records) / uint32_t(sizeof *records);
    text << " type " << standin_block_type(records);
    for (uint32_t i = 0; i < have; ++i) {
      text << ' ' << records[i].type << ',' << records[i].valid << ',' << records[i].is_global
           << ',' << records[i].if_index;
    }
    mtrack_free(records);
  }
  text << " |";
  if (tlvs == nullptr) {
    text << " null";
  } else if (tlvs != &no_array) {
    text << " type " << standin_block_type(tlvs) << ' ' << entries_of(tlvs);
    // The array of a region always has the size for three parameters.
    EXPECT_EQ(standin_block_size(tlvs), standin_block_type(tlvs) == 8
                                            ? stp_mcec_get_mst_region_cfg_tlv_payld_size()
                                            : standin_tlv_array_bytes(tlvs));
    mtrack_free(tlvs);
  }
  return text.str();
}

std::string command(uint32_t id, bool positive, const std::vector<Attribute> &attributes) {
  std::vector<standin_attribute_t> made;
  for (const Attribute &attribute : attributes) {
    made.push_back({attribute.id, uint32_t(attribute.value.size()), attribute.value.data()});
  }
  const Message message(standin_command(id, positive ? 1 : 0, made.data(), uint32_t(made.size())));
  return extract(message.msg);
}

std::string update(uint32_t global, uint32_t if_index, const Entries &entries, uint32_t length) {
  const Bytes made = array(entries);
  return extract_message(
      STP_MCEC_MTS_OPC_TYPE1_UPD,
      update_payload(global, if_index, std::min(length, uint32_t(made.size())), made));
}

std::string extract_message(uint32_t opcode, const Bytes &payload) {
  const Message message(standin_message(opcode, payload.data(), payload.size()));
  return extract(message.msg);
}

void empty_cache() {
  avl_destroy(stp_mcec_type1_cfg_avl, stp_mcec_type1_cfg_avl_free);
  stp_mcec_type1_cfg_avl = avl_create(stp_mcec_type1_cfg_avl_cmp_func, 0);
}

void LibraryTest::SetUp() {
  standin_reset();
  standin_on_history(check_head);
  standin_set_trunk(1);
}

void LibraryTest::TearDown() {
  empty_cache();
  EXPECT_EQ(standin_live_blocks(STANDIN_ALL_TYPES), 0U);
}

}  // namespace test
