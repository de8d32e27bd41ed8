// Arrays as a hostile peer may send them. They stay as they are, an array agrees with itself, twin
// VLANs either pass or fail, a report has a record for each entry, and an export that is put back
// is exported again.

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

struct Written {
  Bytes bytes;
  bool is_sound = true;  // no type twice, and all as it was written
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

// Entries of the twelve types, mostly.
Written write_array(Input &input) {
  Written array;
  Bytes &bytes = array.bytes;
  bytes.resize(STP_MCEC_TLV_ARRAY_HDR_SIZE);
  std::set<uint16_t> types;
  for (uint8_t left = input.byte() % 14; left > 0; --left) {
    const uint8_t choice = input.byte();
    const uint16_t type = choice < 0xF8 ? choice % 13 : input.half();
    const Bytes value = value_of(length_of(type, input), input);
    const std::size_t had = bytes.size();
    bytes.resize(had + value.size() + 8);
    must(tlv_aligned_array_add_tlv(bytes.data(), uint32_t(bytes.size()), type,
                                   uint16_t(value.size()), value.data(), TLV_ALIGNED_FLAG) == 0,
         "an entry fits");
    bytes.resize(standin_tlv_array_bytes(bytes.data()));
    array.is_sound = types.insert(type).second && array.is_sound;
  }
  return array;
}

// Headers and values that are not what they were, and an end that comes too early.
void spoil(Written &array, Input &input) {
  const uint8_t faults = array.bytes.empty() ? 0 : input.byte();
  array.is_sound = array.is_sound && faults % 4 == 0 && faults < 0xE0;
  for (uint8_t left = faults % 4; left > 0; --left) {
    array.bytes[input.half() % array.bytes.size()] = input.byte();
  }
  if (faults >= 0xE0) array.bytes.resize(input.half() % array.bytes.size());
}

// In a block of the platform, as one from a peer would lie: it ends where the block does.
struct Array {
  Written written;
  uint8_t *block;

