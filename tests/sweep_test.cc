// Every operation under every failure that the platform can have, call by call: what comes of it,
// what stays in the cache, that nothing leaks, and that the operation then succeeds. And all of them
// in a long row. A new operation is a row.

#include <cstring>
#include <functional>
#include <map>
#include <random>
#include <sstream>

#include "avl.h"
#include "support.h"

namespace {

using namespace test;

constexpr uint32_t members[] = {0x1001, 0x1003};

// What is cached, by index and type. Each node and its value are whole blocks, and nothing else is
// live.
using Contents = std::map<std::pair<uint32_t, uint16_t>, std::string>;

Contents contents() {
  struct Walked {
    Contents nodes;
    uint64_t bytes = 0;
  } walked;
  const auto each = [](const void *at, void *context) {
    auto &into = *static_cast<Walked *>(context);
    const auto *node = static_cast<const type1_cfg_avl_node_t *>(at);
    EXPECT_EQ(standin_block_type(node), 1U);
    EXPECT_EQ(standin_block_size(node), sizeof *node);
    EXPECT_EQ(standin_block_type(node->val), 2U);
    EXPECT_EQ(standin_block_size(node->val), node->len);
    into.nodes[{node->if_index, node->type}].assign(reinterpret_cast<char *>(node->val), node->len);
    into.bytes += sizeof *node + node->len;
  };
  standin_tree_walk(stp_mcec_type1_cfg_avl, each, &walked);
  EXPECT_EQ(standin_live_blocks(STANDIN_ALL_TYPES), 2 * walked.nodes.size());
  EXPECT_EQ(standin_live_bytes(STANDIN_ALL_TYPES), walked.bytes);
  return walked.nodes;
}

void cache_everything() {
  const Bytes values[] = {word(4), vlans("10-20"), name("east"), word(7), Bytes(8192, 1), word(1),
                          word(0), word(0x12),     word(0),      word(1), word(2),        word(1)};
  for (uint16_t type = 1; type <= 9; ++type) cache(0, type, values[type - 1]);
  for (const uint32_t port : members) {
    for (uint16_t type = 10; type <= 12; ++type) cache(port, type, values[type - 1]);
  }
}

// --- the operations ---

std::string in_hex(uint32_t code) {
  char text[16];
  std::snprintf(text, sizeof text, "%x", code);
  return text;
}

// An array, in a block of the platform as one from the peer, that must stay as it is.
struct Given {
  Bytes bytes;
  explicit Given(const Entries &entries) : bytes(array(entries)), before(bytes) {}
  ~Given() { EXPECT_EQ(bytes, before); }

