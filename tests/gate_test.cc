// compare in CI: exit status, accepted differences, intended states, groups.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>

#include "lab.h"

namespace {

const struct {
  const char *arguments;
  int status;
  const char *text;
} comparisons[] = {
    {"none none", 3, "NOT COMPARED: neither switch has a multi-chassis channel\n"},
    {"none none --accept gap", 0, "accepted: a lab\n"},
    {"none none --accept bad", 2, "bad:3:9: found 'lost'; expected a kind of note: "},
    {"none none --accept bad", 2,
     "bad:4:21: found '2026-02-30'; expected a date like 2026-12-31\n"},
    {"guarded open", 1, "    PortChannel10-69 (60 channels)\n    DIFFERENT: ifi-port-guard"},
    {"guarded open", 1,
     "fix: STP_PORT|PortChannel10-69 root_guard: true on right, or false on left\n"},
    {"guarded open --accept guards", 0,
     "    accepted: ifi-port-guard: the server moves to another room by then (until\n"
     "              2999-01-01)\n"},
    {"guarded open --accept guards --strict", 1, "Warnings remain"},
    {"guarded open --accept old", 1,
     "The accepted difference at line 1 has expired on 2001-01-01."},
    {"guarded open --quiet", 1, ""},
    {"--intended guarded open", 1, "root_guard: true on actual\n"},
    {"--intended plan.yaml none", 1, "    intended MISSING on the actual: loop-guard"},
    {"--intended plan.yaml none", 1, "fix: loop-guard: enabled on actual\n"},
    {"--intended guarded open none", 2, "RIGHT excludes --intended"},
    {"guarded open --patch actual -", 2, "expected left, right or both\n"},
    {"guarded none --patch left -", 1,
     "not decided: MCLAG_INTERFACE|1|PortChannel10 is missing on right\n"},
    {"guarded open --color=always", 1, "\033["},
};

TEST_F(Lab, ComparesInCi) {
  const std::string no_channel =
      R"("STP_MST": {"GLOBAL": {"name": "x"}}, "STP": {"GLOBAL": {"mode": "mst"}})";
  const auto put = [&](const char *name, const std::string &text) {
    std::ofstream(folder + "/" + name) << text;
  };
  const auto channels = [&](const char *guard) {
    std::string rows, ports;
    for (int i = 10; i < 70; ++i) {
      const std::string name = "PortChannel" + std::to_string(i);
      rows += (rows.empty() ? "" : ", ") + ("\"1|" + name + "\": {}");
      ports += (ports.empty() ? "" : ", ") +
               ("\"" + name + "\": {\"enabled\": \"true\", \"root_guard\": \"" + guard + "\"}");
    }
    return "{" + no_channel + ", \"MCLAG_INTERFACE\": {" + rows + "}, \"STP_PORT\": {" + ports +
           "}}";
  };
  put("none", "{" + no_channel + "}");
  put("guarded", channels("true"));
  put("open", channels("false"));
  put("gap", "[{incomplete: no-channels, reason: a lab}]");
  put("bad",
      "- scope: switch\n  reason: x\n  note: lost\n- {scope: x, until: 2026-02-30, reason: y}\n");
  put("guards",
      "- {scope: 'PortChannel*', parameter: ifi-port-guard, left: Root, reason: the server "
      "moves to another room by then, until: 2999-01-01}\n");
  put("plan.yaml", "parameters: {stp-mode: mst, mst-region-name: x, loop-guard: enabled}");
  put("old",
      "- {scope: 'PortChannel*', parameter: ifi-port-guard, reason: r, until: 2001-01-01}\n");
  for (const auto &row : comparisons) {
    const Outcome outcome = lab(std::string("compare ") + row.arguments, "cd " + folder + " &&");
    EXPECT_EQ(outcome.status, row.status) << row.arguments << outcome.out;
    EXPECT_NE(outcome.out.find(row.text), std::string::npos) << row.arguments << outcome.out;
    EXPECT_LT(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 70) << row.arguments;
    EXPECT_TRUE(*row.text != '\0' || outcome.out.empty()) << outcome.out;
  }
}

}  // namespace
