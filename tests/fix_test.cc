// Notes and fixes of pairs of dumps.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "draimiofaf/types.h"
#include "dump.h"
#include "output/json.h"
#include "pair/scopes.h"

namespace lab {
namespace {

// Returns the value of a parameter of the switch, or of a channel.
Bytes value(const Settings &settings, const std::string &channel, uint16_t type) {
  const Port *port = find_channel_port(settings, channel);
  for (const Entry &entry : port != nullptr ? port->parameters : settings.parameters) {
    if (entry.type == type) return entry.value;
  }
  return {};
}

const std::string one_channel = R"("MCLAG_INTERFACE": {"1|PortChannel1": {}}, )";
const struct {
  std::string left;
  std::string right;
  std::string notes;  // a line each
} pairs_with_notes[] = {
    {R"({"DEVICE_METADATA": {"localhost": {"mac": "AA"}}})",
     R"({"DEVICE_METADATA": {"localhost": {"mac": "aa"}}})",
     "same-address switch: Both switches have the address AA.\n"
     "spanning-tree-off switch: Spanning tree is off on both switches: nothing runs.\n"},
    {"{" + one_channel +
         R"("MCLAG_DOMAIN": {"1": {"peer_link": "x", "source_ip": "1", "peer_ip": "2"}},
         "VLAN": {"Vlan1": {}, "Vlan2": {}}, "STP_PORT": {"PortChannel1": {)"
         R"("edge_port": "true", "bpdu_guard": "false", "link_type": "x"}},
         "VLAN_MEMBER": {"Vlan1|PortChannel1": {}, "Vlan2|PortChannel1": {}}, "STP": {)"
         R"("GLOBAL": {"mode": "mst"}},
         "STP_MST": {"GLOBAL": {"name": "x", "max_hops": "9", "max_age": "20"}}})",
     "{" + one_channel +
         R"("MCLAG_DOMAIN": {"1": {"source_ip": "2", "mclag_system_id": "x"}}, "VLAN": {)"
         R"("Vlan1": {}, "Vlan3": {}},
         "STP_PORT": {"PortChannel1": {"portfast": "true", "enabled": "true"}}, "STP_MST": {)"
         R"("GLOBAL": {"name": "x"}},
         "VLAN_MEMBER": {"Vlan1|PortChannel1": {}, "Vlan3|PortChannel1": {}}, "STP": {)"
         R"("GLOBAL": {"mode": "mst", "max_age": "7"}}})",
     "spanning-tree-on-one-half PortChannel1: Spanning tree is enabled on right only.\n"
     "vlan-on-one-half PortChannel1: Only left carries VLAN 2, and only right VLAN 3.\n"
     "port-setting PortChannel1: Port settings that no parameter covers differ: link_type (x on "
     "left, not set on right).\n"
     "timer switch: Timers differ: max-hops (9 on left, not set on right).\n"
     "domain switch: The multi-chassis domains differ: system-id (not set on left, x on right).\n"
     "peers-do-not-cross switch: The switches do not name each other as peers: source (1 on "
     "left, 2 on right), peer (2 on left, not set on right).\n"
     "no-peer-link switch: The right switch has multi-chassis channels and no peer link.\n"},
    {"{" + one_channel +
         R"("MCLAG_DOMAIN": {"1": {"peer_link": "x", "source_ip": "1", "peer_ip": "2"}},)"
         R"( "VLAN": {"Vlan1": {}},
         "VLAN_MEMBER": {"Vlan1|PortChannel1": {}}, "STP": {"GLOBAL": {"mode": "pvst",)"
         R"( "hello_time": "1"}}, "STP_VLAN": {"Vlan1": {"max_age": "6"}, "Vlan9": {)"
         R"("max_age": "6"}}})",
     "{" + one_channel +
         R"("MCLAG_DOMAIN": {"1": {"peer_link": "x", "source_ip": "2", "peer_ip": "1"}},)"
         R"( "VLAN": {"Vlan1": {}},
         "VLAN_MEMBER": {"Vlan1|PortChannel1": {}}, "STP": {"GLOBAL": {"mode": "pvst"}}})",
     "spanning-tree-off-on-channel PortChannel1: Spanning tree is enabled on neither half.\n"
     "vlan-timer switch: Timers of twin VLANs differ: max-age of VLAN 1 (6 on left, not set on "
     "right).\n"
     "timer switch: Timers differ: hello-time (1 on left, not set on right).\n"},
};

