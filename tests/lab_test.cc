// mcec-lab as a person and a script meet it: tables, verdicts, errors, exit status.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

namespace {

using Json = nlohmann::json;

struct Outcome {
  int status;
  std::string out;  // with what went to standard error
};

struct Lab : testing::Test {
  std::string folder;
  std::string file;

  void SetUp() override {
    char made[] = "/tmp/mcec-lab-test-XXXXXX";
    folder = mkdtemp(made);
    file = folder + "/scenario.yaml";
  }
  void TearDown() override {
    unlink(file.c_str());
    rmdir(folder.c_str());
  }

  void write(const std::string &scenario) { std::ofstream(file) << scenario; }

  static Outcome lab(const std::string &arguments, const std::string &before = "") {
    const std::string command = "{ " + before + " " LAB " " + arguments + "\n} 2>&1";
    FILE *pipe = popen(command.c_str(), "r");
    std::string out;
    char buffer[4096];
    while (const std::size_t read = fread(buffer, 1, sizeof buffer, pipe)) out.append(buffer, read);
    const int status = pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), out};
  }

  Outcome run(const std::string &scenario, const std::string &options = "") {
    write(scenario);
    return lab("run " + options + " " + file);
  }
};

constexpr char region[] =
    "title: Regions\n"
    "twin-vlans: 1-10\n"
    "switches:\n"
    "  left:\n"
    "    ports: [{ports: 0x1000-0x1001, member: 10, parameters: {ifi-port-type: edge-port}}]\n"
    "    parameters: {stp-mode: mst, mst-region-name: east, stp-endis: 10-20}\n"
    "  right:\n"
    "    ports: [{ports: 0x2000, channel: 10, parameters: {ifi-port-type: network-port}},\n"
    "            {ports: 0x2001, channel: 11, parameters: {ifi-port-type: edge-port}}]\n"
    "    parameters: {stp-mode: mst, mst-region-name: west, stp-endis: 20-30}\n"
    "steps:\n";

