// Dumps of real switches: what they say, what is wrong with them, and what fixes a pair.

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "draimiofaf/types.h"
#include "pair/scopes.h"
#include "report/pairing.h"
#include "sonic/patch.h"
#include "sonic/rows.h"
#include "switch/digest.h"
#include "switch/state_reader.h"
#include "switch/state_writer.h"

namespace lab {
namespace {

struct Dump {
  std::string json;
  Rows rows;
  Settings settings;
  std::string errors;  // a line each
};

Dump dump_of(const std::string &json) {
  ReadRows rows = read_dump(json);
  ReadSettings read = settings_of(rows.rows, rows.errors);
  Dump dump{json, std::move(rows.rows), std::move(read.settings), ""};
  for (const InputError &error : read.errors) {
    dump.errors += place_of(error) + ": " + text_of(error) + "\n";
  }
  return dump;
}

std::string capture(const std::string &name) {
  std::ifstream file(CAPTURES "/" + name + ".json");
  return {std::istreambuf_iterator<char>(file), {}};
}

// The bytes of a parameter; of a channel's port by its name.
Bytes value(const Settings &settings, const std::string &channel, uint16_t type) {
  const Port *port = port_of_channel(settings, channel);
  for (const Entry &entry : port != nullptr ? port->parameters : settings.parameters) {
    if (entry.type == type) return entry.value;
  }
  return {};
}

constexpr char a_dump[] =
    "; expected a dump of a configuration database, a JSON object of tables\n";

TEST(Capture, ReportsEveryErrorWithItsPlace) {
  const std::string no_json = ": no JSON here: ";
  const struct {
    std::string dump;
    std::string errors;
  } rows[] = {
      {"", "line 1, column 1" + no_json + "unexpected end of input" + a_dump},
      {"{\"ö\":\n \"ö\" x", "line 2, column 6" + no_json + "invalid literal" + a_dump},
      {"{\"a\": \"\xff\"}",
       "line 1, column 8" + no_json + "invalid string: ill-formed UTF-8 byte" + a_dump},
      {std::string("{}\0", 3), "line 1, column 3" + no_json + "a NUL byte" + a_dump},
      {"{\"a\": 1e999}", "line 1, column 11" + no_json + "a number that is too great" + a_dump},
      {"[{}]", std::string(": found a list") + a_dump},
      {R"({"PORT": {}})",
       ": found none of the tables that are read; expected DEVICE_METADATA, MCLAG_DOMAIN, "
       "MCLAG_INTERFACE, STP, STP_MST, STP_MST_INST, STP_PORT, STP_VLAN, VLAN or VLAN_MEMBER\n"},
      // A error does not hide the others, nor make new ones.
      {R"({"DEVICE_METADATA": 5, "STP": {"GLOBAL": {"mode": "mst"}}, "VLAN": {"Vlan1": []},
           "STP_VLAN": {"Vlan1": {"enabled": true, "priority": 5}},
           "STP_PORT": {"a": {"bpdu_guard": {"x": [{}]}, "root_guard": ["true"], "portfast": "yes"}},
           "STP_MST_INST": {"1": {"vlan_list": ["1", 2, {}]}}, "PORT": [[]]})",
       "DEVICE_METADATA: found a number; expected a table, an object of rows\n"
       "VLAN|Vlan1: found a list; expected a row, an object of fields\n"
       "STP_VLAN|Vlan1 enabled: found a bare true; expected a text\n"
       "STP_PORT|a root_guard: found a list; expected a text\n"
       "STP_MST_INST|1 vlan_list: found a number; expected a text, or a list of texts\n"
       "STP_PORT|a portfast: found 'yes'; expected true or false\n"},
      {R"({"VLAN": {}, "VLAN": {"x": 5}, "STP": {"GLOBAL": {"mode": "none", "mode": 5}, "GLOBAL": 7},
           "PORT": {}, "PORT": {"a": {}, "a": {}}, "STP_MST": {"GLOBAL": {"x": 1, "x": 2}}})",
       "VLAN: this key stands twice; expected it once\n"
       "STP|GLOBAL mode: this key stands twice; expected it once\n"
       "STP|GLOBAL: this key stands twice; expected it once\n"},
      {R"({"STP": {"GLOBAL": {"mode": "PVST"}}, "VLAN": {"Vlan0": {}, "Vlan4095": {}, "Vlan01": {}},
           "VLAN_MEMBER": {"Vlan1": {}, "Vlan1|": {}, "Vlan1|a|b": {}}, "STP_PORT": {"": {}},
           "MCLAG_INTERFACE": {"1|Ethernet1": {}, "PortChannel1": {}}})",
       "STP|GLOBAL mode: found 'PVST'; expected pvst, mst or none\n"
       "VLAN|Vlan0: found 'Vlan0'; expected a VLAN from 1 to 4094\n"
       "VLAN|Vlan01: found 'Vlan01'; expected a key like Vlan10\n"
       "VLAN|Vlan4095: found 'Vlan4095'; expected a VLAN from 1 to 4094\n"
       "VLAN_MEMBER|Vlan1: found the key 'Vlan1'; expected a key like Vlan10|PortChannel10\n"
       "VLAN_MEMBER|Vlan1|: found the key 'Vlan1|'; expected a key like Vlan10|PortChannel10\n"
       "VLAN_MEMBER|Vlan1|a|b: found the key 'Vlan1|a|b'; expected a key like "
       "Vlan10|PortChannel10\n"
       "STP_PORT|: found the key ''; expected the name of an interface\n"
       "MCLAG_INTERFACE|1|Ethernet1: found 'Ethernet1'; expected a key like 1|PortChannel10\n"
       "MCLAG_INTERFACE|PortChannel1: found the key 'PortChannel1'; expected a key like "
       "1|PortChannel10\n"},
      {R"({"STP_MST": {"GLOBAL": {"name": "0123456789012345678901234567890\u0085", "revision": "65536"}},
           "DEVICE_METADATA": {"localhost": {"hostname": "\u0000"}}, "STP_MST_INST": {
           "1": {"vlan_list": "5-3, 4095,1 2,1-Vlan2,"}, "MST_INSTANCE|1": {"vlan_list": "7"},
           "MST_INSTANCE:INSTANCE2": {"vlan_list": ["5-9"]}, "0": {"vlan_list": "7"}, "4095": {}}})",
       "DEVICE_METADATA|localhost hostname: found '\\x00'; expected a name without control "
       "characters\n"
       "STP_MST|GLOBAL name: found '0123456789012345678901234567890\\xc2\\x85'; expected a region "
       "name "
       "without control characters\n"
       "STP_MST|GLOBAL name: found '0123456789012345678901234567890\\xc2\\x85', 33 bytes; expected "
       "a "
       "region name of at most 32 bytes\n"
       "STP_MST|GLOBAL revision: found '65536'; expected a number from 0 to 65535\n"
       "STP_MST_INST|1 vlan_list: found '5-3'; expected a range from the lower to the higher VLAN\n"
       "STP_MST_INST|1 vlan_list: found ' 4095'; expected VLANs from 1 to 4094\n"
       "STP_MST_INST|1 vlan_list: found '1 2'; expected VLANs like 10, 10-20, Vlan10 or "
       "Vlan10-Vlan20\n"
       "STP_MST_INST|1 vlan_list: found '1-Vlan2'; expected VLANs like 10, 10-20, Vlan10 or "
       "Vlan10-Vlan20\n"
       "STP_MST_INST|1 vlan_list: found ''; expected VLANs like 10, 10-20, Vlan10 or "
       "Vlan10-Vlan20\n"
       "STP_MST_INST|4095: found the key '4095'; expected an instance from 0 to 4094\n"
       "STP_MST_INST|MST_INSTANCE|1: found instance 1 again, which is '1' too; expected an "
       "instance in "
       "one spelling\n"
       "STP_MST_INST|MST_INSTANCE:INSTANCE2 vlan_list: found VLAN 7, which '1' has too; expected "
       "each "
       "VLAN in one instance\n"},
      {R"({"STP": {"GLOBAL": {"mode": "mst"}}, "STP_MST": {"GLOBAL": {"name": ""}}})",
       "STP_MST|GLOBAL name: found neither a name of the region nor an address of the switch; "
       "expected "
       "one of them in mst\n"},
  };
  for (const auto &row : rows) EXPECT_EQ(dump_of(row.dump).errors, row.errors) << row.dump;
  // Wherever a dump is cut off, and however deep it goes.
  const std::string whole = capture("guard-left");
  for (std::size_t size = 0; size + 2 < whole.size(); ++size) {
    const std::string errors = dump_of(whole.substr(0, size)).errors;
    EXPECT_TRUE(errors.starts_with("line ") && errors.find('\n') + 1 == errors.size()) << size;
  }
  EXPECT_NE(dump_of("{\"VLAN\": " + std::string(1000000, '[')).errors, "");
}

