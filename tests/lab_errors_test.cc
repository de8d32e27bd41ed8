// Errors in scenarios, sources and arguments; failures of outputs and switches.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "lab.h"

namespace {

using Json = nlohmann::json;

const struct {
  const char *scenario;
  const char *errors;  // without "FILE:" before each line
} wrong_scenarios[] = {
    {"[", "1:1: invalid YAML: end of sequence flow not found; expected a scenario in YAML\n"},
    {"steps: []", "1:8: found no step; expected a list of at least one step\n"},
    {"", "1:1: the file is empty; expected a scenario in YAML\n"},
    {"title: x\n", "1:1: missing key 'steps' in a scenario\n"},
    {"steps: [{check: switch}]\n---\nsteps: []\n",
     "2:1: found a second document; expected one document\n"},
    {"steps: [{check: switch}]\n---\n, x", "2:1: found a second document; expected one document\n"},
    {"switches:\n  left: {parameters: {ifi-port-type: edge-port}, ports: [{member: 3}]}\n"
     "  right: {parameters: {mst-region-vi-map: {1: 10-20, 2: 15}}}\nsteps:\n"
     "- {command: stp-mode, attributes: [{word: 3}], expect: {}}\n"
     "- {report: switch, expect: {texts: {}}}\n",
     "2:58: a group of ports without 'ports'; expected indexes under 'ports', or a name under "
     "'port'\n"
     "2:23: found 'ifi-port-type', a parameter of interfaces; expected it in a group of ports\n"
     "3:57: found VLAN 15 in two instances; expected it in one\n"
     "5:36: missing key 'id' in an attribute\n"
     "5:56: found a mapping; expected at least one of answer, result, records or values\n"
     "6:36: found a mapping; expected parameters and texts, for instance {stp-mode: MST}\n"},
    {"titel: x\nsteps: [{check: switch}]",
     "1:1: unknown key 'titel' in a scenario; expected title, about, twin-vlans, switches or "
     "steps\n"},
    {"steps:\n- command: stp-mode\n  vlans: 1\n  mode: fast\n- delete: 0x9\n",
     "3:10: found 'vlans' with stp-mode; expected it with stp-endis only\n"
     "4:9: found 'fast'; expected mode: mst or rapid-pvst, or a number\n"
     "5:11: port 0x9 does not exist; expected a port of one of the switches\n"},
    {"steps:\n- update: {stp-endis: 1-4096}\n  on: up\n- rebuild: zz\n- check: switch\n"
     "  on: left\n  expect: {answer: accepted}\n",
     "2:23: found '1-4096'; expected stp-endis: VLANs 0 to 4095, for instance 1-10,20, or none\n"
     "3:7: found 'up'; expected on: left, right or both\n"
     "4:12: found 'zz'; expected an exported array, but no earlier step has exported one 'as' a "
     "name\n"
     "6:3: unknown key 'on' in a 'check' step; expected check, note, expect or twin-vlans\n"
     "7:12: unknown key 'answer' in the expectations of 'check'; expected verdict, left, right, "
     "differ, pass, fail, ports, channels or inconsistent\n"},
    {"steps:\n- {fail: allocation, expect: {result: ok}}\n- comand: x\n",
     "2:30: nothing can be expected of 'fail'\n"
     "3:3: found a step with 'comand'; expected a step with one of command, or one of 10 more\n"},
    {"steps:\n- {update: {stp-mode: mst, loop-guard: enabled, stp-mode: mst}}\n"
     "- {report: switch, expect: {texts: {stp-mode: MST, stp-mode: MST}}}\n"
     "- {change: {ports: [{ports: 0x1, pod: maybe}]}}\n"
     "- {command: stp-endis, vlans: 1,2}\n- {command: stp-endis, vlans: 20-10}\n"
     "- {<<: {check: switch}, check: switch}\n- {update: {lop-guard: enabled}}\n"
     "- {check: switch, expect: {verdict: agree, left: TYPE1_STP_MODE}}\n",
     "2:49: found 'stp-mode' twice; expected each key once\n"
     "3:52: found 'stp-mode' twice; expected each key once\n"
     "4:39: found 'maybe'; expected pod: true or false\n"
     "5:33: found '2' after a comma; expected a list of numbers in quotation marks: \"1,2\"\n"
     "6:31: found '20-10'; expected vlans: VLANs 0 to 4095: each range from the lower number to "
     "the higher, for instance 1-10,20, or none\n"
     "7:4: found '<<'; expected the keys themselves, or an alias for the whole mapping: merge "
     "keys are not supported\n"
     "8:13: found 'lop-guard'; expected a parameter: loop-guard, or one of 11 more\n"
     "9:27: found expectations that exclude each other: 'verdict' is the verdict of both "
     "switches, and 'left' has another one; expected a possible outcome\n"},
    {"switches:\n"
     "  left: {ports: [{port: Po1, index: 0x1000, member: 3}, {port: x, index: 0x1000}]}\n"
     "  right: {ports: [{port: Po1, index: 7, ports: 8}]}\nsteps:\n"
     "- {command: stp-mode, on: left, attributes: [{id: 1, word: 1, bytes: 00}, {id: 2}, "
     "{id: 3, bytes: 0}]}\n"
     "- export: Po7\n- check: channel Po9\n"
     "- {on: left, update: {mst-region-name: a-name-that-is-longer-than-a-name-is, "
     "gbl-port-type: {bytes: zz}}}\n"
     "- {check: switch, export: switch}\n- {delete: \"x,\"}\n",
     "2:57: found Po1 and x with the index 0x1000; expected a unique index for each port\n"
     "3:19: a group of ports with 'ports' and 'port'; expected indexes under 'ports', or a name "
     "under 'port'\n"
     "3:38: found 'index' with 'ports'; expected 'port', a name\n"
     "5:46: found a mapping; expected an attribute with either a word or bytes\n"
     "5:75: found a mapping; expected an attribute with either a word or bytes\n"
     "5:99: found '0'; expected an attribute: bytes in hexadecimal, for instance 00 00 00 05\n"
     "6:11: found 'Po7'; expected what to export (switch, or ports): port indexes, for instance "
     "0x1000-0x1003,0x2000, or names: x\n"
     "7:10: found channel 'Po9'; expected a channel of one of the switches: 3\n"
     "8:40: found 'a-name-that-is-longer-than-a-name-is'; expected a region name of at most 32 "
     "bytes; it has 36\n"
     "8:101: found 'zz'; expected a value: bytes in hexadecimal, for instance 00 00 00 05\n"
     "9:19: found 'export' together with 'check'; expected one action in a step\n"
     "9:19: unknown key 'export' in a 'check' step; expected expect, check, note or "
     "twin-vlans\n"
     "10:12: found ''; expected what to delete (switch, or ports): port indexes, for instance "
     "0x1000-0x1003,0x2000, or names: x\n"},
    {"switches:\n  left: {parameters: {mst-region-name: \"a\\0\"}, "
     "ports: [{port: \"b\\x1B\"}]}\nsteps: [{check: switch}]\n",
     "2:63: found 'b\\x1b'; expected the name of a port without control characters\n"
     "2:40: found 'a\\x00'; expected a region name without control characters\n"},
    {"steps:\n\t- check: switch\n", "2:1: found a tab in the indentation; expected spaces\n"},
};

TEST_F(Lab, ReportsEveryErrorWithItsPlace) {
  for (const auto &row : wrong_scenarios) {
    std::istringstream lines(row.errors);
    std::string expected;
    for (std::string line; std::getline(lines, line);) expected += file + ":" + line + "\n";
    const Outcome outcome = run(row.scenario);
    EXPECT_EQ(outcome.out, expected);
    EXPECT_EQ(outcome.status, 2);
  }
  const Outcome none = lab("run --json " + folder + "/none 2>/dev/null");
  EXPECT_EQ(none.status, 2);
  EXPECT_EQ(Json::parse(none.out)["errors"][0]["found"],
            "cannot be read: No such file or directory");
  std::string many = "steps:\n";
  for (int i = 0; i < 120; ++i) many += "- {crash: X}\n";
  EXPECT_NE(run(many).out.find("\n" + file + ": 20 more errors\n"), std::string::npos);
  EXPECT_EQ(lab("run --quiet -", "echo 'steps: [{check: switch}]' |").status, 0);
  EXPECT_EQ(lab("run").status, 2);
  EXPECT_EQ(lab("walk").status, 2);
  EXPECT_EQ(lab("--help").status, 0);
}

TEST_F(Lab, RefusesInvalidSources) {
  const struct {
    const char *arguments;
    const char *line;
  } rows[] = {
      {"", "mcec-lab compare: found no source; expected two sources, left and right, or --pairs\n"},
      {"a",
       "mcec-lab compare: found one source; expected two sources, left and right, or "
       "--pairs\n"},
      {"- -", "mcec-lab compare: found '-' twice; expected standard input on one side only\n"},
      {"redis://h%zz -", "redis://...: found an invalid '%' escape; expected %25 for '%'\n"},
      {"redis://[::1]:99999 -",
       "redis://...: found an invalid port; expected a number from 1 to 65535\n"},
      {"redis:// -",
       "redis://...: found no host, or more than one; expected redis://host:port/4, "
       "an IPv6 address in brackets\n"},
      {"unix://x -",
       "unix://...: found no path; expected unix:///path, which begins with a slash\n"},
      {"'unix:///s?x=1' -", "unix://...: found other text after the path; expected ?db=N\n"},
      {"foo://x -", "foo://...: found 'foo://'; expected redis://host, unix:///path, or a file\n"},
  };
  for (const auto &row : rows) {
    const Outcome outcome = lab(std::string("compare ") + row.arguments, "echo |");
    EXPECT_TRUE(outcome.out.starts_with(row.line)) << outcome.out << row.line;
    EXPECT_EQ(outcome.status, 2);
  }
}

TEST_F(Lab, ReportsOutputsThatCannotBeWritten) {
  write("steps: [{command: gbl-loopguard}]");
  for (const std::string &command :
       {"run " + file, "run --json " + file, "what-if " + file + " 1", std::string("list"),
        std::string("explain 1"), std::string("--help"), std::string("--version")}) {
    for (const char *closed : {" >/dev/full", " >&-"}) {
      const Outcome outcome = lab(command + closed);
      EXPECT_EQ(outcome.status, 2) << command << closed;
      EXPECT_NE(outcome.out.find("the output cannot be written: "), std::string::npos);
    }
  }
}

TEST_F(Lab, RefusesATimeThatIsNotANumber) {
  EXPECT_EQ(lab("watch --interval nan a b").out,
            "mcec-lab: --interval: Value nan is not a number\nSee mcec-lab watch --help.\n");
}

TEST_F(Lab, EscapesControlCharacters) {
  write("title: \"a\\x1b[31mb\"\nabout: \"c\\x07\"\nsteps:\n- {check: switch, note: \"\\x9b\"}\n");
  for (const char *options : {"", "--json"}) {
    const Outcome outcome = lab(std::string("run ") + options + " " + file);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out.find_first_of("\033\007\x9b"), std::string::npos);
    EXPECT_NE(outcome.out.find("x1b[31mb"), std::string::npos);
  }
}

TEST_F(Lab, ReportsADeadSwitchWithItsLastLines) {
  const Outcome outcome = run("steps:\n- command: gbl-loopguard\n- {crash: SEGV, on: right}\n");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_NE(outcome.out.find("the right switch was killed by SIGSEGV (Segmentation fault)"),
            std::string::npos)
      << outcome.out;
  EXPECT_NE(outcome.out.find("Global Loopguard changed to True\n"), std::string::npos);
}

TEST_F(Lab, StopsBothSwitchesOnAnInterrupt) {
  std::string steps = region;
  for (int i = 0; i < 20000; ++i) steps += "- {check: all}\n";
  write(steps);
  const Outcome outcome = lab("run --quiet " + file +
                              " >/dev/null & lab=$!; until pgrep -P $lab; do sleep 0.1; done "
                              ">/dev/null; kill -INT $lab; "
                              "wait $lab; echo status $?; pgrep -P $lab; true");
  EXPECT_EQ(outcome.out.find(file + ":"), 0U) << outcome.out;
  EXPECT_TRUE(outcome.out.ends_with(": interrupted\nstatus 2\n")) << outcome.out;
}

}  // namespace