TEST_F(Lab, ReportsEveryErrorWithItsPlace) {
  const struct {
    const char *scenario;
    const char *errors;  // each line behind "FILE:"
  } rows[] = {
      {"[", "1:1: no YAML here: end of sequence flow not found; expected a scenario in YAML\n"},
      {"steps: []", "1:8: no step in 'steps'; expected a list of at least one\n"},
      {"", "1:1: the file is empty; expected a scenario in YAML\n"},
      {"title: x\n", "1:1: a scenario without 'steps'; expected it there\n"},
      {"steps: [{check: switch}]\n---\nsteps: []\n",
       "3:1: a second document begins here; expected one in a file\n"},
      {"steps: [{check: switch}]\n---\n, x",
       "3:1: a second document begins here; expected one in a file\n"},
      {"switches:\n  left: {parameters: {ifi-port-type: edge-port}, ports: [{member: 3}]}\n"
       "  right: {parameters: {mst-region-vi-map: {1: 10-20, 2: 15}}}\nsteps:\n"
       "- {command: stp-mode, attributes: [{word: 3}], expect: {}}\n"
       "- {report: switch, expect: {texts: {}}}\n",
       "2:58: a group of ports without 'ports'; expected indexes under 'ports', or a name under "
       "'port'\n"
       "2:23: found 'ifi-port-type', a parameter of interfaces; expected it in a group of ports\n"
       "3:57: VLAN 15 stands in two instances; expected it in one\n"
       "5:36: an attribute without 'id'; expected it there\n"
       "5:56: found a mapping; expected at least one of answer, result, records or values\n"
       "6:36: found a mapping; expected parameters and texts, for instance {stp-mode: MST}\n"},
      {"titel: x\nsteps: [{check: switch}]",
       "1:1: unknown key 'titel' in a scenario; expected title, about, twin-vlans, switches or "
       "steps\n"},
      {"steps:\n- command: stp-mode\n  vlans: 1\n  mode: fast\n- delete: 0x9\n",
       "3:10: 'vlans' does not belong to stp-mode; expected it with stp-endis only\n"
       "4:9: found 'fast'; expected mode: mst or rapid-pvst, or a number\n"
       "5:11: port 0x9 does not exist; expected one that a switch of the scenario has\n"},
      {"steps:\n- update: {stp-endis: 1-4096}\n  on: up\n- rebuild: zz\n- check: switch\n"
       "  on: left\n  expect: {answer: accepted}\n",
       "2:23: found '1-4096'; expected stp-endis: VLANs 0 to 4095, for instance 1-10,20, or none\n"
       "3:7: found 'up'; expected on: left, right or both\n"
       "4:12: found 'zz'; expected an array, but no step before has exported one 'as' a name\n"
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
       "5:33: found '2' behind a comma; expected a list of numbers in quotation marks: \"1,2\"\n"
       "6:31: found '20-10'; expected vlans: VLANs 0 to 4095: each range from the lower number to "
       "the higher, for instance 1-10,20, or none\n"
       "7:4: found '<<'; expected the keys themselves, or an alias for the whole mapping: merge "
       "keys are not taken\n"
       "8:13: found 'lop-guard'; expected a parameter: loop-guard, or one of 11 more\n"
       "9:27: found expectations that cannot hold together: 'verdict' is that of both switches, "
       "and "
       "'left' says something else; expected what can be the outcome\n"},
      {"switches:\n"
       "  left: {ports: [{port: Po1, index: 0x1000, member: 3}, {port: x, index: 0x1000}]}\n"
       "  right: {ports: [{port: Po1, index: 7, ports: 8}]}\nsteps:\n"
       "- {command: stp-mode, on: left, attributes: [{id: 1, word: 1, bytes: 00}, {id: 2}, "
       "{id: 3, bytes: 0}]}\n"
       "- export: Po7\n- check: channel Po9\n"
       "- {on: left, update: {mst-region-name: a-name-that-is-longer-than-a-name-is, "
       "gbl-port-type: {bytes: zz}}}\n"
       "- {check: switch, export: switch}\n",
       "2:17: found Po1 and x with the index 0x1000; expected an index for each port\n"
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
       "9:19: found 'export' together with 'check'; expected one thing to do in a step\n"
       "9:19: unknown key 'export' in a 'check' step; expected expect, check, note or "
       "twin-vlans\n"},
      {"switches:\n  left: {parameters: {mst-region-name: \"a\\0\"}, "
       "ports: [{port: \"b\\x1B\"}]}\nsteps: [{check: switch}]\n",
       "2:63: found 'b\\x1b'; expected the name of a port without control characters\n"
       "2:40: found 'a\\x00'; expected a region name without control characters\n"},
      {"steps:\n\t- check: switch\n", "2:1: found a tab in the indentation; expected blanks\n"},
  };
  for (const auto &row : rows) {
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
  EXPECT_NE(run(many).out.find("\n" + file + ": and 20 errors more\n"), std::string::npos);
  EXPECT_EQ(lab("run --quiet -", "echo 'steps: [{check: switch}]' |").status, 0);
  EXPECT_EQ(lab("run").status, 2);
  EXPECT_EQ(lab("walk").status, 2);
  EXPECT_EQ(lab("--help").status, 0);
}

TEST_F(Lab, ComparesTwoSourcesThatAreWrittenAsSuch) {
  const struct {
    const char *arguments;
    const char *line;
  } rows[] = {
      {"", "mcec-lab compare: found no source; expected two sources, left and right, or --pairs\n"},
      {"a",
       "mcec-lab compare: found one source; expected two sources, left and right, or "
       "--pairs\n"},
      {"- -", "mcec-lab compare: found '-' twice; expected the standard input on one side\n"},
      {"redis://h%zz -",
       "redis://...: found a '%' that stands for no character; expected %25 for "
       "the sign itself\n"},
      {"redis://[::1]:99999 -",
       "redis://...: found a port that is none; expected a number from 1 to 65535\n"},
      {"redis:// -",
       "redis://...: found no host, or more than one; expected redis://host:port/4, "
       "an IPv6 address in brackets\n"},
      {"unix://x -",
       "unix://...: found no path; expected unix:///path, which begins with a slash\n"},
      {"'unix:///s?x=1' -",
       "unix://...: found something else behind the path; expected ?db=4 or the like\n"},
      {"foo://x -", "foo://...: found 'foo://'; expected redis://host, unix:///path, or a file\n"},
  };
  for (const auto &row : rows) {
    const Outcome outcome = lab(std::string("compare ") + row.arguments, "echo |");
    EXPECT_TRUE(outcome.out.starts_with(row.line)) << outcome.out << row.line;
    EXPECT_EQ(outcome.status, 2);
  }
}

TEST_F(Lab, ShowsBothSidesAndTheVerdicts) {
  const std::string odd = "- {update: {ifi-port-type: normal-port}, port: 0x1001, on: left}\n";
  const Outcome outcome = run(std::string(region) + odd + "- check: all\n");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out.substr(outcome.out.find("  2.")),
            "  2. check all\n"
            "    switch\n"
            "    DIFFERENT: mst-region-name   (STP_MCEC_ERR_TYPE1_MST_REGION_NAME,\n"
            "    0x40DD003D)\n"
            "    parameter        left   right  comparison\n"
            "    stp-mode         MST    MST    same\n"
            "    stp-endis        10-20  20-30  not compared in this mode\n"
            "    mst-region-name  east   west   different\n"
            "    channel 10: 0x1000 on the left, 0x2000 on the right\n"
            "    DIFFERENT: ifi-port-type   (STP_MCEC_ERR_TYPE1_IFI_PORT_TYPE, 0x40DD0043)\n"
            "    INCONSISTENT on the left: port 0x1001 is not set like 0x1000: ifi-port-type\n"
            "    parameter      left       right         comparison\n"
            "    ifi-port-type  Edge Port  Network Port  different\n"
            "    channel 11\n"
            "    MISSING on the left   (STP_MCEC_ERR_TYPE1_PARAM_NULL, 0x40DD003A)\n"
            "    parameter      left  right      comparison\n"
            "    ifi-port-type  -     Edge Port  missing on the left\n"
            "    looked at 3 scopes; 3 differ: mst-region-name (1), ifi-port-type (1),\n"
            "    missing on the left (1), inconsistent ports (1)\n"
            "nothing was expected\n\n");
  EXPECT_EQ(run(std::string(region) + "- check: channel 10\n", "--quiet --fail-on-difference").out,
            "Regions\n"
            "  1. check channel 10\n"
            "    channel 10: 0x1000 on the left, 0x2000 on the right\n"
            "    DIFFERENT: ifi-port-type   (STP_MCEC_ERR_TYPE1_IFI_PORT_TYPE, 0x40DD0043)\n"
            "nothing was expected\n\n");
  EXPECT_EQ(lab("run --fail-on-difference " + file).status, 1);
  EXPECT_EQ(run(std::string(region) +
                    "- {check: all, expect: {channels: {11: TYPE1_PARAM_NULL}, ports: {0x2000: "
                    "TYPE1_IFI_PORT_TYPE}}}\n",
                "--only-different")
                .status,
            0);
}

