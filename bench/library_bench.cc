// Benchmarks of the library. Each row compares a function of the library ("ours") with another
// implementation: a floor (floors.h), or a peer (an existing function for the same task).
// scripts/bench prints the table.

#include <benchmark/benchmark.h>
#include <hwloc.h>

#include <bitset>
#include <cstring>
#include <random>
#include <regex>

#include "draimiofaf/cache.h"
#include "draimiofaf/check.h"
#include "draimiofaf/extract.h"
#include "draimiofaf/foundation.h"
#include "floors.h"
#include "mtrack.h"
#include "platform.h"

namespace {

using namespace bench;

// --- rows ---

template <class Prepare, class Work>
void measure(const std::string &name, bool is_correct, Prepare prepare, Work work, double per) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State &state) {
    if (!is_correct) return state.SkipWithError("the results differ");
    prepare();
    for (auto _ : state) benchmark::DoNotOptimize(work());
    state.counters["per"] = per;
  });
}

// Registers NAME/ours and NAME/other. agree() runs both and compares their results; prepare() sets
// up their input; `ours_per` and `other_per` are the numbers of items that one call processes.
template <class Prepare, class Agree, class Ours, class Other>
void add_row(const std::string &name, Prepare prepare, Agree agree, Ours ours, Other other,
             double ours_per = 1, double other_per = 1) {
  prepare();
  const bool is_correct = agree();
  measure(name + "/ours", is_correct, prepare, ours, ours_per);
  measure(name + "/other", is_correct, prepare, other, other_per);
}

void prepare_nothing() {}

bool is_compared = false;  // results depend on the bytes of blocks; false while time is measured

// Returns the result of a call and its log lines, without the line numbers at their beginning.
template <class Work>
std::vector<std::string> run_and_log(Work work) {
  const uint32_t first = platform_history_count();
  is_compared = true;
  std::vector<std::string> lines = {std::to_string(work())};
  is_compared = false;
  static const std::regex number("^(\\w+)\\(\\d+\\)");
  for (uint32_t i = first; i < platform_history_count(); ++i) {
    lines.push_back(std::regex_replace(platform_history_line(i), number, "$1"));
  }
  return lines;
}

// Adds a row for a function and its floor, on a switch in a mode.
template <class Ours, class Floor>
void add_floor_row(const std::string &name, uint32_t mode, Ours ours, Floor floor) {
  add_row(
      name, [=] { cache_parameters(mode); },
      [=] { return run_and_log(ours) == run_and_log(floor); }, ours, floor);
}

// Frees a block. Returns a hash of its bytes if results are compared.
uint64_t release(void *block, std::size_t size) {
  uint64_t sum = 0;
  if (is_compared) {
    for (std::size_t i = 0; i < size; ++i) sum = sum * 31 + static_cast<uint8_t *>(block)[i];
  }
  mtrack_free(block);
  return sum;
}

// --- calls ---

void add_check(const std::string &name, uint32_t mode) {
  static const bmp4096_t twins{512, {}};
  static bmp4096_t pass;
  static bmp4096_t fail;
  static Bytes local = make_array();
  static Bytes remote = make_array();
  add_floor_row(
      name, mode,
      [] {
        return stp_mcec_type1_cfg_compat_check(0, local.data(), remote.data(), 1, &twins, &pass,
                                               &fail);
      },
      [=] { return check_floor(local.data(), remote.data(), mode); });
}

void add_export_and_report() {
  static Bytes array = make_array();
  const auto exported = [](auto get) {
    void *out = nullptr;
    const uint32_t result = get(1, 0, &out);
    return result + release(out, array.size());
  };
  add_floor_row(
      "export of nine parameters", STP_MCEC_STP_MODE_MST,
      [=] { return exported(stp_mcec_type1_cfg_get_params); },
      [=] { return exported(export_floor); });
  const auto report = [](auto get) {
    void *out = nullptr;
    const uint32_t result = get(&out);
    return result + release(out, 4 + parameter_count * sizeof(mcecm_app_info_t));
  };
  static void *texts = nullptr;
  stp_mcec_type1_cfg_get_param_info(array.data(), &texts);
  const auto ours = [](void **out) { return stp_mcec_type1_cfg_get_param_info(array.data(), out); };
  const auto floor = [](void **out) {
    return report_floor(array.data(), static_cast<mcecm_app_info_report_t *>(texts), out);
  };
  add_floor_row(
      "report of nine parameters", STP_MCEC_STP_MODE_MST, [=] { return report(ours); },
      [=] { return report(floor); });
}

