// Arrays from a hostile peer. The properties: the library does not change them, an array agrees
// with itself, a twin VLAN passes or fails, a report has a record for each entry, and an export is
// the same after a rebuild from it.

#include <algorithm>
#include <set>

#include "draimiofaf/check.h"
#include "draimiofaf/foundation.h"
#include "library.h"

namespace {

#define LENGTH(name, type, scope, length, ...) length,
constexpr uint16_t lengths[] = {0, STP_MCEC_TYPE1_PARAMETERS(LENGTH)};
#define CODE(name, type, scope, length, code, ...) code,
const std::set<uint32_t> verdicts = {0, STP_MCEC_ERR_FAILURE, STP_MCEC_TYPE1_PARAMETERS(CODE)};

bool is_of_tlv_library(uint32_t result) {
  return result >> 16 == 0x40AA;
}

struct Array {
  Bytes bytes;
  bool is_valid = true;  // no type twice, no corrupted byte
};

uint16_t length_of(uint16_t type, Input &input) {
  const uint16_t usual = type < std::size(lengths) ? lengths[type] : 4;
  const uint8_t choice = input.byte();
  if (choice < 0xD0) return usual;
  if (choice < 0xE0) return uint16_t(usual + choice % 4 - 2);
  return choice < 0xFC ? choice % 32 : input.half();
}

Bytes value_of(uint16_t length, Input &input) {
  if (length <= 4) return input.bytes(length);
  Bytes value(length, input.byte());
  for (uint8_t left = input.byte() % 8; left > 0; --left)
    value[input.half() % length] = input.byte();
  return value;
}

// Builds an array, mostly of the twelve types.
Array build_array(Input &input) {
  Array array;
  Bytes &bytes = array.bytes;
  bytes.resize(STP_MCEC_TLV_ARRAY_HDR_SIZE);
  std::set<uint16_t> types;
  for (uint8_t left = input.byte() % 14; left > 0; --left) {
    const uint8_t choice = input.byte();
    const uint16_t type = choice < 0xF8 ? choice % 13 : input.half();
    const Bytes value = value_of(length_of(type, input), input);
    bytes.resize(bytes.size() + value.size() + 8);
    must(tlv_aligned_array_add_tlv(bytes.data(), uint32_t(bytes.size()), type,
                                   uint16_t(value.size()), value.data(), TLV_ALIGNED_FLAG) == 0,
         "an entry fits");
    bytes.resize(standin_tlv_array_bytes(bytes.data()));
    array.is_valid = types.insert(type).second && array.is_valid;
  }
  return array;
}

// Changes bytes of headers and values, and truncates the array.
void corrupt(Array &array, Input &input) {
  const uint8_t faults = array.bytes.empty() ? 0 : input.byte();
  array.is_valid = array.is_valid && faults % 4 == 0 && faults < 0xE0;
  for (uint8_t left = faults % 4; left > 0; --left) {
    array.bytes[input.half() % array.bytes.size()] = input.byte();
  }
  if (faults >= 0xE0) array.bytes.resize(input.half() % array.bytes.size());
}

// An array in a block of the same size, so that any access past its end is found.
struct ArrayBlock {
  Array array;
  uint8_t *block;