 private:
  Bytes before;
};

std::string cache_update(bool is_deleted, int32_t gbl, uint32_t if_index) {
  const Given given({{1, word(5)}, {11, word(2)}});
  const Bytes payload = update_payload(0, 0, 0, given.bytes);
  const Message message(standin_message(0, payload.data(), payload.size()));
  return in_hex(stp_mcec_type1_cfg_cache_update(is_deleted ? 1 : 0, gbl, if_index, message.msg));
}

std::string rebuild() {
  Given given({{1, word(5)}, {6, word(1)}});
  return in_hex(stp_mcec_type1_cfg_cache_rebuild(given.bytes.data(), 0, 0));
}

std::string exported(int32_t gbl, uint32_t if_index) {
  void *out = nullptr;
  const uint32_t result = stp_mcec_type1_cfg_get_params(gbl, if_index, &out);
  const std::string text =
      in_hex(result) + " |" + (out != nullptr ? " " + entries_of(out) : " null");
  if (out != nullptr) mtrack_free(out);
  return text;
}

std::string report() {
  Given given({{6, word(1)}, {2, vlans("3")}});
  void *block = nullptr;
  const uint32_t result = stp_mcec_type1_cfg_get_param_info(given.bytes.data(), &block);
  if (block == nullptr) return in_hex(result) + " | null";
  const auto *told = static_cast<mcecm_app_info_report_t *>(block);
  uint32_t filled = 0;
  while (filled < told->count && told->records[filled].param_value[0] != 0) ++filled;
  mtrack_free(block);
  return in_hex(result) + " | " + std::to_string(filled) + " records";
}

using Check = uint32_t (*)(void *local, void *remote, void *twins, void *pass, void *fail);

std::string verdict(Check check) {
  Given local({{6, word(1)}, {3, name("east")}, {2, vlans("10,20")}});
  Given remote({{2, vlans("10")}, {3, name("east")}, {6, word(1)}});
  Bytes twins = vlans("10,20");
  bmp4096_t pass{};
  bmp4096_t fail{};
  const uint32_t code = check(local.bytes.data(), remote.bytes.data(), twins.data(), &pass, &fail);
  const std::string passed = vlans_of(pass);
  return in_hex(code) + " | " + passed + " | " + vlans_of(fail);
}

std::string set_one_port(uint32_t id, bool positive, uint32_t attribute) {
  return command(id, positive,
                 {{STP_MCEC_ATTR_IFINDEX, host_words({0, 1, 0, 0, 0x1000, 0x1003})},
                  {attribute, host_words({2})}});
}

// --- the table ---

enum class Stage { empty, mst, rapid_pvst, full };

void set_stage(Stage stage) {
  empty_cache();
  if (stage == Stage::mst || stage == Stage::rapid_pvst) {
    cache(0, 1, word(stage == Stage::mst ? 4 : 5));
  }
  if (stage == Stage::full) cache_everything();
  standin_history_clear();
  stp_mcec_lib_sdwrap_init_done = 0;
}

// What comes of a failing call: see `outcomes`. "E0+": outcome E, with 0 entries more in the cache
// than before, and the failure is the last that is logged.
using Failing = std::map<standin_operation_t, const char *>;

struct Row {
  std::string name;
  Stage stage;
  std::function<std::string()> act;
  Failing failing;
};

// {n}: field n of the outcome without a failure; {4:n}: its records, but for the first n empty.
const std::map<char, const char *> outcomes = {
    // a command: no entry, no records, no array, no TLV; the region counts its records last
    {'E', "40dd0002 | internal error: Failed malloc | count 0 | |"},
    {'R', "1 | internal error: Failed malloc | count 0 | null |"},
    {'A', "1 | internal error: Failed malloc |{3} |{4} |"},
    {'T', "40aa00ff | internal error: Failed TLV add |{3} |{4} |"},
    {'Z', "1 | internal error: Failed malloc | count 0 |{4:0} |"},
    {'e', "40dd0002 | internal error: Failed malloc |{3} |{4:0} |"},
    {'f', "40dd0002 | internal error: Failed malloc |{3} |{4:1} |"},
    // an update message: nothing handed out; no entry, and no reading of the first or the second
    {'u', "1 | | | null |"},
    {'v', "40dd0002 | |{3} |{4:0} |"},
    {'w', "40dd0002 | |{3} |{4:1} |"},
    {'x', "40aa00ff | |{3} |{4:0} |"},
    {'y', "40aa00ff | |{3} |{4:1} |"},
    // others
    {'=', "{0}"},
    {'m', "40dd0002"},
    {'n', "40aa00ff"},
    {'1', "1 | null"},
    {'p', "40aa00ff | 0 records"},
    {'q', "40aa00ff | 1 records"},
    {'N', "40aa00ff |  | "},
    {'F', "40dd0001 |  | "},
    {'M', "41b70016"},
    {'0', "0"},
};

std::vector<Row> operations() {
  std::vector<Row> rows;
  const auto add = [&](const std::string &name, Stage stage, std::function<std::string()> act,
                       Failing failing) {
    rows.push_back({name, stage, std::move(act), std::move(failing)});
  };
  for (const bool positive : {true, false}) {
    const struct {
      uint32_t id;
      std::vector<Attribute> attributes;
      const char *alloc, *full_alloc;  // with nothing cached, and with everything
      const char *tlv, *full_tlv;
    } commands[] = {
        {1,
         {{STP_MCEC_ATTR_STP_MODE, host_words({4})}},
         "E0+ E0+ R1+ A1+",
         "R0+ A0+",
         "T1+",
         "T0+"},
        {2,
         {{STP_MCEC_ATTR_VLAN_LIST, host_words({0, 1, 15, 30})}},
         "E0+ E0+ R1 A1",
         "R0 A0",
         "T1",
         "T0"},
        {18, {}, "E0+ E0+ R1 A1", "R0 A0", "T1", "T0"},
        {19, {}, "E0+ E0+ R1 A1", "R0 A0", "T1", "T0"},
        {20, {}, "E0+ E0+ R1 A1", "R0 A0", "T1", "T0"},
        {45, {}, "E0+ E0+ R1 A1", "R0 A0", "T1", "T0"},
        {21, {}, "E0+ E0+ R1 A1", "R0 A0", "T1", "T0"},
        {46, {}, "E0+ E0+ R1 A1", "R0 A0", "T1", "T0"},
        {49, {}, "E0+ E0+ R1 A1", "R0 A0", "T1", "T0"},
        {43, {}, "", "R0+ Z0", "", "T0 T0 T0"},
        {62, {}, "", "", "", ""},
    };
    for (const auto &row : commands) {
      const auto act = [=] { return command(row.id, positive, row.attributes); };
      const std::string name = std::to_string(row.id) + (positive ? "" : " no");
      add(name, Stage::empty, act, {{STANDIN_ALLOC, row.alloc}, {STANDIN_TLV_ADD, row.tlv}});
      add(name, Stage::full, act,
          {{STANDIN_ALLOC, row.full_alloc}, {STANDIN_TLV_ADD, row.full_tlv}});
    }
    const struct {
      uint32_t id, attribute;
    } of_ports[] = {{13, 0x2020036}, {17, 0x2020065}, {47, 0x202003F}, {48, 1}, {50, 0x202008B}};
    for (const auto &row : of_ports) {
      const auto act = [=] { return set_one_port(row.id, positive, row.attribute); };
      const std::string name = std::to_string(row.id) + (positive ? "" : " no");
      add(name, Stage::empty, act,
          {{STANDIN_ALLOC, "R0+ e0+ e0+ f1+ f1+ A2"},
           {STANDIN_TLV_ADD, "T2"},
           {STANDIN_MEMBERSHIP, "*2 *1 *2 *1 *2 *1 *2 *1"}});
      add(name, Stage::full, act,
          {{STANDIN_ALLOC, "R0+ A0"},
           {STANDIN_TLV_ADD, "T0"},
           {STANDIN_MEMBERSHIP, "*0 *0 *0 *0 *0 *0 *0 *0"}});
    }
  }
  const auto update_ports = [] { return update(0, 0x1001, {{10, word(3)}, {11, word(2)}}); };
  add("update message", Stage::empty, update_ports,
      {{STANDIN_ALLOC, "u0+ u0+ v0+ v0+ w1+ w1+"}, {STANDIN_TLV_NEXT, "x0+ y1+"}});
  add("update message", Stage::full, update_ports,
      {{STANDIN_ALLOC, "u0+ u0+"}, {STANDIN_TLV_NEXT, "x0+ y0+"}});
  add("cache update", Stage::empty, [] { return cache_update(false, 1, 0); },
      {{STANDIN_ALLOC, "m0+ m0+ m1+ m1+"}, {STANDIN_TLV_NEXT, "n0+ n1+"}});
  add("cache update", Stage::full, [] { return cache_update(false, 0, 0x1001); },
      {{STANDIN_ALLOC, "m0+ m0+"}, {STANDIN_TLV_NEXT, "n0+ n1+"}});
  add("delete the switch", Stage::full, [] { return cache_update(true, 1, 0); }, {});
  add("delete a port", Stage::full, [] { return cache_update(true, 0, 0x1001); }, {});
  add("rebuild", Stage::empty, rebuild,
      {{STANDIN_ALLOC, "m0+ m0+ m1+ m1+"}, {STANDIN_TLV_NEXT, "n0+ n1+"}});
  add("export the switch", Stage::full, [] { return exported(1, 0); },
      {{STANDIN_ALLOC, "10"}, {STANDIN_TLV_ADD, "-0 -0 -0 -0 -0 -0 -0 -0 -0"}});
  add("export a port", Stage::full, [] { return exported(0, 0x1003); },
      {{STANDIN_ALLOC, "10"}, {STANDIN_TLV_ADD, "-0 -0 -0"}});
  add("export nothing", Stage::empty, [] { return exported(1, 0); }, {{STANDIN_ALLOC, "10"}});
  add("report", Stage::full, report, {{STANDIN_ALLOC, "10"}, {STANDIN_TLV_NEXT, "p0 q0"}});

  // The walk over what counts in every mode may end early: the check of the mode goes on.
  const struct {
    const char *name;
    Check check;
    Stage stage;
    const char *next, *find;
  } checks[] = {
      {"check in MST",
       [](void *local, void *remote, void *twins, void *pass, void *fail) {
         return stp_mcec_type1_cfg_compat_check(0, local, remote, 1, twins, pass, fail);
       },
       Stage::mst, "=0 =0 =0 N0+ N0+ N0+", "F0+ F0+"},
      {"check of a port in Rapid-PVST",
       [](void *local, void *remote, void *twins, void *pass, void *fail) {
         return stp_mcec_type1_cfg_compat_check_with_ifindex(0x1000, 0, local, remote, 1, twins,
                                                             pass, fail);
       },
       Stage::rapid_pvst, "=0 =0 =0 N0+ N0+ N0+", "F0+ F0+"},
      {"check without a mode",
       [](void *local, void *remote, void *twins, void *pass, void *fail) {
         return stp_mcec_type1_cfg_compat_check_common(1, 0, local, remote, 1, twins, pass, fail);
       },
       Stage::empty, "", ""},
      {"check of MST",
       [](void *local, void *remote, void *, void *, void *) {
         return stp_mcec_mst_type1_cfg_compat_check(0, 0, local, remote);
       },
       Stage::empty, "N0+ N0+ N0+", "F0+"},
      {"check of Rapid-PVST",
       [](void *local, void *remote, void *twins, void *pass, void *fail) {
         return stp_mcec_pvrst_type1_cfg_compat_check(0, 0, local, remote, 1, twins, pass, fail);
       },
       Stage::empty, "N0+ N0+ N0+", "F0+"},
  };
  for (const auto &row : checks) {
    add(row.name, row.stage, [check = row.check] { return verdict(check); },
        {{STANDIN_TLV_NEXT, row.next}, {STANDIN_TLV_FIND, row.find}});
  }
  add("channel of a port", Stage::empty,
      [] {
        uint32_t id = 99;
        const uint32_t result = stp_mcec_lib_get_mcec_id(0x1001, &id);
        EXPECT_EQ(id, result == 0 ? 11U : 99U);
        return in_hex(result);
      },
      {{STANDIN_MEMBERSHIP, "M0"}});
  add("trunk", Stage::empty, [] { return in_hex(stp_mcec_lib_mct_exists()); }, {});
  add("validity", Stage::empty, [] { return in_hex(stp_valid_if_index(0x1000)); },
      {{STANDIN_LAYER_MODE, "00"}});
  return rows;
}

// --- the sweep ---

// The fields of an outcome, field 0 the whole.
std::vector<std::string> fields_of(const std::string &outcome) {
  std::vector<std::string> fields = {outcome};
  for (std::size_t at = 0; at <= outcome.size();) {
    const std::size_t end = std::min(outcome.find(" |", at), outcome.size());
    fields.push_back(outcome.substr(at, end - at));
    at = end + 2;
  }
  return fields;
}

// Of " type 19 r r r" the first n records, the others empty.
std::string emptied(const std::string &records, std::size_t kept) {
  std::istringstream in(records);
  std::string text;
  std::string part;
  for (std::size_t i = 0; in >> part; ++i) text += " " + (i < kept + 2 ? part : "0,0,0,0");
  return text;
}

std::string expanded(std::string text, const std::string &clean) {
  const std::vector<std::string> fields = fields_of(clean);
  for (std::size_t at; (at = text.find('{')) != text.npos;) {
    const std::size_t end = text.find('}', at);
    std::string field = fields.at(std::size_t(text[at + 1] - '0'));
    if (text[at + 2] == ':') field = emptied(field, std::size_t(text[at + 3] - '0'));
    text.replace(at, end + 1 - at, field);
  }
  return text;
}

// An exported array without its nth entry.
std::string without_entry(const std::string &clean, uint32_t nth) {
  std::istringstream in(clean);
  std::string text;
  std::string part;
  for (uint32_t i = 0; in >> part; ++i) {
    if (i != nth + 1) text += (i > 0 ? " " : "") + part;
  }
  return text;
}

// What the log says last of a failure that is logged.
constexpr std::pair<standin_operation_t, const char *> last_words[] = {
    {STANDIN_ALLOC, "Failed malloc"},
    {STANDIN_TLV_ADD, "Failed to TLV"},
    {STANDIN_TLV_NEXT, "ailed (rc=0x40aa00ff, system error 0x40AA00FF) "},
    {STANDIN_TLV_FIND, "ailed (rc=0x40aa00ff, system error 0x40AA00FF) "},
    {STANDIN_MEMBERSHIP, "ailed"},
    {STANDIN_LAYER_MODE, "ailed"},
};

struct Sweep : LibraryTest {
  void SetUp() override {
    LibraryTest::SetUp();
    standin_add_ports(0x1000, 0x1003, 26, 2);
    standin_set_member(members[0], 11);
    standin_set_member(members[1], 13);
  }
  void TearDown() override {
    stp_mcec_lib_sdwrap_init_done = 1;
    LibraryTest::TearDown();
  }
};

TEST_F(Sweep, EveryFailureOfEveryOperationIsHandled) {
  for (const Row &row : operations()) {
    set_stage(row.stage);
    const Contents before = contents();
    const std::string clean = row.act();
    const Contents after = contents();
    for (const auto &[operation, last_word] : last_words) {
      const auto failing = row.failing.find(operation);
      std::istringstream expected(failing != row.failing.end() ? failing->second : "");
      for (uint32_t nth = 1;; ++nth) {
        SCOPED_TRACE(row.name + ", stage " + std::to_string(int(row.stage)) + ", operation " +
                     std::to_string(operation) + ", call " + std::to_string(nth));
        set_stage(row.stage);
        const uint32_t calls = standin_calls(operation);
        standin_fail(operation, nth, 1);
        const std::string outcome = row.act();
        const bool failed = standin_calls(operation) - calls >= nth;
        standin_fail(operation, 0, 0);
        std::string told;
        ASSERT_EQ(bool(expected >> told), failed) << outcome;
        if (!failed) break;
        if (told[0] == '*') {
          EXPECT_TRUE(outcome.starts_with("0 | ok | cmd 1 ")) << outcome;
        } else {
          EXPECT_EQ(outcome, told[0] == '-' ? without_entry(clean, nth)
                                            : expanded(outcomes.at(told[0]), clean));
        }
        const Lines lines = log();
        const std::string last = lines.empty() ? "" : lines.back();
        const bool is_logged = last.find(last_word) != last.npos;
        EXPECT_EQ(is_logged, told.ends_with('+')) << last;
        if (is_logged) {
          EXPECT_TRUE(last.starts_with("stp_mcec_")) << last;
        }

        // The cache holds entries as they were, or as they would have become.
        const Contents now = contents();
        EXPECT_EQ(now.size(), before.size() + std::size_t(told[1] - '0'));
        for (const auto &entry : now) {
          const auto old = before.find(entry.first);
          const auto made = after.find(entry.first);
          EXPECT_TRUE((old != before.end() && *old == entry) ||
                      (made != after.end() && *made == entry));
        }
        EXPECT_EQ(row.act(), clean);
        EXPECT_EQ(contents(), after);
      }
    }
  }
}

TEST_F(Sweep, OperationsDoWithoutTheEventHistory) {
  for (const Row &row : operations()) {
    set_stage(row.stage);
    const std::string clean = row.act();
    const uint32_t lines = standin_history_count();
    for (const uint32_t times : {1U, 1000U}) {
      SCOPED_TRACE(row.name);
      set_stage(row.stage);
      const uint32_t calls = standin_calls(STANDIN_HISTORY_INIT);
      standin_fail(STANDIN_HISTORY_INIT, 1, times);
      EXPECT_EQ(row.act(), clean);
      EXPECT_EQ(standin_history_count(), lines);
      EXPECT_EQ(standin_calls(STANDIN_HISTORY_INIT) - calls, std::min(times + 1, lines));
      EXPECT_EQ(stp_mcec_lib_sdwrap_init_done, lines > times ? 1 : 0);
    }
  }
}

// Each look at the cache holds the live blocks and bytes against what is in it.
TEST_F(Sweep, ALongRowOfOperationsLeavesNothingBehind) {
  standin_on_history(nullptr);
  const std::vector<Row> rows = operations();
  std::mt19937 random(1);
  for (int i = 0; i < 200000 && !HasFailure(); ++i) {
    if (random() % 64 == 0) set_stage(Stage(random() % 4));
    const auto operation = standin_operation_t(random() % STANDIN_OPERATIONS);
    if (random() % 4 == 0)
      standin_fail(operation, 1 + uint32_t(random() % 6), 1 + uint32_t(random() % 3));
    rows[random() % rows.size()].act();
    standin_fail(operation, 0, 0);
    standin_history_clear();
    contents();
  }
}

}  // namespace
