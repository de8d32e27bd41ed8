// Failure injection: each operation with each failing call of the platform. Checks the outcome, the
// cache, leaks, and that the operation then succeeds. Then a long random sequence. operations.cc
// has the operations.

#include <map>
#include <random>

#include "avl.h"
#include "operations.h"

namespace {

using namespace test;

// The cache: values by index and type.
using Contents = std::map<std::pair<uint32_t, uint16_t>, std::string>;

// Returns the cache. Expects a block for each node and each value, and no other blocks.
Contents contents() {
  struct Walked {
    Contents nodes;
    uint64_t bytes = 0;
  } walked;
  const auto add = [](const void *item, void *context) {
    auto &into = *static_cast<Walked *>(context);
    const auto *node = static_cast<const type1_cfg_avl_node_t *>(item);
    EXPECT_EQ(standin_block_type(node), 1U);
    EXPECT_EQ(standin_block_size(node), sizeof *node);
    EXPECT_EQ(standin_block_type(node->val), 2U);
    EXPECT_EQ(standin_block_size(node->val), node->len);
    into.nodes[{node->if_index, node->type}].assign(reinterpret_cast<char *>(node->val), node->len);
    into.bytes += sizeof *node + node->len;
  };
  standin_tree_walk(stp_mcec_type1_cfg_avl, add, &walked);
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

void set_stage(Stage stage) {
  empty_cache();
  if (stage == Stage::mst || stage == Stage::rapid_pvst) {
    cache(0, 1, word(stage == Stage::mst ? 4 : 5));
  }
  if (stage == Stage::full) cache_everything();
  standin_history_clear();
  stp_mcec_lib_sdwrap_init_done = 0;
}

// The text of the last log line for a failure that is logged.
constexpr std::pair<standin_operation_t, const char *> last_lines[] = {
    {STANDIN_ALLOC, "Failed malloc"},
    {STANDIN_TLV_ADD, "Failed to TLV"},
    {STANDIN_TLV_NEXT, "ailed (rc=0x40aa00ff, system error 0x40AA00FF) "},
    {STANDIN_TLV_FIND, "ailed (rc=0x40aa00ff, system error 0x40AA00FF) "},
    {STANDIN_MEMBERSHIP, "ailed"},
    {STANDIN_LAYER_MODE, "ailed"},
};

struct FailureInjection : LibraryTest {
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

// Expects that each entry has its value before the operation, or after its success.
void expect_whole_entries(const Contents &now, const Contents &before, const Contents &after) {
  for (const auto &entry : now) {
    const auto old = before.find(entry.first);
    const auto made = after.find(entry.first);
    EXPECT_TRUE((old != before.end() && *old == entry) || (made != after.end() && *made == entry));
  }
}

// Executes an operation whose nth platform call fails. Returns false if there is no nth call.
bool inject_failure(const Operation &operation, standin_operation_t platform, uint32_t nth,
                    std::string &outcome) {
  set_stage(operation.stage);
  const uint32_t calls = standin_calls(platform);
  standin_fail(platform, nth, 1);
  outcome = operation.act();
  standin_fail(platform, 0, 0);
  return standin_calls(platform) - calls >= nth;
}

void expect_outcome(const std::string &outcome, const Failure &failure, const std::string &clean,
                    uint32_t nth, const char *failure_words) {
  const std::string expected = failure.outcome;
  if (expected.ends_with("{any}")) {
    EXPECT_TRUE(outcome.starts_with(expected.substr(0, expected.size() - 5))) << outcome;
  } else {
    EXPECT_EQ(outcome, expand_outcome(expected, clean, nth));
  }
  const Lines lines = log();
  const std::string last = lines.empty() ? "" : lines.back();
  const bool is_logged = last.find(failure_words) != last.npos;
  EXPECT_EQ(is_logged, failure.is_last_line) << last;
  EXPECT_TRUE(!is_logged || last.starts_with("stp_mcec_")) << last;
}

TEST_F(FailureInjection, EveryFailureOfEveryOperationIsHandled) {
  for (const Operation &operation : make_operations()) {
    set_stage(operation.stage);
    const Contents before = contents();
    const std::string clean = operation.act();
    const Contents after = contents();
    for (const auto &[platform, words] : last_lines) {
      const auto found = operation.failures.find(platform);
      const Failures failures = found != operation.failures.end() ? found->second : Failures{};
      for (uint32_t nth = 1;; ++nth) {
        SCOPED_TRACE(operation.name + ", stage " + std::to_string(int(operation.stage)) +
                     ", operation " + std::to_string(platform) + ", call " + std::to_string(nth));
        std::string outcome;
        const bool has_failed = inject_failure(operation, platform, nth, outcome);
        ASSERT_EQ(has_failed, nth <= failures.size()) << outcome;
        if (!has_failed) break;
        const Failure &failure = failures[nth - 1];
        expect_outcome(outcome, failure, clean, nth, words);
        const Contents now = contents();
        EXPECT_EQ(now.size(), before.size() + failure.added);
        expect_whole_entries(now, before, after);
        EXPECT_EQ(operation.act(), clean);
        EXPECT_EQ(contents(), after);
      }
    }
  }
}

TEST_F(FailureInjection, OperationsSucceedWithoutTheEventHistory) {
  for (const Operation &operation : make_operations()) {
    set_stage(operation.stage);
    const std::string clean = operation.act();
    const uint32_t lines = standin_history_count();
    for (const uint32_t times : {1U, 1000U}) {
      SCOPED_TRACE(operation.name);
      set_stage(operation.stage);
      const uint32_t calls = standin_calls(STANDIN_HISTORY_INIT);
      standin_fail(STANDIN_HISTORY_INIT, 1, times);
      EXPECT_EQ(operation.act(), clean);
      EXPECT_EQ(standin_history_count(), lines);
      EXPECT_EQ(standin_calls(STANDIN_HISTORY_INIT) - calls, std::min(times + 1, lines));
      EXPECT_EQ(stp_mcec_lib_sdwrap_init_done, lines > times ? 1 : 0);
    }
  }
}

// contents() checks for leaks.
TEST_F(FailureInjection, RandomSequenceLeaksNothing) {
  standin_on_history(nullptr);
  const std::vector<Operation> operations = make_operations();
  std::mt19937 random(1);
  for (int i = 0; i < 200000 && !HasFailure(); ++i) {
    if (random() % 64 == 0) set_stage(Stage(random() % 4));
    const auto failing = standin_operation_t(random() % STANDIN_OPERATIONS);
    if (random() % 4 == 0)
      standin_fail(failing, 1 + uint32_t(random() % 6), 1 + uint32_t(random() % 3));
    operations[random() % operations.size()].act();
    standin_fail(failing, 0, 0);
    standin_history_clear();
    contents();
  }
}

}  // namespace