  explicit ArrayBlock(Array from) : array(std::move(from)) {
    const WithoutFailures without_failures;
    block = static_cast<uint8_t *>(mtrack_alloc(633, 3, uint32_t(array.bytes.size())));
    std::copy(array.bytes.begin(), array.bytes.end(), block);
  }
  ArrayBlock(const ArrayBlock &) = delete;
  ArrayBlock &operator=(const ArrayBlock &) = delete;
  ~ArrayBlock() {
    must(std::equal(array.bytes.begin(), array.bytes.end(), block), "an array does not change");
    mtrack_free(block);
  }
};

Array read_array(Input &input) {
  const WithoutFailures without_failures;
  Array array = build_array(input);
  corrupt(array, input);
  return array;
}

// --- checks ---

struct Verdicts {
  bmp4096_t pass, fail;
};

void check_vlans(uint32_t result, const bmp4096_t &twins, const Verdicts &vlans) {
  static const Verdicts untouched = {{7, {}}, {7, {}}};
  if (std::memcmp(&vlans, &untouched, sizeof vlans) == 0) return;
  bool fails = false;
  for (std::size_t i = 0; i < sizeof twins.bmp; ++i) {
    must((vlans.pass.bmp[i] ^ vlans.fail.bmp[i]) == twins.bmp[i] &&
             (vlans.pass.bmp[i] & vlans.fail.bmp[i]) == 0,
         "a twin VLAN passes or fails");
    fails = fails || vlans.fail.bmp[i] != 0;
  }
  must(!fails || result == STP_MCEC_ERR_TYPE1_STP_ENDIS, "the result names type 2 if a VLAN fails");
}

void check(Input &input) {
  const ArrayBlock local(read_array(input));
  const uint8_t flags = input.byte();
  Array other = local.array;
  if (flags & 1) {
    other = read_array(input);
  } else {
    corrupt(other, input);
  }
  const ArrayBlock peer(std::move(other));
  bmp4096_t twins{512, {}};
  std::fill(std::begin(twins.bmp), std::end(twins.bmp), input.byte());
  const uint32_t with_vlans = flags >> 1 & 1;
  const uint32_t port = first_port + (flags >> 2 & 1);
  const auto verdict_of = [&](auto function, const ArrayBlock &a, const ArrayBlock &b) {
    Verdicts vlans = {{7, {}}, {7, {}}};
    const uint32_t result = function(a.block, b.block, vlans);
    must(verdicts.contains(result) || is_of_tlv_library(result), "a result is a known verdict");
    check_vlans(result, twins, vlans);
    return result;
  };
  const auto full = [&](void *a, void *b, Verdicts &vlans) {
    return flags & 8 ? stp_mcec_type1_cfg_compat_check_with_ifindex(
                           port, 0, a, b, with_vlans, &twins, &vlans.pass, &vlans.fail)
                     : stp_mcec_type1_cfg_compat_check(0, a, b, with_vlans, &twins, &vlans.pass,
                                                       &vlans.fail);
  };
  const auto of_mst = [&](void *a, void *b, Verdicts &) {
    return stp_mcec_mst_type1_cfg_compat_check(0, 0, a, b);
  };
  const auto of_rapid_pvst = [&](void *a, void *b, Verdicts &vlans) {
    return stp_mcec_pvrst_type1_cfg_compat_check(0, 0, a, b, with_vlans, &twins, &vlans.pass,
                                                 &vlans.fail);
  };
  verdict_of(full, local, peer);
  verdict_of(of_mst, local, peer);
  verdict_of(of_rapid_pvst, local, peer);

  const WithoutFailures without_failures;
  if (!local.array.is_valid) return;
  const auto *mode = cached(0, STP_MCEC_TYPE1_STP_MODE);
  must(verdict_of(of_mst, local, local) == 0 && verdict_of(of_rapid_pvst, local, local) == 0 &&
           (verdict_of(full, local, local) == 0 || mode == nullptr || mode->len < 4 ||
            mode->val[3] < STP_MCEC_STP_MODE_MST || mode->val[3] > STP_MCEC_STP_MODE_RAPID_PVST ||
            mode->val[0] + mode->val[1] + mode->val[2] > 0),
       "an array agrees with itself");
}

// --- the report ---

bool is_text(const char (&text)[100]) {
  return std::memchr(text, '\0', sizeof text) != nullptr;
}

void report(Input &input) {
  const ArrayBlock array(read_array(input));
  OwnedBlock<void> handed;
  const uint32_t result = stp_mcec_type1_cfg_get_param_info(array.block, &handed.block);
  must(result != 0 || handed.block != nullptr, "a successful call returns a report");
  if (handed.block == nullptr) return;
  const auto *report = static_cast<const mcecm_app_info_report_t *>(handed.block);
  const WithoutFailures without_failures;
  must(report->count == tlv_aligned_array_get_num_tlvs(array.block, TLV_ALIGNED_FLAG) &&
           standin_block_size(report) == 4 + report->count * sizeof report->records[0],
       "a report has a record for each entry");
  for (uint32_t i = 0; i < report->count; ++i) {
    const mcecm_app_info_t &record = report->records[i];
    must(is_text(record.component) && is_text(record.param_name) && is_text(record.param_value),
         "the texts of a record are terminated");
    must(result != 0 || (record.app_code == STP_MCEC_APP_CODE && record.param_type >= 1 &&
                         record.param_type <= 12 && record.param_name[0] != '\0'),
         "a record has a known type");
  }
}

// --- the cache ---

Bytes exported(int32_t is_global, uint32_t port) {
  OwnedBlock<void> array;
  must(stp_mcec_type1_cfg_get_params(is_global, port, &array.block) == 0,
       "an export without injected failures succeeds");
  const auto *bytes = static_cast<const uint8_t *>(array.block);
  return {bytes, bytes + standin_tlv_array_bytes(bytes)};
}

void export_scope(Input &input) {
  const uint8_t choice = input.byte();
  const int32_t is_global = choice & 1;
  const uint32_t port = is_global != 0 ? 0 : first_port + choice / 2 % port_count;
  {
    OwnedBlock<void> array;
    const uint32_t result = stp_mcec_type1_cfg_get_params(is_global, port, &array.block);
    must((result == 0) == (array.block != nullptr),
         "an export returns an array exactly if it succeeds");
  }
  const WithoutFailures without_failures;
  Bytes before = exported(is_global, port);
  must(before.size() <= stp_mcec_get_mcec_params_tlv_size(is_global, port),
       "an export fits in the size that the library returns");
  if (choice < 0x80) return;
  stp_mcec_type1_cfg_cache_update(1, is_global, port, nullptr);
  must(exported(is_global, port).size() == STP_MCEC_TLV_ARRAY_HDR_SIZE, "a deleted scope is empty");
  const Bytes sent = before;
  must(stp_mcec_type1_cfg_cache_rebuild(before.data(), 0, port) == 0,
       "a rebuild from an export succeeds");
  must(before == sent && exported(is_global, port) == sent,
       "an export is the same after a rebuild");
}

void rebuild(Input &input) {
  const ArrayBlock array(read_array(input));
  const uint8_t choice = input.byte();
  const uint32_t port = choice & 1 ? 0 : first_port + choice / 2 % port_count;
  stp_mcec_type1_cfg_cache_rebuild(array.block, 0, port);
}

// The length in the header is at most the rest of the payload, as platform/mts.h guarantees. It may
// be less than the length of the array.
void update(Input &input) {
  const Bytes array = read_array(input).bytes;
  const uint8_t choice = input.byte();
  const uint32_t is_global = choice & 1;
  const uint32_t port = is_global != 0 ? 0 : first_port + choice / 2 % port_count;
  const auto size = uint32_t(array.size());
  const uint32_t length = choice < 0xD0 ? size : input.half() % (size + 1);
  const uint32_t header[] = {is_global, port, 0, length};
  Bytes payload(sizeof header);
  std::memcpy(payload.data(), header, sizeof header);
  payload.insert(payload.end(), array.begin(), array.end());
  const uint32_t opcode = input.byte() & 1 ? STP_MCEC_MTS_OPC_TYPE1_UPD : 0;
  void *msg = standin_message(opcode, payload.data(), payload.size());
  if (opcode == STP_MCEC_MTS_OPC_TYPE1_UPD) return extract(msg, false);
  stp_mcec_type1_cfg_cache_update(0, int32_t(is_global), port, msg);
  standin_message_free(msg);
}

}  // namespace

void run_step(Input &input) {
  constexpr void (*steps[])(Input &) = {check, report, rebuild, update, export_scope};
  steps[input.byte() % std::size(steps)](input);
}