  explicit Array(Written from) : written(std::move(from)) {
    const OwnWork own_work;
    block = static_cast<uint8_t *>(mtrack_alloc(633, 3, uint32_t(written.bytes.size())));
    std::copy(written.bytes.begin(), written.bytes.end(), block);
  }
  Array(const Array &) = delete;
  Array &operator=(const Array &) = delete;
  ~Array() {
    must(std::equal(written.bytes.begin(), written.bytes.end(), block), "an array stays as it is");
    mtrack_free(block);
  }
};

Written read_array(Input &input) {
  const OwnWork own_work;
  Written array = write_array(input);
  spoil(array, input);
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
  must(!fails || result == STP_MCEC_ERR_TYPE1_STP_ENDIS, "VLANs that fail decide");
}

void check(Input &input) {
  const Array local(read_array(input));
  const uint8_t how = input.byte();
  Written other = local.written;
  if (how & 1) {
    other = read_array(input);
  } else {
    spoil(other, input);
  }
  const Array peer(std::move(other));
  bmp4096_t twins{512, {}};
  std::fill(std::begin(twins.bmp), std::end(twins.bmp), input.byte());
  const uint32_t of_vlans = how >> 1 & 1;
  const uint32_t port = first_port + (how >> 2 & 1);
  const auto verdict_of = [&](auto asked, const Array &a, const Array &b) {
    Verdicts vlans = {{7, {}}, {7, {}}};
    const uint32_t result = asked(a.block, b.block, vlans);
    must(verdicts.contains(result) || is_of_tlv_library(result), "a result is a verdict");
    check_vlans(result, twins, vlans);
    return result;
  };
  const auto whole = [&](void *a, void *b, Verdicts &vlans) {
    return how & 8 ? stp_mcec_type1_cfg_compat_check_with_ifindex(port, 0, a, b, of_vlans, &twins,
                                                                  &vlans.pass, &vlans.fail)
                   : stp_mcec_type1_cfg_compat_check(0, a, b, of_vlans, &twins, &vlans.pass,
                                                     &vlans.fail);
  };
  const auto of_mst = [&](void *a, void *b, Verdicts &) {
    return stp_mcec_mst_type1_cfg_compat_check(0, 0, a, b);
  };
  const auto of_rapid_pvst = [&](void *a, void *b, Verdicts &vlans) {
    return stp_mcec_pvrst_type1_cfg_compat_check(0, 0, a, b, of_vlans, &twins, &vlans.pass,
                                                 &vlans.fail);
  };
  verdict_of(whole, local, peer);
  verdict_of(of_mst, local, peer);
  verdict_of(of_rapid_pvst, local, peer);

  const OwnWork own_work;
  if (!local.written.is_sound) return;
  const auto *mode = cached(0, STP_MCEC_TYPE1_STP_MODE);
  must(verdict_of(of_mst, local, local) == 0 && verdict_of(of_rapid_pvst, local, local) == 0 &&
           (verdict_of(whole, local, local) == 0 || mode == nullptr || mode->len < 4 ||
            mode->val[3] < STP_MCEC_STP_MODE_MST || mode->val[3] > STP_MCEC_STP_MODE_RAPID_PVST ||
            mode->val[0] + mode->val[1] + mode->val[2] > 0),
       "an array agrees with itself");
}

// --- the report ---

bool is_text(const char (&text)[100]) {
  return std::memchr(text, '\0', sizeof text) != nullptr;
}

void report(Input &input) {
  const Array array(read_array(input));
  Handed<void> handed;
  const uint32_t result = stp_mcec_type1_cfg_get_param_info(array.block, &handed.block);
  must(result != 0 || handed.block != nullptr, "a report that succeeds is there");
  if (handed.block == nullptr) return;
  const auto *report = static_cast<const mcecm_app_info_report_t *>(handed.block);
  const OwnWork own_work;
  must(report->count == tlv_aligned_array_get_num_tlvs(array.block, TLV_ALIGNED_FLAG) &&
           standin_block_size(report) == 4 + report->count * sizeof report->records[0],
       "a report has a record for each entry");
  for (uint32_t i = 0; i < report->count; ++i) {
    const mcecm_app_info_t &record = report->records[i];
    must(is_text(record.component) && is_text(record.param_name) && is_text(record.param_value),
         "a record has texts");
    must(result != 0 || (record.app_code == STP_MCEC_APP_CODE && record.param_type >= 1 &&
                         record.param_type <= 12 && record.param_name[0] != '\0'),
         "a record names a parameter");
  }
}

// --- the cache ---

Bytes exported(int32_t is_global, uint32_t port) {
  Handed<void> array;
  must(stp_mcec_type1_cfg_get_params(is_global, port, &array.block) == 0,
       "a scope can be exported");
  const auto *bytes = static_cast<const uint8_t *>(array.block);
  return {bytes, bytes + standin_tlv_array_bytes(bytes)};
}

void export_scope(Input &input) {
  const uint8_t choice = input.byte();
  const int32_t is_global = choice & 1;
  const uint32_t port = is_global != 0 ? 0 : first_port + choice / 2 % port_count;
  {
    Handed<void> array;
    const uint32_t result = stp_mcec_type1_cfg_get_params(is_global, port, &array.block);
    must((result == 0) == (array.block != nullptr), "a failed export hands nothing out");
  }
  const OwnWork own_work;
  Bytes before = exported(is_global, port);
  must(before.size() <= stp_mcec_get_mcec_params_tlv_size(is_global, port),
       "an export is no larger than the announced size");
  if (choice < 0x80) return;
  stp_mcec_type1_cfg_cache_update(1, is_global, port, nullptr);
  must(exported(is_global, port).size() == STP_MCEC_TLV_ARRAY_HDR_SIZE, "a deleted scope is empty");
  const Bytes sent = before;
  must(stp_mcec_type1_cfg_cache_rebuild(before.data(), 0, port) == 0, "an export can be put back");
  must(before == sent && exported(is_global, port) == sent, "an export survives a rebuild");
}

void rebuild(Input &input) {
  const Array array(read_array(input));
  const uint8_t choice = input.byte();
  const uint32_t port = choice & 1 ? 0 : first_port + choice / 2 % port_count;
  stp_mcec_type1_cfg_cache_rebuild(array.block, 0, port);
}

// The length in the header is at most what the payload has, as platform/mts.h promises; it may say
// less than the array does.
void update(Input &input) {
  const Bytes array = read_array(input).bytes;
  const uint8_t choice = input.byte();
  const uint32_t is_global = choice & 1;
  const uint32_t port = is_global != 0 ? 0 : first_port + choice / 2 % port_count;
  const auto had = uint32_t(array.size());
  const uint32_t length = choice < 0xD0 ? had : input.half() % (had + 1);
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

void take_step(Input &input) {
  constexpr void (*works[])(Input &) = {check, report, rebuild, update, export_scope};
  works[input.byte() % std::size(works)](input);
}
