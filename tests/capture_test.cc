// Dumps: settings, forms, and errors.

#include <gtest/gtest.h>

#include "dump.h"
#include "switch/state_file.h"

namespace lab {
namespace {

constexpr char a_dump[] =
    "; expected a dump of a configuration database, a JSON object of tables\n";

const std::string no_json = ": invalid JSON: ";
const struct {
  std::string dump;
  std::string errors;
} wrong_dumps[] = {
    {" \n", std::string(": found only white space") + a_dump},
    {"\x1f\x8b\x08", std::string(": found gzip-compressed data") + a_dump},
    {std::string("{\0}\0", 4), std::string(": found UTF-16, not UTF-8") + a_dump},
    {"login:\n\n {}", std::string("line 1, column 1: found text before the JSON, which "
                                  "begins at line 3, column 2") +
                          a_dump},
    {"{}", std::string(": found an empty object") + a_dump},
    {"{\"ö\":\n \"ö\" x", "line 2, column 6" + no_json + "invalid literal" + a_dump},
    {"{\"a\": \"\xff\"}",
     "line 1, column 8" + no_json + "invalid string: ill-formed UTF-8 byte" + a_dump},
    {std::string("{}\0", 3), "line 1, column 3" + no_json + "NUL byte" + a_dump},
    {"{\"a\": 1e999}", "line 1, column 11" + no_json + "number out of range" + a_dump},
    {"[{}]", std::string(": found a list") + a_dump},
    {R"({"PORT": {}})",
     ": found none of the tables that are read; expected DEVICE_METADATA, MCLAG_DOMAIN, "
     "MCLAG_INTERFACE, STP, STP_MST, STP_MST_INST, STP_PORT, STP_VLAN, VLAN or VLAN_MEMBER\n"},
    // An error neither hides others nor causes new ones.
    {R"({"DEVICE_METADATA": 5, "STP": {"GLOBAL": {"mode": "mst"}}, "VLAN": {"Vlan1": []},
         "STP_VLAN": {"Vlan1": {"enabled": true, "priority": 5}},
         "STP_PORT": {"a": {"bpdu_guard": {"x": [{}]}, "root_guard": ["true"],)"
     R"( "portfast": "yes"}},
         "STP_MST_INST": {"1": {"vlan_list": ["1", 2, {}]}}, "PORT": [[]]})",
     "DEVICE_METADATA: found a number; expected a table, an object of rows\n"
     "VLAN|Vlan1: found a list; expected a row, an object of fields\n"
     "STP_VLAN|Vlan1 enabled: found true; expected a string\n"
     "STP_PORT|a root_guard: found a list; expected a string\n"
     "STP_MST_INST|1 vlan_list: found a number; expected a string, or a list of strings\n"
     "STP_PORT|a portfast: found 'yes'; expected true or false\n"},
    {R"({"VLAN": {}, "VLAN": {"x": 5}, "STP": {"GLOBAL": {"mode": "none", "mode": 5},)"
     R"( "GLOBAL": 7},
         "PORT": {}, "PORT": {"a": {}, "a": {}}, "STP_MST": {"GLOBAL": {"x": 1, "x": 2}}})",
     "VLAN: found this key twice; expected each key once\n"
     "STP|GLOBAL mode: found this key twice; expected each key once\n"
     "STP|GLOBAL: found this key twice; expected each key once\n"},
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
    {R"({"STP_MST": {"GLOBAL": {"name": "0123456789012345678901234567890\u0085",)"
     R"( "revision": "65536"}},
         "DEVICE_METADATA": {"localhost": {"hostname": "\u0000"}}, "STP_MST_INST": {
         "1": {"vlan_list": "5-3, 4095,1 2,1-Vlan2,"}, "MST_INSTANCE|1": {"vlan_list": "7"},
         "MST_INSTANCE:INSTANCE2": {"vlan_list": ["5-9"]}, "0": {"vlan_list": "7"}, "4095": {})"
     R"(}})",
     "DEVICE_METADATA|localhost hostname: found '\\x00'; expected a name without control "
     "characters\n"
     "STP_MST|GLOBAL name: found '0123456789012345678901234567890\\xc2\\x85'; expected a region "
     "name without control characters\n"
     "STP_MST|GLOBAL name: found '0123456789012345678901234567890\\xc2\\x85', 33 bytes; expected "
     "a region name of at most 32 bytes\n"
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
     "STP_MST_INST|MST_INSTANCE|1: found instance 1 again, already defined by '1'; "
     "expected one key for each instance\n"
     "STP_MST_INST|MST_INSTANCE:INSTANCE2 vlan_list: found VLAN 7, also in '1'; expected "
     "each VLAN in one instance\n"},
    // Other forms.
    {R"({"STP|GLOBAL": {"mode": "pvst", "mode@": ""}, "STP|GLOBAL": {}, "VLAN": {)"
     R"("VLAN|Vlan1": {}},
         "STP_PORT|a": {"type": "hash", "value": {"root_guard@": "true"}}, "STP_VLAN|Vlan1": 5})",
     ": found the table 'VLAN' and the row 'STP|GLOBAL'; expected tables of rows, or rows with "
     "the names of their tables\n"
     "STP|GLOBAL mode: found this key twice; expected each key once\n"
     "STP|GLOBAL: found this key twice; expected each key once\n"
     "VLAN|VLAN|Vlan1: found a key that begins with the name of a table; expected 'Vlan1'\n"
     "STP_PORT|a root_guard: found a list; expected a string\n"
     "STP_VLAN|Vlan1: found a number; expected a row, an object of fields\n"},
    {R"({"config": {"VLAN|Vlan1": {}}})",
     ": found rows with the names of their tables in 'config'; expected them at the top\n"},
    {R"({"asic1": {"VLAN": {}}, "localhost": {}, "asic0": {}})",
     ": found a dump of several ASICs: asic0, asic1 and localhost; expected the namespace of one "
     "of them\n"},
    {R"({"STP": {"GLOBAL": {"mode": "mst"}}, "STP_MST": {"GLOBAL": {"name": ""}}})",
     "STP_MST|GLOBAL name: found neither a region name nor a switch address; expected "
     "one of them in mst mode\n"},
};