TEST_F(Lab, NamesOfEveryLanguageAreShownByTheirWidth) {
  const std::string step = "steps:\n- {report: switch, on: left}\n";
  const struct {
    const char *name, *in_utf8, *in_ascii;
  } rows[] = {{"Genève", "Genève", "Gen\\xc3\\xa8ve"},
              {"日本", "日本", "\\xe6\\x97\\xa5\\xe6\\x9c\\xac"}};
  for (const auto &row : rows) {
    write("title: " + std::string(row.name) +
          "\nswitches:\n  left: {parameters: {mst-region-name: " + row.name + "}}\n" + step);
    for (const char *locale : {"C.UTF-8", "C"}) {
      const char *name = std::string(locale) == "C" ? row.in_ascii : row.in_utf8;
      EXPECT_EQ(lab("run " + file, std::string("LC_ALL=") + locale + " timeout 10").out,
                std::string(name) +
                    "\n  1. report switch on left\n    left\n    STP                  value\n" +
                    "    STP MST Region Name  " + name + "\nnothing was expected\n\n");
    }
  }
}

TEST_F(Lab, OutputThatCannotBeWrittenIsAFailure) {
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

TEST_F(Lab, NoNumberIsNoTime) {
  EXPECT_EQ(lab("watch --interval nan a b").out,
            "mcec-lab: --interval: Value nan is no number\nSee mcec-lab watch --help.\n");
}

TEST_F(Lab, WritesAStateFileThatItReads) {
  write(
      "ports:\n"
      "- {ports: 0x1000-0x1001, member: 10, parameters: {ifi-port-guard: root}}\n"
      "- {ports: 0x1001, parameters: {ifi-port-guard: none}}\n");
  const Outcome written = lab("capture " + file);
  EXPECT_EQ(written.out,
            "# What a switch is set to: a lab state file, which mcec-lab reads.\n"
            "trunk: true\nuser-vlans: none\nchannels:\n"
            "  - {channel: \"channel 10\", id: 10, vlans: none}\n"
            "ports:\n"
            "  - ports: 0x1000\n    channel: \"channel 10\"\n"
            "    parameters: {ifi-port-guard: root}\n"
            "  - ports: 0x1001\n    channel: \"channel 10\"\n"
            "    parameters: {ifi-port-guard: none}\n");
  write(written.out);
  EXPECT_EQ(lab("capture " + file).out, written.out);
  write("name: \xFF");
  EXPECT_EQ(lab("capture " + file).out,
            file + ":1:7: found '\\xff'; expected the switch's name in UTF-8\n");
}

TEST_F(Lab, BrokenExpectationsAreTold) {
  const Outcome outcome = run(std::string(region) +
                                  "- check: switch\n"
                                  "  expect: {left: agree, differ: [mst-region-name]}\n"
                                  "- command: gbl-loopguard\n"
                                  "  on: left\n"
                                  "  expect: {answer: refused, records: [loop-guard], values: "
                                  "{loop-guard: Enabled}, result: INVALID_ARG}\n"
                                  "- report: 0x2000\n"
                                  "  on: right\n"
                                  "  expect: {texts: {ifi-port-type: Edge Port}}\n",
                              "--quiet");
  EXPECT_EQ(outcome.status, 1);
  std::string broken;
  std::istringstream lines(outcome.out);
  for (std::string line; std::getline(lines, line);) {
    if (line.find("NOT AS EXPECTED") != line.npos) broken += line.substr(20) + "\n";
  }
  EXPECT_EQ(broken,
            "left verdict: expected agree, found\n"
            "left answer: expected refused, found accepted\n"
            "left result: expected STP_MCEC_ERR_INVALID_ARG, found ok\n"
            "right texts: expected ifi-port-type: Edge Port, found\n");
  EXPECT_NE(outcome.out.find("4 of 7 expectations not met"), std::string::npos);
}

TEST_F(Lab, WhatIfLooksAtEverythingAndChangesNothing) {
  write(std::string(region) +
        "- command: stp-mode\n  on: left\n  mode: rapid-pvst\n"
        "- {command: if-guard, on: right, ports: 0x2000-0x2001, guard: root}\n"
        "- {update: {mst-region-name: west}, on: left}\n- {check: all}\n");
  const auto ask = [&](const char *step, const char *side) {
    return Json::parse(lab("what-if --json " + file + step).out)["what_if"]["switches"][side];
  };
  Json what = ask(" 1", "left");
  EXPECT_EQ(what["answer"], "accepted");
  EXPECT_EQ(what["looked-at"], 3);
  EXPECT_EQ(what["now"].size(), 1U);
  EXPECT_EQ(what["now"][0]["verdicts"]["left"]["name"], "STP_MCEC_ERR_TYPE1_MST_REGION_NAME");
  EXPECT_EQ(what["then"][0]["verdicts"]["left"]["name"], "STP_MCEC_ERR_TYPE1_STP_MODE");
  EXPECT_EQ(what["then"][0]["fail"], "10");
  EXPECT_EQ(what["then"][0]["pass"], "1-9");
  what = ask(" 2", "right");
  EXPECT_EQ(what["records"][0]["port"], "0x2000");
  EXPECT_EQ(what["then"].size(), 2U);
  EXPECT_EQ(what["then"][0]["parameters"][1]["states"]["right"], "missing at the peer");
  EXPECT_EQ(what["now"][0]["parameters"].size(), 1U);
  what = ask(" 3", "left");
  EXPECT_EQ(what["then"][0]["verdicts"]["right"]["name"], "STP_MCEC_ERR_TYPE1_STP_MODE");
  const Outcome none = lab("what-if " + file + " 4");
  EXPECT_EQ(none.status, 2);
  EXPECT_EQ(none.out, file + ": step 4 is no command and no update; expected one of 1, 2, 3\n");
}

TEST_F(Lab, JsonTellsTheSteps) {
  const Outcome outcome =
      run(std::string(region) + "- check: switch\n- {export: switch, as: it}\n", "--json --log");
  const Json told = Json::parse(outcome.out);
  EXPECT_EQ(told["met"], true);
  EXPECT_EQ(told["steps"][0]["checks"][0]["verdicts"]["right"]["code"], 0x40DD003D);
  EXPECT_EQ(told["steps"][0]["checks"][0]["parameters"][2]["left"], "east");
  const std::string line = told["steps"][0]["switches"]["left"]["log"].back();
  EXPECT_NE(line.find("3 type-1 compat check failed"), line.npos);
  EXPECT_EQ(told["steps"][1]["switches"]["left"]["parameters"][0]["bytes"], "00000004");
}

TEST_F(Lab, LongValuesAreWrappedWithinTheWidth) {
  std::string odd;
  for (int vlan = 1; vlan < 400; vlan += 2) odd += (odd.empty() ? "" : ",") + std::to_string(vlan);
  write("steps:\n- cache-update: {stp-endis: \"" + odd + "\", mst-region-name: \"" +
        std::string(32, 'n') + "\"}\n- {check: switch, twin-vlans: 1-4094}\n- report: switch\n");
  for (const std::size_t width : {50U, 80U, 120U}) {
    const Outcome outcome = lab("run " + file, "COLUMNS=" + std::to_string(width));
    std::string joined;
    std::istringstream lines(outcome.out);
    for (std::string line; std::getline(lines, line);) {
      EXPECT_LE(line.size(), width) << line;
      EXPECT_TRUE(line.empty() || line.back() != ' ') << line;
    }
    EXPECT_NE(outcome.out.find("399"), std::string::npos);
    EXPECT_EQ(outcome.out.find('\033'), std::string::npos);
  }
}

TEST_F(Lab, FailuresOnOrderAreForTheLibraryOnly) {
  const Json told =
      Json::parse(run(std::string(region) + "- {fail: tlv-add, on: left}\n"
                                            "- {update: {loop-guard: enabled}, on: left}\n"
                                            "- {command: gbl-loopguard, on: left}\n"
                                            "- {fail: tlv-find, on: left}\n"
                                            "- check: switch\n"
                                            "- {fail: allocation, on: right}\n"
                                            "- check: switch\n",
                      "--json")
                      .out);
  // The message of an update is the lab's to build, the tables of a check are its own questions.
  EXPECT_EQ(told["steps"][1]["switches"]["left"]["result"]["code"], 0);
  EXPECT_EQ(told["steps"][2]["switches"]["left"]["answer"], "internal error: Failed TLV add");
  const Json &first = told["steps"][4]["checks"][0];
  EXPECT_EQ(first["verdicts"]["left"]["name"], "STP_MCEC_ERR_FAILURE");
  EXPECT_EQ(first["parameters"][0]["states"]["left"], "same");
  // A switch that has no array to send is checked without one.
  const Json &second = told["steps"][6]["checks"][0];
  EXPECT_EQ(second["verdicts"]["left"]["name"], "STP_MCEC_ERR_TYPE1_PARAM_NULL");
  EXPECT_EQ(second["verdicts"]["right"]["name"], "STP_MCEC_ERR_TYPE1_PARAM_NULL");
}

TEST_F(Lab, WhatIsNoTextIsEscaped) {
  write("title: \"a\\x1b[31mb\"\nabout: \"c\\x07\"\nsteps:\n- {check: switch, note: \"\\x9b\"}\n");
  for (const char *options : {"", "--json"}) {
    const Outcome outcome = lab(std::string("run ") + options + " " + file);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out.find_first_of("\033\007\x9b"), std::string::npos);
    EXPECT_NE(outcome.out.find("x1b[31mb"), std::string::npos);
  }
}