TEST(Capture, BecomesAStateFile) {
  const std::string head = "# What a switch is set to: a lab state file, which mcec-lab reads.\n";
  const struct {
    const char *dump;
    const char *file;
  } rows[] = {
      {R"({"VLAN": {}})", "spanning-tree: false\ntrunk: false\nuser-vlans: none\n"},
      {R"({"STP": {"GLOBAL": {"mode": "pvst"}}, "VLAN": {"Vlan1": {}, "Vlan2": {"vlanid": 2}, "Vlan9": {}},
           "VLAN_MEMBER": {"Vlan1|PortChannel010": {}, "Vlan2|PortChannel010": {}, "Vlan3|PortChannel010": {}},
           "STP_VLAN": {"Vlan1": {"enabled": "true"}, "Vlan2": {"enabled": "false"}, "Vlan4": {"enabled": "true"}},
           "MCLAG_INTERFACE": {"1|PortChannel010": {}, "2|PortChannel010": {}, "1|PortChannel10": {},
                               "1|PortChannel0": {}},
           "STP_PORT": {"PortChannel0": {"portfast": "true", "root_guard": "true", "link_type": "auto"},
                        "PortChannel10": {"edge_port": "true", "NULL": "NULL", "x": ["1", "2"]}},
           "MCLAG_DOMAIN": {"1": {"source_ip": "10.0.0.1", "peer_ip": ""}}})",
       "spanning-tree runs\ntrunk: false\npeerings:\n  - {source: \"10.0.0.1\", peer: \"\"}\n"
       "user-vlans: \"1-2,9\"\nchannels:\n"
       "  - {channel: PortChannel0, id: 1, vlans: none}\n"
       "  - {channel: PortChannel010, id: 2, vlans: \"1-2\"}\n"
       "  - {channel: PortChannel10, id: 10, vlans: none}\n"
       "ports:\n"
       "  - port: PortChannel0\n    channel: PortChannel0\n"
       "    parameters: {ifi-port-type: edge-port, ifi-port-guard: root}\n"
       "    uncovered: {link_type: \"auto\"}\n"
       "  - port: PortChannel010\n    channel: PortChannel010\n"
       "    parameters: {ifi-port-type: default, ifi-port-guard: none}\n"
       "  - port: PortChannel10\n    channel: PortChannel10\n"
       "    parameters: {ifi-port-type: default, ifi-port-guard: none}\n"
       "    uncovered: {\"x\": \"1,2\"}\n"
       "parameters:\n  stp-mode: rapid-pvst\n  stp-endis: \"2,9\"\n"},
      {R"({"DEVICE_METADATA": {"localhost": {"mac": "00:11", "hostname": "\"yes\\ \u202e叶"}},
           "STP": {"GLOBAL": {"mode": "mst"}}, "STP_MST": {"GLOBAL": {"revision": "7"}},
           "MCLAG_DOMAIN": {"1": {"peer_link": "PortChannel1"}},
           "STP_MST_INST": {"MST_INSTANCE|1": {"vlan_list": ["10 - 12", "Vlan14-Vlan15"]}, "2": {},
                            "0": {"vlan_list": "1-4094"}, "MST_INSTANCE:INSTANCE3": {"vlan_list": "Vlan1, 4094"}}})",
       "name: \"\\\"yes\\\\ \\u202e叶\"\naddress: \"00:11\"\nspanning-tree runs\ntrunk: true\n"
       "user-vlans: none\nparameters:\n  stp-mode: mst\n  mst-region-name: \"00:11\"\n"
       "  mst-region-revision: 7\n  mst-region-vi-map: {1: \"10-12,14-15\", 3: \"1,4094\"}\n"},
  };
  for (const auto &row : rows) {
    const Dump dump = dump_of(row.dump);
    EXPECT_EQ(dump.errors, "");
    std::string file = row.file;
    if (const auto at = file.find("spanning-tree runs\n"); at != file.npos) file.erase(at, 19);
    EXPECT_EQ(state_file(dump.settings), head + file);
    const ReadSettings again = read_state(head + file);
    EXPECT_TRUE(again.errors.empty() && again.settings == dump.settings) << file;
  }
}