TEST(Capture, ReportsEveryErrorWithItsPlace) {
  for (const auto &row : wrong_dumps) EXPECT_EQ(dump_of(row.dump).errors, row.errors) << row.dump;
  // A dump that is truncated at any place, and one that is deeply nested.
  const std::string whole = capture("guard-left");
  for (std::size_t size = 1; size + 2 < whole.size(); ++size) {
    const std::string errors = dump_of(whole.substr(0, size)).errors;
    EXPECT_TRUE(errors.starts_with("line ") && errors.ends_with("is cut off" + std::string(a_dump)))
        << size << errors;
  }
  EXPECT_NE(dump_of("{\"VLAN\": " + std::string(1000000, '[')).errors, "");
}

const std::string state_file_head = "# Settings of a switch: a state file of mcec-lab.\n";
const struct {
  const char *dump;
  const char *file;
} dumps_and_files[] = {
    {R"({"VLAN": {}})", "spanning-tree: false\ntrunk: false\nuser-vlans: none\n"},
    {R"({"STP": {"GLOBAL": {"mode": "pvst", "hello_time": "1"}}, "VLAN": {"Vlan1": {},)"
     R"( "Vlan2": {"vlanid": 2}, "Vlan9": {}},
         "VLAN_MEMBER": {"Vlan1|PortChannel010": {}, "Vlan2|PortChannel010": {},)"
     R"( "Vlan3|PortChannel010": {}},
         "STP_VLAN": {"Vlan1": {"enabled": "true", "max_age": "6"}, "Vlan2": {"enabled": "false"},
                      "Vlan4": {"enabled": "true", "max_age": "6"}},
         "MCLAG_INTERFACE": {"1|PortChannel010": {}, "2|PortChannel010": {},)"
     R"( "1|PortChannel10": {},
                             "1|PortChannel0": {}},
         "STP_PORT": {"PortChannel0": {"portfast": "true", "root_guard": "true",)"
     R"( "link_type": "auto", "enabled": "true"},
                      "PortChannel10": {"edge_port": "true", "NULL": "NULL", "x": ["1", "2"]}},
         "MCLAG_DOMAIN": {"1": {"source_ip": "10.0.0.1", "peer_ip": ""}}})",
     "spanning-tree runs\ntrunk: false\ndomains:\n  - {id: \"1\", source: \"10.0.0.1\"}\n"
     "timers: {hello-time: \"1\"}\nvlan-timers:\n  - {vlans: \"1,4\", max-age: \"6\"}\n"
     "user-vlans: \"1-2,9\"\nchannels:\n"
     "  - {channel: PortChannel0, id: 1, vlans: none}\n"
     "  - {channel: PortChannel010, id: 2, vlans: \"1-2\"}\n"
     "  - {channel: PortChannel10, id: 10, vlans: none}\n"
     "ports:\n"
     "  - port: PortChannel0\n    channel: PortChannel0\n"
     "    parameters: {ifi-port-type: edge-port, ifi-port-guard: root}\n"
     "  - port: PortChannel010\n    channel: PortChannel010\n    spanning-tree: false\n"
     "    parameters: {ifi-port-type: default, ifi-port-guard: none}\n"
     "  - port: PortChannel10\n    channel: PortChannel10\n    spanning-tree: false\n"
     "    parameters: {ifi-port-type: default, ifi-port-guard: none}\n"
     "    uncovered: {\"x\": \"1,2\"}\n"
     "parameters:\n  stp-mode: rapid-pvst\n  stp-endis: \"2,9\"\n"},
    {R"({"DEVICE_METADATA": {"localhost": {"mac": "00:11", "hostname": "\"yes\\ \u202e叶"}},
         "STP": {"GLOBAL": {"mode": "mst"}}, "STP_MST": {"GLOBAL": {"revision": "7"}},
         "MCLAG_DOMAIN": {"1": {"peer_link": "PortChannel1", "mclag_system_id": "x",)"
     R"( "peer_ip": "::1"}},
         "STP_MST_INST": {"MST_INSTANCE|1": {"vlan_list": ["10 - 12", "Vlan14-Vlan15"]}, "2": {},
                          "0": {"vlan_list": "1-4094"}, "MST_INSTANCE:INSTANCE3": {)"
     R"("vlan_list": "Vlan1, 4094"}}})",
     "name: \"\\\"yes\\\\ \\u202e叶\"\naddress: \"00:11\"\nspanning-tree runs\ntrunk: true\n"
     "domains:\n  - {id: \"1\", system-id: \"x\", peer: \"::1\"}\n"
     "user-vlans: none\nparameters:\n  stp-mode: mst\n  mst-region-name: \"00:11\"\n"
     "  mst-region-revision: 7\n  mst-region-vi-map: {1: \"10-12,14-15\", 3: \"1,4094\"}\n"},
};

