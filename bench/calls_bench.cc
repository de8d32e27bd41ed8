// What a command or a check costs, over the calls of the platform and the lines that it takes.

#include <cstring>
#include <memory>
#include <regex>

#include "draimiofaf/cache.h"
#include "draimiofaf/check.h"
#include "draimiofaf/extract.h"
#include "draimiofaf/foundation.h"
#include "floors.h"
#include "mtrack.h"
#include "platform.h"
#include "rows.h"

namespace {

using namespace bench;

bool is_compared = false;  // what a work returns counts, not what it costs

// What a work returns and logs, without the numbers in the heads of its lines.
template <class Work>
std::vector<std::string> run_and_log(Work work) {
  const uint32_t first = platform_history_count();
  is_compared = true;
  const auto result = work();
  is_compared = false;
  std::vector<std::string> lines;
  for (uint32_t i = first; i < platform_history_count(); ++i) {
    lines.emplace_back(platform_history_line(i));
  }
  static const std::regex number("^(\\w+)\\(\\d+\\)");
  for (std::string &text : lines) text = std::regex_replace(text, number, "$1");
  lines.push_back(std::to_string(result));
  return lines;
}

template <class Prepare, class Ours, class Floor>
void row(const std::string &name, Prepare prepare, Ours ours, Floor floor) {
  bench::row(
      name, prepare, [=] { return run_and_log(ours) == run_and_log(floor); }, ours, floor);
}

// A sum that depends on the bytes of a block. Releases the block.
uint64_t released(void *block, std::size_t size) {
  uint64_t sum = 0;
  if (is_compared) {
    for (std::size_t i = 0; i < size; ++i) sum = sum * 31 + static_cast<uint8_t *>(block)[i];
  }
  mtrack_free(block);
  return sum;
}

// The check of the first parameters, which are equal on both sides.
auto check(uint32_t count) {
  static const bmp4096_t twins{512, {}};
  static bmp4096_t pass;
  static bmp4096_t fail;
  const auto local = std::make_shared<Bytes>(array_of(count));
  const auto remote = std::make_shared<Bytes>(array_of(count));
  return [=] {
    return stp_mcec_type1_cfg_compat_check(0, local->data(), remote->data(), 1, &twins, &pass,
                                           &fail);
  };
}

void check_row(const std::string &name, uint32_t mode) {
  static const Bytes local = array_of(parameter_count);
  static const Bytes remote = array_of(parameter_count);
  row(
      name, [=] { cache(parameter_count, mode); }, check(parameter_count),
      [=] { return check_floor(local.data(), remote.data(), mode); });
}

template <class Export>
uint64_t exported(Export get) {
  static const std::size_t size = array_of(parameter_count).size();
  void *out = nullptr;
  const uint32_t result = get(&out);
  return result + released(out, size);
}

uint64_t export_of_switch() {
  return exported([](void **out) { return stp_mcec_type1_cfg_get_params(1, 0, out); });
}

void export_row() {
  row(
      "export of nine parameters", [] { cache(parameter_count, STP_MCEC_STP_MODE_MST); },
      export_of_switch, [] { return exported(export_floor); });
}

void report_row() {
  static Bytes array = array_of(parameter_count);
  const auto all = [](auto get) {
    void *out = nullptr;
    const uint32_t result = get(array.data(), &out);
    return result + released(out, 4 + parameter_count * sizeof(mcecm_app_info_t));
  };
  row(
      "report of nine parameters", [] { cache(parameter_count, STP_MCEC_STP_MODE_MST); },
      [=] { return all(stp_mcec_type1_cfg_get_param_info); }, [=] { return all(report_floor); });
}

template <class Extract>
uint64_t extraction(mts_msg_t *msg, Extract extract) {
  uint8_t *array = nullptr;
  uint32_t count = 0;
  uint32_t is_cmd = 0;
  mcecm_app_cmd_extract_info_t *records = nullptr;
  const uint32_t result = extract(msg, &array, &count, &is_cmd, &records);
  return result + is_cmd + released(array, 12) + released(records, count * sizeof *records);
}

void command_row() {
  static mts_msg_t *const msg = platform_command(STP_MCEC_CMD_GBL_LOOPGUARD, 1, nullptr, 0);
  row(
      "a global command", [] { cache(parameter_count, STP_MCEC_STP_MODE_MST); },
      [] { return extraction(msg, stp_mcec_type1_cfg_param_extractor); },
      [] { return extraction(msg, command_floor); });
}

// Ports have these indexes, and each is a member of a multi-chassis channel.
constexpr uint32_t first_port = 0x1000;
constexpr uint32_t port_count = 100000;

// A command for a number of ports, whose parameters are cached.
auto interface_command(uint32_t ports) {
  const uint32_t ranges[] = {0, 1, 0, 0, first_port, first_port + ports - 1};
  const platform_attribute_t attribute{STP_MCEC_ATTR_IFINDEX, sizeof ranges, ranges};
  mts_msg_t *const msg = platform_command(STP_MCEC_CMD_IF_EDGE_TRUNK, 1, &attribute, 1);
  return [msg] { return extraction(msg, stp_mcec_type1_cfg_param_extractor); };
}

void interface_row() {
  constexpr uint32_t many = port_count;
  constexpr uint32_t few = 100;
  const auto of_many = interface_command(many);
  const auto of_few = interface_command(few);
  // Two lines for each port, six for the command, and the result.
  const auto agree = [of_few] { return run_and_log(of_few).size() == 2 * few + 7; };
  bench::row(
      "a port of 100,000 of an interface command, beside one of 100", [of_many] { of_many(); },
      agree, of_many, of_few, many, few);
}

void twins_row() {
  static Bytes local = vlans({10, 20});
  static Bytes remote = vlans({10});
  static Bytes twins(sizeof(bmp4096_t), 0xFF);
  static bmp4096_t pass;
  static bmp4096_t fail;
  const auto ours = [] {
    return stp_mcec_pvrst_endis_check_for_twin_vlans(STP_MCEC_TYPE1_STP_ENDIS, local.data(),
                                                     remote.data(), twins.data(), &pass, &fail);
  };
  const auto floor = [] {
    return twins_floor(local.data(), remote.data(), twins.data(), &pass, &fail);
  };
  const auto agree = [=] {
    const auto logged = run_and_log(ours);
    const bmp4096_t our_pass = pass;
    const bmp4096_t our_fail = fail;
    return logged == run_and_log(floor) && std::memcmp(&our_pass, &pass, sizeof pass) == 0 &&
           std::memcmp(&our_fail, &fail, sizeof fail) == 0;
  };
  bench::row(
      "comparison over 4,096 twin VLANs", [] {}, agree, ours, floor);
}

// How cost grows with ports and with parameters.
void growth() {
  for (uint32_t ports = 1; ports <= port_count; ports *= 10) {
    const auto command = interface_command(ports);
    bench::measure(
        "interface command, ports/" + std::to_string(ports), true, [=] { command(); }, command,
        ports);
  }
  for (uint32_t count = 1; count <= parameter_count; count += 2) {
    const auto prepare = [=] { cache(count, STP_MCEC_STP_MODE_MST); };
    const std::string parameters = "parameters/" + std::to_string(count);
    bench::measure("check, " + parameters, true, prepare, check(count), count);
    bench::measure("export, " + parameters, true, prepare, export_of_switch, count);
  }
}

// A switch of member ports.
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

namespace bench {

void calls() {
  set_up();
  check_row("check, nine equal parameters, MST", STP_MCEC_STP_MODE_MST);
  check_row("check, nine equal parameters, Rapid-PVST", STP_MCEC_STP_MODE_RAPID_PVST);
  export_row();
  report_row();
  command_row();
  interface_row();
  twins_row();
  growth();
}

}  // namespace bench