TEST_F(Lab, ADeadSwitchIsReportedWithItsLastLines) {
  const Outcome outcome = run("steps:\n- command: gbl-loopguard\n- {crash: SEGV, on: right}\n");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_NE(outcome.out.find("the right switch died of SIGSEGV (Segmentation fault)"),
            std::string::npos)
      << outcome.out;
  EXPECT_NE(outcome.out.find("Global Loopguard changed to True\n"), std::string::npos);
}

TEST_F(Lab, AnInterruptLeavesNothingBehind) {
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

TEST_F(Lab, ExplainsAndLists) {
  const Json listed = Json::parse(lab("list --json").out);
  EXPECT_EQ(listed["parameters"].size(), 12U);
  EXPECT_EQ(listed["parameters"][6]["default"], "Enabled");
  EXPECT_EQ(listed["commands"].size(), 15U);
  EXPECT_EQ(listed["commands"][12]["set"][0], "ifi-port-type = Edge Trunk Port");
  for (const Json &parameter : listed["parameters"]) {
    const Outcome outcome = lab("explain " + parameter["parameter"].get<std::string>());
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.out.find(parameter["mismatch"]["name"].get<std::string>()),
              std::string::npos);
    EXPECT_NE(outcome.out.find("\ngoes wrong  "), std::string::npos);
  }
  EXPECT_NE(lab("explain 40DD003F").out.find("AC36177F50283CD4B83821D8AB26DE62"),
            std::string::npos);
  for (const Json &result : listed["results"]) {
    EXPECT_EQ(lab("explain " + result["name"].get<std::string>()).status, 0);
  }
  EXPECT_NE(lab("explain 41b70016").out.find("no multi-chassis port channel"), std::string::npos);
  EXPECT_NE(lab("explain 62").out.find("no command of this library, but routed"),
            std::string::npos);
  EXPECT_EQ(lab("explain nonsense").status, 2);
}

}  // namespace