TEST(Capture, HasNotes) {
  for (const auto &row : pairs_with_notes) {
    const Dump left = dump_of(row.left);
    const Dump right = dump_of(row.right);
    EXPECT_EQ(left.errors + right.errors, "");
    std::string notes;
    for (const Note &note : find_notes({&left.settings, &right.settings}, false)) {
      notes += note_keys()[std::size_t(note.kind)] + " " +
               (note.channel.empty() ? "switch" : note.channel) + ": " + describe_note(note) + "\n";
    }
    EXPECT_EQ(notes, row.notes);
    for (const Note &note : find_notes({&left.settings, &right.settings}, true)) {
      EXPECT_TRUE(note.kind != NoteKind::same_address && note.kind != NoteKind::peers_do_not_cross);
    }
  }
}

// Applies each patch to its dump, and compares the values again.
const auto dump_with = [](const std::string &tables, const char *mode = "mst") {
  return "{\"STP\": {\"GLOBAL\": {\"mode\": \"" + std::string(mode) + "\"}}, " + tables + "}";
};
const std::string named_region = R"("STP_MST": {"GLOBAL": {"name": "x", "revision": "0"}}, )";
const std::string two_channels =
    R"("MCLAG_INTERFACE": {"1|PortChannel1": {}, "1|PortChannel2": {}}, )";
const std::string three_vlans = two_channels + R"("VLAN": {"Vlan1": {}, "Vlan2": {}, "Vlan3": {}},
  "VLAN_MEMBER": {"Vlan1|PortChannel1": {}, "Vlan2|PortChannel1": {}}, )";