TEST(Capture, IsWrittenAsAStateFile) {
  for (const auto &row : dumps_and_files) {
    const Dump dump = dump_of(row.dump);
    EXPECT_EQ(dump.errors, "");
    std::string file = row.file;
    if (const auto at = file.find("spanning-tree runs\n"); at != file.npos) file.erase(at, 19);
    EXPECT_EQ(write_state(dump.settings), state_file_head + file);
    const ReadSettings again = read_state(state_file_head + file);
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

TEST(Capture, HasTheSameSettingsInEveryForm) {
  const std::string expected = write_state(
      dump_of(R"({"VLAN": {"Vlan1": {}, "Vlan2": {}}, "STP": {"GLOBAL": {"mode": "mst"}},
                  "STP_MST": {"GLOBAL": {"name": "x"}}, "STP_MST_INST": {"1": {"vlan_list": [)"
              R"("1", "2"]}},
                  "STP_PORT": {"PortChannel1": {"enabled": "true", "type": "y"}},)"
              R"( "MCLAG_INTERFACE": {"1|PortChannel1": {}}})")
          .settings);
  const struct {
    const char *dump;
    const char *name_space;
  } rows[] = {
      {R"({"VLAN|Vlan1": {"type": "hash", "value": {"NULL": "NULL"}}, "CONFIG_DB_INITIALIZED": {)"
       R"("type": "string", "value": "1"},
           "VLAN|Vlan2": {"expireat": 1.5, "ttl": -0.001, "value": {"vlanid": "2"},)"
       R"( "type": "hash"}, "VLAN|Vlan3": {"type": "set", "value": ["x"]},
           "STP|GLOBAL": {"type": "hash", "value": {"mode": "mst"}}, "STP_MST|GLOBAL": {)"
       R"("type": "hash", "value": {"name": "x"}},
           "STP_MST_INST|1": {"type": "hash", "value": {"vlan_list@": "1,2"}},)"
       R"( "MCLAG_INTERFACE|1|PortChannel1": {"type": "hash", "value": {}},
           "STP_PORT|PortChannel1": {"type": "hash", "value": {"enabled": "true", "type": "y"}}})",
       ""},
      {"\xEF\xBB\xBF"
       R"({"CONFIG_DB_INITIALIZED": "1", "VLAN|Vlan1": {"NULL": "NULL"}, "VLAN|Vlan2": {},)"
       R"( "STP|GLOBAL": {"mode": "mst"}, "PORT": {},
           "STP_MST|GLOBAL": {"name": "x"}, "STP_MST_INST|1": {"vlan_list@": "1,2"},)"
       R"( "MCLAG_INTERFACE|1|PortChannel1": {},
           "STP_PORT|PortChannel1": {"type": "y", "enabled": "true"}})",
       ""},
      {R"({"localhost": {"VLAN": 5}, "asic0": {"VLAN": {"Vlan1": {}, "Vlan2": {}}, "STP": {)"
       R"("GLOBAL": {"mode": "mst"}}, "STP_MST": {"GLOBAL": {"name": "x"}},
           "STP_MST_INST": {"1": {"vlan_list@": ["1", "2"]}}, "STP_PORT": {"PortChannel1": {)"
       R"("enabled": "true", "type": "y"}},
           "MCLAG_INTERFACE": {"1|PortChannel1": {}}}})",
       "asic0"},
  };
  for (const auto &row : rows) {
    const Dump dump = dump_of(row.dump, row.name_space);
    EXPECT_EQ(dump.errors, "");
    EXPECT_EQ(write_state(dump.settings), expected) << row.dump;
  }
}

}  // namespace
}  // namespace lab