TEST(Capture, WritesTheConfigurationDigest) {
  Bytes first(8192);
  Bytes spread(8192);
  for (uint32_t vlan = 0; vlan < vlan_count; ++vlan) {
    set_instance(first, vlan, 1);
    set_instance(spread, vlan, vlan % 32 + 1);
  }
  EXPECT_EQ(region_digest({}), "AC36177F50283CD4B83821D8AB26DE62");
  EXPECT_EQ(region_digest(first), "E13A80F11ED0856ACD4EE3476941C73B");
  EXPECT_EQ(region_digest(spread), "9D145C267DBE9FB5D893441BE3BA08CE");
}

TEST(Capture, NotesWhatAComparisonCannotPromise) {
  const struct {
    const char *left;
    const char *right;
    std::vector<std::string> notes;  // before the one that always stands
  } rows[] = {
      {R"({"DEVICE_METADATA": {"localhost": {"mac": "AA"}}})",
       R"({"DEVICE_METADATA": {"localhost": {"mac": "aa"}}})",
       {"The pair has no multi-chassis channel.", "The left switch has no peer link.",
        "The right switch has no peer link.", "Both switches have the address AA.",
        "The switches do not name each other as peers: left has no peer, right has no peer."}},
      {R"({"MCLAG_DOMAIN": {"1": {"peer_link": "x", "source_ip": "1", "peer_ip": "2"}}, "VLAN": {"Vlan1": {}, "Vlan2": {}},
           "MCLAG_INTERFACE": {"1|PortChannel1": {}, "1|PortChannel2": {}}, "STP_PORT": {"PortChannel1": {"edge_port": "true"}},
           "VLAN_MEMBER": {"Vlan1|PortChannel1": {}, "Vlan2|PortChannel1": {}, "Vlan2|PortChannel2": {}}})",
       R"({"MCLAG_DOMAIN": {"7": {"peer_link": "x", "source_ip": "2", "peer_ip": "1"}}, "VLAN": {"Vlan1": {}},
           "MCLAG_INTERFACE": {"7|PortChannel1": {}}, "STP_PORT": {"PortChannel1": {"enabled": "true"}},
           "VLAN_MEMBER": {"Vlan1|PortChannel1": {}}})",
       {"Only left carries VLAN 2 on PortChannel1.",
        "The ports of PortChannel1 differ in what no parameter covers: enabled (not set on left, "
        "true on right)."}},
  };
  for (auto row : rows) {
    const Dump left = dump_of(row.left);
    const Dump right = dump_of(row.right);
    row.notes.push_back("Timers and priorities of the region are not looked at.");
    EXPECT_EQ(notes_of({&left.settings, &right.settings}), row.notes);
  }
}