template <class Extract>
uint64_t extraction(mts_msg_t *msg, Extract extract) {
  uint8_t *array = nullptr;
  uint32_t count = 0;
  uint32_t is_cmd = 0;
  mcecm_app_cmd_extract_info_t *records = nullptr;
  const uint32_t result = extract(msg, &array, &count, &is_cmd, &records);
  return result + is_cmd + release(array, 12) + release(records, count * sizeof *records);
}

void add_command() {
  static mts_msg_t *const msg = platform_command(STP_MCEC_CMD_GBL_LOOPGUARD, 1, nullptr, 0);
  add_floor_row(
      "a global command", STP_MCEC_STP_MODE_MST,
      [] { return extraction(msg, stp_mcec_type1_cfg_param_extractor); },
      [] { return extraction(msg, command_floor); });
}

// Each of these ports is a member of a multi-chassis channel.
constexpr uint32_t first_port = 0x1000;
constexpr uint32_t port_count = 100000;

// Returns a function that extracts a command for a number of ports.
auto interface_command(uint32_t ports) {
  const uint32_t ranges[] = {0, 1, 0, 0, first_port, first_port + ports - 1};
  const platform_attribute_t attribute{STP_MCEC_ATTR_IFINDEX, sizeof ranges, ranges};
  mts_msg_t *const msg = platform_command(STP_MCEC_CMD_IF_EDGE_TRUNK, 1, &attribute, 1);
  return [msg] { return extraction(msg, stp_mcec_type1_cfg_param_extractor); };
}

void add_interface_command() {
  constexpr uint32_t many = port_count;
  constexpr uint32_t few = 100;
  const auto of_many = interface_command(many);
  const auto of_few = interface_command(few);
  // Two lines for each port, six for the command, and the result.
  const auto agree = [of_few] { return run_and_log(of_few).size() == 2 * few + 7; };
  add_row(
      "a port of 100,000 in an interface command, compared with one of 100",
      [of_many] { of_many(); }, agree, of_many, of_few, many, few);
}

void add_twin_comparison() {
  static Bytes local = vlans({10, 20});
  static Bytes remote = vlans({10});
  static const Bytes twins(sizeof(bmp4096_t), 0xFF);
  const auto compared = [](auto compare) {
    static bmp4096_t pass;
    static bmp4096_t fail;
    uint64_t sum =
        compare(STP_MCEC_TYPE1_STP_ENDIS, local.data(), remote.data(), twins.data(), &pass, &fail);
    if (is_compared) {
      for (const bmp4096_t &set : {pass, fail}) {
        for (const uint8_t byte : set.bmp) sum = sum * 31 + byte;
      }
    }
    return sum;
  };
  add_floor_row(
      "comparison over 4,096 twin VLANs", STP_MCEC_STP_MODE_MST,
      [=] { return compared(stp_mcec_pvrst_endis_check_for_twin_vlans); },
      [=] { return compared(twins_floor); });
}

// --- VLAN sets and maps ---

using Vlans = std::bitset<4096>;

bmp4096_t record_of(const Vlans &vlans) {
  bmp4096_t record{512, {}};
  for (unsigned vlan = 0; vlan < vlans.size(); ++vlan) {
    if (vlans[vlan]) record.bmp[vlan / 8] = uint8_t(record.bmp[vlan / 8] | 0x80U >> vlan % 8);
  }
  return record;
}