const struct {
  std::string left;
  std::string right;
  std::string channel;
  uint16_t type;
  std::string text;
  const char *patches[2];
} pairs_with_fixes[] = {
    {dump_with(named_region + two_channels +
               R"("STP_PORT": {"PortChannel1": {"edge_port": "true"}, "PortChannel2": {)"
               R"("edge_port": "true", "root_guard": "true"}})"),
     dump_with(named_region + two_channels + R"("VLAN": {})"),
     "PortChannel1",
     STP_MCEC_TYPE1_IFI_PORT_TYPE,
     "STP_PORT|PortChannel1 edge_port: true on right, or false on left",
     {R"([{"op":"replace","path":"/STP_PORT/PortChannel1/edge_port","value":"false"}])",
      R"([{"op":"add","path":"/STP_PORT","value":{"PortChannel1":{"edge_port":"true"}}}])"}},
    {dump_with(three_vlans +
                   R"("STP_VLAN": {"Vlan1": {"enabled": "true"}, "Vlan3": {"enabled": "true"}})",
               "pvst"),
     dump_with(three_vlans + R"("STP_VLAN": {"Vlan1": {}, "Vlan2": {"enabled": "true"}})", "pvst"),
     "",
     STP_MCEC_TYPE1_STP_ENDIS,
     "STP_VLAN enabled: VLAN 1 true on right, or false on left; VLAN 2 false on right, or true "
     "on left",
     {R"([{"op":"replace","path":"/STP_VLAN/Vlan1/enabled","value":"false"},{"op":"add",)"
      R"("path":"/STP_VLAN/Vlan2","value":{"enabled":"true"}}])",
      R"([{"op":"add","path":"/STP_VLAN/Vlan1/enabled","value":"true"},{"op":"replace",)"
      R"("path":"/STP_VLAN/Vlan2/enabled","value":"false"}])"}},
    {dump_with(named_region + R"("STP_MST_INST": {"MST_INSTANCE|1": {"vlan_list": ["Vlan1-Vlan4"],)"
                              R"( "bridge_priority": "0"}, "MST_INSTANCE|3": {"vlan_list": "9"}})"),
     dump_with(named_region +
               R"("STP_MST_INST": {"2": {"vlan_list": "1,2"}, "3": {"vlan_list": "9,8"}})"),
     "",
     STP_MCEC_TYPE1_MST_REGION_VI_MAP,
     "STP_MST_INST vlan_list: VLAN 8 in instance 0 on right, or in instance 3 on left; VLANs 3-4 "
     "in instance 1 on right, or in instance 0 on left; VLANs 1-2 in instance 1 on right, or in "
     "instance 2 on left",
     {R"([{"op":"remove","path":"/STP_MST_INST/MST_INSTANCE|1/vlan_list"},{"op":"add",)"
      R"("path":"/STP_MST_INST/MST_INSTANCE|2","value":{"vlan_list":"1-2"}},{"op":"replace",)"
      R"("path":"/STP_MST_INST/MST_INSTANCE|3/vlan_list","value":"8-9"}])",
      R"([{"op":"add","path":"/STP_MST_INST/1","value":{"vlan_list":"1-4"}},{"op":"remove",)"
      R"("path":"/STP_MST_INST/2/vlan_list"},{"op":"replace",)"
      R"("path":"/STP_MST_INST/3/vlan_list","value":"9"}])"}},
    {dump_with(named_region + R"("VLAN": {})"),
     dump_with(R"("VLAN": {})", "pvst"),
     "",
     STP_MCEC_TYPE1_STP_MODE,
     "STP|GLOBAL mode: mst, STP_MST|GLOBAL name: x on right, or STP|GLOBAL mode: pvst on left",
     {R"([{"op":"replace","path":"/STP/GLOBAL/mode","value":"pvst"}])",
      R"([{"op":"replace","path":"/STP/GLOBAL/mode","value":"mst"},{"op":"add",)"
      R"("path":"/STP_MST","value":{"GLOBAL":{"name":"x"}}}])"}},
    {dump_with(named_region + R"("VLAN": {})"),
     dump_with(R"("STP_MST": {"GLOBAL": {"name": "x", "revision": "3"}})"),
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

TEST(Capture, IsFixed) {
  for (const auto &row : pairs_with_fixes) {
    const std::array<Dump, 2> dumps = {dump_of(row.left), dump_of(row.right)};
    ASSERT_EQ(dumps[0].errors + dumps[1].errors, "");
    const SettingsPairView pair = {&dumps[0].settings, &dumps[1].settings};
    ASSERT_NE(value(*pair[0], row.channel, row.type), value(*pair[1], row.channel, row.type));
    const Fix fix = find_fix(pair, {&dumps[0].rows, &dumps[1].rows}, row.channel, row.type);
    EXPECT_EQ(describe_fix(fix, switch_names), row.text);
    Settings after[2] = {dumps[0].settings, dumps[1].settings};
    for (std::size_t side = 0; side < 2; ++side) {
      ASSERT_NE(fix.both.has_value(), fix.alone[side].has_value());
      const Json patch = patch_to_json(
          make_patch(dumps[side].rows, fix.both ? (*fix.both)[side] : *fix.alone[side]));
      EXPECT_EQ(patch.dump(), row.patches[side]);
      const Dump patched = dump_of(Json::parse(dumps[side].json).patch(patch).dump());
      EXPECT_EQ(patched.errors, "");
      after[side] = patched.settings;
    }
    const bool is_both = fix.both.has_value();
    // VLANs that are not twins may still differ.
    const auto compared = [&](const Settings &settings) {
      const Bytes bytes = value(settings, row.channel, row.type);
      return row.type != STP_MCEC_TYPE1_STP_ENDIS
                 ? bytes
                 : vlan_record(vlans_of_record(bytes) & twin_vlans(pair));
    };
    EXPECT_EQ(compared(after[0]), compared(is_both ? after[1] : *pair[1])) << row.text;
    EXPECT_EQ(compared(after[1]), compared(is_both ? after[0] : *pair[0])) << row.text;
  }
  const Dump left = dump_of(capture("vlans-left"));
  const Dump right = dump_of(capture("vlans-right"));
  EXPECT_EQ(describe_fix(find_fix({&left.settings, &right.settings}, {nullptr, &right.rows}, "",
                                  STP_MCEC_TYPE1_STP_ENDIS),
                         switch_names),
            "STP_VLAN enabled: VLAN 20 false on right");
}

}  // namespace
}  // namespace lab