// Each patch is applied to the dump, and what it fixes is looked at again.
TEST(Capture, IsCured) {
  const auto inside = [](const std::string &tables, const char *mode = "mst") {
    return "{\"STP\": {\"GLOBAL\": {\"mode\": \"" + std::string(mode) + "\"}}, " + tables + "}";
  };
  const std::string named = R"("STP_MST": {"GLOBAL": {"name": "x", "revision": "0"}}, )";
  const std::string ports = R"("MCLAG_INTERFACE": {"1|PortChannel1": {}, "1|PortChannel2": {}}, )";
  const std::string vlans = ports + R"("VLAN": {"Vlan1": {}, "Vlan2": {}, "Vlan3": {}},
    "VLAN_MEMBER": {"Vlan1|PortChannel1": {}, "Vlan2|PortChannel1": {}}, )";
  const struct {
    std::string left;
    std::string right;
    std::string channel;
    uint16_t type;
    std::string text;
    const char *patches[2];
  } rows[] = {
      {inside(
           named + ports +
           R"("STP_PORT": {"PortChannel1": {"edge_port": "true"}, "PortChannel2": {"edge_port": "true", "root_guard": "true"}})"),
       inside(named + ports + R"("VLAN": {})"),
       "PortChannel1",
       STP_MCEC_TYPE1_IFI_PORT_TYPE,
       "STP_PORT|PortChannel1 edge_port: true on right, or false on left",
       {R"([{"op":"replace","path":"/STP_PORT/PortChannel1/edge_port","value":"false"}])",
        R"([{"op":"add","path":"/STP_PORT","value":{"PortChannel1":{"edge_port":"true"},"PortChannel2":{}}}])"}},
      {inside(vlans + R"("STP_VLAN": {"Vlan1": {"enabled": "true"}, "Vlan3": {"enabled": "true"}})",
              "pvst"),
       inside(vlans + R"("STP_VLAN": {"Vlan1": {}, "Vlan2": {"enabled": "true"}})", "pvst"),
       "",
       STP_MCEC_TYPE1_STP_ENDIS,
       "STP_VLAN enabled: VLAN 1 true on right, or false on left; VLAN 2 false on right, or true "
       "on left",
       {R"([{"op":"replace","path":"/STP_VLAN/Vlan1/enabled","value":"false"},{"op":"add","path":"/STP_VLAN/Vlan2","value":{"enabled":"true"}}])",
        R"([{"op":"add","path":"/STP_VLAN/Vlan1/enabled","value":"true"},{"op":"replace","path":"/STP_VLAN/Vlan2/enabled","value":"false"}])"}},
      {inside(
           named +
           R"("STP_MST_INST": {"MST_INSTANCE|1": {"vlan_list": ["Vlan1-Vlan4"], "bridge_priority": "0"}, "MST_INSTANCE|3": {"vlan_list": "9"}})"),
       inside(named + R"("STP_MST_INST": {"2": {"vlan_list": "1,2"}, "3": {"vlan_list": "9,8"}})"),
       "",
       STP_MCEC_TYPE1_MST_REGION_VI_MAP,
       "STP_MST_INST vlan_list: VLAN 8 in instance 0 on right, or in instance 3 on left; VLANs 3-4 "
       "in "
       "instance 1 on right, or in instance 0 on left; VLANs 1-2 in instance 1 on right, or in "
       "instance 2 on left",
       {R"([{"op":"remove","path":"/STP_MST_INST/MST_INSTANCE|1/vlan_list"},{"op":"add","path":"/STP_MST_INST/MST_INSTANCE|2","value":{"vlan_list":"1-2"}},{"op":"replace","path":"/STP_MST_INST/MST_INSTANCE|3/vlan_list","value":"8-9"}])",
        R"([{"op":"add","path":"/STP_MST_INST/1","value":{"vlan_list":"1-4"}},{"op":"remove","path":"/STP_MST_INST/2/vlan_list"},{"op":"replace","path":"/STP_MST_INST/3/vlan_list","value":"9"}])"}},
      {inside(named + R"("VLAN": {})"),
       inside(R"("VLAN": {})", "pvst"),
       "",
       STP_MCEC_TYPE1_STP_MODE,
       "STP|GLOBAL mode: mst, STP_MST|GLOBAL name: x on right, or STP|GLOBAL mode: pvst on left",
       {R"([{"op":"replace","path":"/STP/GLOBAL/mode","value":"pvst"}])",
        R"([{"op":"replace","path":"/STP/GLOBAL/mode","value":"mst"},{"op":"add","path":"/STP_MST","value":{"GLOBAL":{"name":"x"}}}])"}},
      {inside(named + R"("VLAN": {})"),
       inside(R"("STP_MST": {"GLOBAL": {"name": "x", "revision": "3"}})"),
       "",
       STP_MCEC_TYPE1_MST_REGION_REVISION,
       "STP_MST|GLOBAL revision: 0 on right, or 3 on left",
       {R"([{"op":"replace","path":"/STP_MST/GLOBAL/revision","value":"3"}])",
        R"([{"op":"replace","path":"/STP_MST/GLOBAL/revision","value":"0"}])"}},
      {capture("region-names-left"),
       capture("region-names-right"),
       "",
       STP_MCEC_TYPE1_MST_REGION_NAME,
       "STP_MST|GLOBAL name: one name on both, for instance region1",
       {R"([{"op":"add","path":"/STP_MST/GLOBAL/name","value":"region1"}])",
        R"([{"op":"add","path":"/STP_MST/GLOBAL/name","value":"region1"}])"}},
  };
  for (const auto &row : rows) {
    const std::array<Dump, 2> dumps = {dump_of(row.left), dump_of(row.right)};
    ASSERT_EQ(dumps[0].errors + dumps[1].errors, "");
    const PairOfSettings pair = {&dumps[0].settings, &dumps[1].settings};
    ASSERT_NE(value(*pair[0], row.channel, row.type), value(*pair[1], row.channel, row.type));
    const Fix fix = find_fix(pair, {&dumps[0].rows, &dumps[1].rows}, row.channel, row.type);
    EXPECT_EQ(fix.text, row.text);
    Settings after[2] = {dumps[0].settings, dumps[1].settings};
    for (std::size_t side = 0; side < 2; ++side) {
      ASSERT_NE(fix.both.has_value(), fix.alone[side].has_value());
      const Json patch =
          patch_of(dumps[side].rows, fix.both ? (*fix.both)[side] : *fix.alone[side]);
      EXPECT_EQ(patch.dump(), row.patches[side]);
      const Dump patched = dump_of(Json::parse(dumps[side].json).patch(patch).dump());
      EXPECT_EQ(patched.errors, "");
      after[side] = patched.settings;
    }
    const bool is_both = fix.both.has_value();
    // The VLANs that are no twins may stay different.
    const auto seen = [&](const Settings &settings) {
      const Bytes bytes = value(settings, row.channel, row.type);
      return row.type != STP_MCEC_TYPE1_STP_ENDIS
                 ? bytes
                 : vlan_record(vlans_of_record(bytes) & twin_vlans(pair));
    };
    EXPECT_EQ(seen(after[0]), seen(is_both ? after[1] : *pair[1])) << row.text;
    EXPECT_EQ(seen(after[1]), seen(is_both ? after[0] : *pair[0])) << row.text;
  }
  const Dump left = dump_of(capture("vlans-left"));
  const Dump right = dump_of(capture("vlans-right"));
  EXPECT_EQ(find_fix({&left.settings, &right.settings}, {nullptr, &right.rows}, "",
                     STP_MCEC_TYPE1_STP_ENDIS)
                .text,
            "stp-endis: VLAN 20 listed on right, or not listed on left");
}

}  // namespace
}  // namespace lab