template <class Chosen>
Vlans vlans_where(Chosen chosen) {
  Vlans vlans;
  for (unsigned vlan = 0; vlan < vlans.size(); ++vlan) vlans[vlan] = chosen(vlan);
  return vlans;
}

Vlans random_half() {
  std::mt19937 random(7);
  return vlans_where([&random](unsigned) { return (random() & 1) != 0; });
}

// The text of the peer has the same format.
void add_range_text(const char *name, const Vlans &vlans) {
  static char peer_text[sizeof stp_vlan_bmp_str_buf];
  const bmp4096_t record = record_of(vlans);
  hwloc_bitmap_t bitmap = hwloc_bitmap_alloc();
  for (unsigned vlan = 0; vlan < vlans.size(); ++vlan) {
    if (vlans[vlan]) hwloc_bitmap_set(bitmap, vlan);
  }
  const auto ours = [record] { return stp_mcec_lib_bmp4096_to_str(&record); };
  const auto peer = [bitmap] {
    return hwloc_bitmap_list_snprintf(peer_text, sizeof peer_text, bitmap);
  };
  const auto agree = [=] { return peer() > 0 && std::strcmp(ours(), peer_text) == 0; };
  add_row(name, prepare_nothing, agree, ours, peer);
}

void add_user_vlan_count() {
  static const Vlans vlans = random_half();
  const auto prepare = [] { mcec_stp_vlan_count = record_of(vlans); };
  const auto ours = [] { return stp_mcecm_get_vlan_count(); };
  const auto peer = [] {
    benchmark::ClobberMemory();
    return vlans.count();
  };
  add_row(
      "count of user VLANs", prepare, [=] { return ours() == peer(); }, ours, peer);
}

void add_default_test() {
  static uint8_t map[8192];
  static uint8_t zeros[8192];
  const auto ours = [] {
    return stp_mcec_type1_cfg_param_is_default(STP_MCEC_TYPE1_MST_REGION_VI_MAP, sizeof map, map);
  };
  const auto floor = [] {
    benchmark::DoNotOptimize(&map);
    benchmark::ClobberMemory();
    return std::memcmp(map, zeros, sizeof map) == 0 ? 1U : 0U;
  };
  const auto agree = [=] {
    const bool default_agrees = ours() == 1 && floor() == 1;
    map[8191] = 1;
    const bool other_agrees = ours() == 0 && floor() == 0;
    map[8191] = 0;
    return default_agrees && other_agrees;
  };
  add_row("default test of a VLAN map", prepare_nothing, agree, ours, floor);
}

// Sets up a switch with member ports only.
void set_up() {
  static std::vector<platform_port_t> ports(port_count);
  for (uint32_t i = 0; i < port_count; ++i) {
    ports[i].if_index = first_port + i;
    ports[i].has_record = 1;
    ports[i].record[0] = 1;
    ports[i].record[1] = 7;
  }
  platform_switch_t tables{};
  tables.ports = ports.data();
  tables.port_count = ports.size();
  tables.has_trunk = 1;
  platform_set_switch(&tables);
  stp_mcec_lib_sdwrap_init();
}

}  // namespace

int main(int argc, char **argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  set_up();
  add_check("check, nine equal parameters, MST", STP_MCEC_STP_MODE_MST);
  add_check("check, nine equal parameters, Rapid-PVST", STP_MCEC_STP_MODE_RAPID_PVST);
  add_export_and_report();
  add_command();
  add_interface_command();
  add_twin_comparison();
  add_range_text("range text, every second VLAN",
                 vlans_where([](unsigned vlan) { return vlan % 2 == 1; }));
  add_range_text("range text, random half", random_half());
  add_range_text("range text, two VLANs in three",
                 vlans_where([](unsigned vlan) { return vlan % 3 != 2; }));
  add_range_text("range text, twenty runs",
                 vlans_where([](unsigned vlan) { return vlan % 200 >= 100 && vlan % 200 < 150; }));
  add_user_vlan_count();
  add_default_test();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}
