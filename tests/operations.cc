#include "operations.h"

#include <sstream>

namespace test {
namespace {

std::string exported(int32_t gbl, uint32_t if_index) {
  void *out = nullptr;
  const uint32_t result = stp_mcec_type1_cfg_get_params(gbl, if_index, &out);
  const std::string text =
      in_hex(result) + " |" + (out != nullptr ? " " + entries_of(out) : " null");
  if (out != nullptr) mtrack_free(out);
  return text;
}

std::string report() {
  ConstantArray given({{6, word(1)}, {2, vlans("3")}});
  void *block = nullptr;
  const uint32_t result = stp_mcec_type1_cfg_get_param_info(given.bytes.data(), &block);
  if (block == nullptr) return in_hex(result) + " | null";
  const auto *records = static_cast<mcecm_app_info_report_t *>(block);
  uint32_t filled = 0;
  while (filled < records->count && records->records[filled].param_value[0] != 0) ++filled;
  mtrack_free(block);
  return in_hex(result) + " | " + std::to_string(filled) + " records";
}

template <class Check>
std::string verdict(Check check) {
  ConstantArray local({{6, word(1)}, {3, name("east")}, {2, vlans("10,20")}});
  ConstantArray remote({{2, vlans("10")}, {3, name("east")}, {6, word(1)}});
  const Bytes twins = vlans("10,20");
  bmp4096_t pass{};
  bmp4096_t fail{};
  const uint32_t code =
      check(local.bytes.data(), remote.bytes.data(), 1U, twins.data(), &pass, &fail);
  const std::string passed = vlans_of(pass);
  return in_hex(code) + " | " + passed + " | " + vlans_of(fail);
}

std::string set_one_port(uint32_t id, bool positive, uint32_t attribute) {
  return command(id, positive,
                 {{STP_MCEC_ATTR_IFINDEX, host_words({0, 1, 0, 0, 0x1000, 0x1003})},
                  {attribute, host_words({2})}});
}

// --- outcomes of failures ---

// Commands: no memory for an entry, the records or the array, or no TLV can be added.
constexpr char no_entry[] = "40dd0002 | internal error: Failed malloc | count 0 | |";
constexpr char no_records[] = "1 | internal error: Failed malloc | count 0 | null |";
constexpr char no_array[] = "1 | internal error: Failed malloc |{counts} |{records} |";
constexpr char no_tlv[] = "40aa00ff | internal error: Failed TLV add |{counts} |{records} |";
// A reset of the region counts its records after the array is built.
constexpr char no_region_array[] = "1 | internal error: Failed malloc | count 0 |{records 0} |";
// Interface commands: no memory for the entry of the first or the second port.
constexpr char no_port_entry[] =
    "40dd0002 | internal error: Failed malloc |{counts} |{records 0} |";
constexpr char one_port_entry[] =
    "40dd0002 | internal error: Failed malloc |{counts} |{records 1} |";
constexpr char some_ports[] = "0 | ok | cmd 1 {any}";

// Update messages: nothing returned; the first or the second TLV cannot be cached, or read.
constexpr char no_update[] = "1 | | | null |";
constexpr char no_update_entry[] = "40dd0002 | |{counts} |{records 0} |";
constexpr char one_update_entry[] = "40dd0002 | |{counts} |{records 1} |";
constexpr char unread_update[] = "40aa00ff | |{counts} |{records 0} |";
constexpr char half_read_update[] = "40aa00ff | |{counts} |{records 1} |";

constexpr char same[] = "{same}";
constexpr char without_entry[] = "{without entry}";
constexpr char no_memory[] = "40dd0002";
constexpr char no_reading[] = "40aa00ff";
constexpr char no_block[] = "1 | null";

using Operations = std::vector<Operation>;

void add_both(Operations &operations, const std::string &name,
              const std::function<std::string()> &act, const FailuresOf &when_empty,
              const FailuresOf &when_full) {
  operations.push_back({name, Stage::empty, act, when_empty});
  operations.push_back({name, Stage::full, act, when_full});
}

void add_command(Operations &operations, uint32_t id, bool positive,
                 const std::vector<Attribute> &attributes = {}, bool is_logged = false) {
  const Failures of_alloc = {{no_entry, 0, true},
                             {no_entry, 0, true},
                             {no_records, 1, is_logged},
                             {no_array, 1, is_logged}};
  const Failures of_full_alloc = {{no_records, 0, is_logged}, {no_array, 0, is_logged}};
  add_both(operations, std::to_string(id) + (positive ? "" : " no"),
           [=] { return command(id, positive, attributes); },
           {{STANDIN_ALLOC, of_alloc}, {STANDIN_TLV_ADD, {{no_tlv, 1, is_logged}}}},
           {{STANDIN_ALLOC, of_full_alloc}, {STANDIN_TLV_ADD, {{no_tlv, 0, is_logged}}}});
}

void add_commands(Operations &operations, bool positive) {
  const std::string no = positive ? "" : " no";
  add_command(operations, STP_MCEC_CMD_STP_MODE, positive,
              {{STP_MCEC_ATTR_STP_MODE, host_words({4})}}, true);
  add_command(operations, STP_MCEC_CMD_STP_ENDIS, positive,
              {{STP_MCEC_ATTR_VLAN_LIST, host_words({0, 1, 15, 30})}});
  for (const uint32_t id : std::initializer_list<uint32_t>{
           STP_MCEC_CMD_GBL_EDGE, STP_MCEC_CMD_GBL_EDGE_BPDUGUARD, STP_MCEC_CMD_GBL_EDGE_BPDUFILTER,
           STP_MCEC_CMD_GBL_NETWORK, STP_MCEC_CMD_GBL_LOOPGUARD, STP_MCEC_CMD_GBL_BRIDGE_ASSURANCE,
           STP_MCEC_CMD_GBL_MST_SIMULATE_PVST}) {
    add_command(operations, id, positive);
  }
  add_both(operations, "43" + no, [=] { return command(STP_MCEC_CMD_MST_REGION_RESET, positive); },
           {},
           {{STANDIN_ALLOC, {{no_records, 0, true}, {no_region_array}}},
            {STANDIN_TLV_ADD, {{no_tlv}, {no_tlv}, {no_tlv}}}});
  add_both(operations, "62" + no, [=] { return command(routed_command, positive); }, {}, {});
}

void add_interface_commands(Operations &operations, bool positive) {
  const struct {
    uint32_t id, attribute;
  } rows[] = {{STP_MCEC_CMD_IF_PORT_MODE, STP_MCEC_ATTR_IF_PORT_MODE},
              {STP_MCEC_CMD_IF_GUARD, STP_MCEC_ATTR_IF_GUARD},
              {STP_MCEC_CMD_IF_PORT_TYPE, STP_MCEC_ATTR_IF_PORT_TYPE},
              {STP_MCEC_CMD_IF_EDGE_TRUNK, 1},
              {STP_MCEC_CMD_IF_MST_SIMULATE_PVST, STP_MCEC_ATTR_IF_MST_SIMULATE_PVST}};
  const Failures of_alloc = {{no_records, 0, true},     {no_port_entry, 0, true},
                             {no_port_entry, 0, true},  {one_port_entry, 1, true},
                             {one_port_entry, 1, true}, {no_array, 2}};
  // A port whose channel is not found is skipped, by the pass that counts or the pass that fills.
  const Failure one = {some_ports, 1};
  const Failure two = {some_ports, 2};
  for (const auto &row : rows) {
    add_both(operations, std::to_string(row.id) + (positive ? "" : " no"),
             [=] { return set_one_port(row.id, positive, row.attribute); },
             {{STANDIN_ALLOC, of_alloc},
              {STANDIN_TLV_ADD, {{no_tlv, 2}}},
              {STANDIN_MEMBERSHIP, {two, one, two, one, two, one, two, one}}},
             {{STANDIN_ALLOC, {{no_records, 0, true}, {no_array}}},
              {STANDIN_TLV_ADD, {{no_tlv}}},
              {STANDIN_MEMBERSHIP, Failures(8, {some_ports})}});
  }
}

void add_updates(Operations &operations) {
  const Failures of_update = {{no_update, 0, true},        {no_update, 0, true},
                              {no_update_entry, 0, true},  {no_update_entry, 0, true},
                              {one_update_entry, 1, true}, {one_update_entry, 1, true}};
  add_both(operations, "update message",
           [] {
             return update(0, 0x1001, {{10, word(3)}, {11, word(2)}});
           },
           {{STANDIN_ALLOC, of_update},
            {STANDIN_TLV_NEXT, {{unread_update, 0, true}, {half_read_update, 1, true}}}},
           {{STANDIN_ALLOC, {{no_update, 0, true}, {no_update, 0, true}}},
            {STANDIN_TLV_NEXT, {{unread_update, 0, true}, {half_read_update, 0, true}}}});

  const Entries two = {{1, word(5)}, {11, word(2)}};
  const Failures of_entries = {
      {no_memory, 0, true}, {no_memory, 0, true}, {no_memory, 1, true}, {no_memory, 1, true}};
  const Failures of_first_entry = {{no_memory, 0, true}, {no_memory, 0, true}};
  const Failures of_reading = {{no_reading, 0, true}, {no_reading, 1, true}};
  const auto add = [&](const char *name, Stage stage, const auto &act, const FailuresOf &failures) {
    operations.push_back({name, stage, [=] { return in_hex(act()); }, failures});
  };
  add("cache update", Stage::empty, [=] { return cache_update(1, 0, two); },
      {{STANDIN_ALLOC, of_entries}, {STANDIN_TLV_NEXT, of_reading}});
  add("cache update", Stage::full, [=] { return cache_update(0, 0x1001, two); },
      {{STANDIN_ALLOC, of_first_entry}, {STANDIN_TLV_NEXT, of_reading}});
  add("rebuild", Stage::empty, [=] { return rebuild(0, two); },
      {{STANDIN_ALLOC, of_entries}, {STANDIN_TLV_NEXT, of_reading}});
  for (const uint32_t if_index : {0U, 0x1001U}) {
    const int32_t gbl = if_index == 0;
    add("delete", Stage::full,
        [=] { return stp_mcec_type1_cfg_cache_update(1, gbl, if_index, nullptr); }, {});
  }
}

void add_exports(Operations &operations) {
  const Failures of_block = {{no_block}};
  const auto add = [&](const char *name, Stage stage, const auto &act, const FailuresOf &failures) {
    operations.push_back({name, stage, act, failures});
  };
  add("export of the switch", Stage::full, [] { return exported(1, 0); },
      {{STANDIN_ALLOC, of_block}, {STANDIN_TLV_ADD, Failures(9, {without_entry})}});
  add("export of a port", Stage::full, [] { return exported(0, 0x1003); },
      {{STANDIN_ALLOC, of_block}, {STANDIN_TLV_ADD, Failures(3, {without_entry})}});
  add("export of nothing", Stage::empty, [] { return exported(1, 0); },
      {{STANDIN_ALLOC, of_block}});
  add("report", Stage::full, report,
      {{STANDIN_ALLOC, of_block},
       {STANDIN_TLV_NEXT, {{"40aa00ff | 0 records"}, {"40aa00ff | 1 records"}}}});
}

void add_checks(Operations &operations) {
  const Failure unread = {"40aa00ff |  | ", 0, true};
  const Failure failed = {"40dd0001 |  | ", 0, true};
  // If the pass over the parameters of every mode fails, the check of the mode continues.
  const FailuresOf of_check = {{STANDIN_TLV_NEXT, {{same}, {same}, {same}, unread, unread, unread}},
                               {STANDIN_TLV_FIND, {failed, failed}}};
  const FailuresOf of_mode = {{STANDIN_TLV_NEXT, {unread, unread, unread}},
                              {STANDIN_TLV_FIND, {failed}}};
  const auto add = [&](const char *name, Stage stage, const FailuresOf &failures, auto check) {
    operations.push_back({name, stage, [=] { return verdict(check); }, failures});
  };
  add("check in MST", Stage::mst, of_check,
      [](auto... arguments) { return stp_mcec_type1_cfg_compat_check(0, arguments...); });
  add("check of a port in Rapid-PVST", Stage::rapid_pvst, of_check, [](auto... arguments) {
    return stp_mcec_type1_cfg_compat_check_with_ifindex(0x1000, 0, arguments...);
  });
  add("check without a mode", Stage::empty, {},
      [](auto... arguments) { return stp_mcec_type1_cfg_compat_check_common(1, 0, arguments...); });
  add("check of MST", Stage::empty, of_mode, [](void *local, void *remote, auto...) {
    return stp_mcec_mst_type1_cfg_compat_check(0, 0, local, remote);
  });
  add("check of Rapid-PVST", Stage::empty, of_mode,
      [](auto... arguments) { return stp_mcec_pvrst_type1_cfg_compat_check(0, 0, arguments...); });
}

std::string find_channel() {
  uint32_t id = 99;
  const uint32_t result = stp_mcec_lib_get_mcec_id(0x1001, &id);
  EXPECT_EQ(id, result == 0 ? 11U : 99U);
  return in_hex(result);
}

void add_queries(Operations &operations) {
  operations.push_back(
      {"channel of a port", Stage::empty, find_channel, {{STANDIN_MEMBERSHIP, {{"41b70016"}}}}});
  operations.push_back(
      {"trunk", Stage::empty, [] { return in_hex(stp_mcec_lib_mct_exists()); }, {}});
  operations.push_back({"validity",
                        Stage::empty,
                        [] { return in_hex(stp_valid_if_index(0x1000)); },
                        {{STANDIN_LAYER_MODE, {{"0"}}}}});
}

// --- texts ---

// Splits an outcome into its fields.
std::vector<std::string> fields_of(const std::string &outcome) {
  std::vector<std::string> fields;
  for (std::size_t at = 0; at <= outcome.size();) {
    const std::size_t end = std::min(outcome.find(" |", at), outcome.size());
    fields.push_back(outcome.substr(at, end - at));
    at = end + 2;
  }
  return fields;
}

// Replaces the words whose numbers are selected, or removes them if the replacement is empty.
template <class Selected>
std::string replace_words(const std::string &text, Selected is_selected, const char *replacement) {
  std::istringstream in(text);
  std::string replaced;
  std::string word;
  for (std::size_t i = 0; in >> word; ++i) {
    if (is_selected(i)) word = replacement;
    replaced += (replaced.empty() || word.empty() ? "" : " ") + word;
  }
  return replaced;
}

}  // namespace

std::string expand_outcome(const std::string &outcome, const std::string &clean, uint32_t nth) {
  const std::vector<std::string> fields = fields_of(clean);
  if (outcome == same) return clean;
  if (outcome == without_entry) {  // after the result and a bar
    return replace_words(
        clean, [=](std::size_t i) { return i == nth + 1; }, "");
  }
  std::string text = outcome;
  for (std::size_t at; (at = text.find('{')) != text.npos;) {
    const std::size_t end = text.find('}', at);
    const std::string name = text.substr(at + 1, end - at - 1);
    std::string field = fields.at(name == "counts" ? 2 : 3);
    if (name.starts_with("records ")) {  // " type 19 record record ..."
      const std::size_t first = 2 + std::stoul(name.substr(8));
      field = " " + replace_words(
                        field, [=](std::size_t i) { return i >= first; }, "0,0,0,0");
    }
    text.replace(at, end + 1 - at, field);
  }
  return text;
}

std::vector<Operation> make_operations() {
  std::vector<Operation> operations;
  for (const bool positive : {true, false}) {
    add_commands(operations, positive);
    add_interface_commands(operations, positive);
  }
  add_updates(operations);
  add_exports(operations);
  add_checks(operations);
  add_queries(operations);
  return operations;
}

}  // namespace test
