// mcec-lab as a person and a script meet it: tables, verdicts, mistakes, exit status.

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
    "    ports: [{ports: 0x1000, member: 10, parameters: {ifi-port-type: network-port}}]\n"
    "    parameters: {stp-mode: mst, mst-region-name: west, stp-endis: 20-30}\n"
    "steps:\n";

TEST_F(Lab, TellsEveryMistakeWithItsPlace) {
  const struct {
    const char *scenario;
    const char *mistakes;  // each line behind "FILE:"
  } rows[] = {
      {"[", "1:1: no YAML here: end of sequence flow not found; expected a scenario in YAML\n"},
      {"steps: []", "1:8: no step in 'steps'; expected a list of at least one\n"},
      {"", "1:1: the file is empty; expected a scenario in YAML\n"},
      {"title: x\n", "1:1: a scenario without 'steps'; expected it there\n"},
      {"steps: [{check: switch}]\n---\nsteps: []\n",
       "3:1: a second document begins here; expected one scenario in a file\n"},
      {"switches:\n  left: {parameters: {ifi-port-type: edge-port}, ports: [{member: 3}]}\n"
       "  right: {parameters: {mst-region-vi-map: {1: 10-20, 2: 15}}}\nsteps:\n"
       "- {command: stp-mode, attributes: [{word: 3}], expect: {}}\n"
       "- {report: switch, expect: {texts: {}}}\n",
       "2:58: a group of ports without 'ports'; expected it there\n"
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
       "differ, pass, fail or ports\n"},
      {"steps:\n- {fail: allocation, expect: {result: ok}}\n- comand: x\n",
       "2:30: nothing can be expected of 'fail'\n"
       "3:3: found a step with 'comand'; expected a step with one of cache-update, change, check, "
       "command, crash, delete, export, fail, rebuild, report or update\n"},
  };
  for (const auto &row : rows) {
    std::istringstream lines(row.mistakes);
    std::string expected;
    for (std::string line; std::getline(lines, line);) expected += file + ":" + line + "\n";
    const Outcome outcome = run(row.scenario);
    EXPECT_EQ(outcome.out, expected);
    EXPECT_EQ(outcome.status, 2);
  }
  EXPECT_EQ(lab("run " + folder + "/none").status, 2);
  EXPECT_EQ(lab("run").status, 2);
  EXPECT_EQ(lab("walk").status, 2);
  EXPECT_EQ(lab("--help").status, 0);
}

TEST_F(Lab, ShowsBothSidesAndTheVerdicts) {
  const Outcome outcome = run(std::string(region) + "- check: all\n");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out,
            "Regions\n"
            "  1. check all\n"
            "    switch\n"
            "    parameter        left   right  comparison\n"
            "    stp-mode         MST    MST    same\n"
            "    stp-endis        10-20  20-30  not compared in this mode\n"
            "    mst-region-name  east   west   different\n"
            "    left  STP_MCEC_ERR_TYPE1_MST_REGION_NAME (0x40DD003D)\n"
            "    right STP_MCEC_ERR_TYPE1_MST_REGION_NAME (0x40DD003D)\n"
            "    port 0x1000\n"
            "    parameter      left       right         comparison\n"
            "    ifi-port-type  Edge Port  Network Port  different\n"
            "    left  STP_MCEC_ERR_TYPE1_IFI_PORT_TYPE (0x40DD0043)\n"
            "    right STP_MCEC_ERR_TYPE1_IFI_PORT_TYPE (0x40DD0043)\n"
            "    port 0x1001\n"
            "    parameter      left       right  comparison\n"
            "    ifi-port-type  Edge Port  -      missing on the right\n"
            "    left  STP_MCEC_ERR_FAILURE (0x40DD0001)\n"
            "    right agree\n"
            "nothing was expected\n\n");
  EXPECT_EQ(run(std::string(region) + "- check: 0x1000\n", "--quiet").out,
            "Regions\n"
            "  1. check 0x1000\n"
            "    port 0x1000\n"
            "    left  STP_MCEC_ERR_TYPE1_IFI_PORT_TYPE (0x40DD0043)\n"
            "    right STP_MCEC_ERR_TYPE1_IFI_PORT_TYPE (0x40DD0043)\n"
            "nothing was expected\n\n");
}

TEST_F(Lab, BrokenExpectationsAreTold) {
  const Outcome outcome = run(std::string(region) +
                                  "- check: switch\n"
                                  "  expect: {left: agree, differ: [mst-region-name]}\n"
                                  "- command: gbl-loopguard\n"
                                  "  on: left\n"
                                  "  expect: {answer: refused, records: [loop-guard], values: "
                                  "{loop-guard: Enabled}, result: ok}\n"
                                  "- report: 0x1000\n"
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
            "right texts: expected ifi-port-type: Edge Port, found\n");
  EXPECT_NE(outcome.out.find("3 of 7 expectations not met"), std::string::npos);
}

TEST_F(Lab, WhatIfTellsAndChangesNothing) {
  write(std::string(region) +
        "- command: stp-mode\n  on: left\n  mode: rapid-pvst\n"
        "- {command: if-guard, on: right, ports: 0x1000-0x1001, guard: root}\n");
  Json what = Json::parse(lab("what-if --json " + file + " 1").out)["what_if"]["switches"]["left"];
  EXPECT_EQ(what["answer"], "accepted");
  EXPECT_EQ(what["now"][0]["verdicts"]["left"]["name"], "STP_MCEC_ERR_TYPE1_MST_REGION_NAME");
  EXPECT_EQ(what["then"][0]["verdicts"]["left"]["name"], "STP_MCEC_ERR_TYPE1_STP_MODE");
  EXPECT_EQ(what["then"][0]["fail"], "10");
  EXPECT_EQ(what["then"][0]["pass"], "1-9");
  what = Json::parse(lab("what-if --json " + file + " 2").out)["what_if"]["switches"]["right"];
  EXPECT_EQ(what["records"][0]["port"], "0x1000");
  EXPECT_EQ(what["then"][1]["parameters"][1]["states"]["right"], "missing at the peer");
  EXPECT_EQ(what["now"][1]["parameters"].size(), 1U);
  const Outcome none = lab("what-if " + file + " 3");
  EXPECT_EQ(none.status, 2);
  EXPECT_EQ(none.out, file + ": step 3 is no command; expected one of 1, 2\n");
}

TEST_F(Lab, JsonTellsTheSteps) {
  const Outcome outcome =
      run(std::string(region) + "- check: switch\n- {export: switch, as: it}\n", "--json --log");
  const Json told = Json::parse(outcome.out);
  EXPECT_EQ(told["holds"], true);
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
                              " >/dev/null & lab=$!; sleep 1; kill -INT $lab; "
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
  }
  for (const Json &result : listed["results"]) {
    EXPECT_EQ(lab("explain " + result["name"].get<std::string>()).status, 0);
  }
  EXPECT_NE(lab("explain 0x41b70016").out.find("no multi-chassis port channel"), std::string::npos);
  EXPECT_EQ(lab("explain nonsense").status, 2);
}

}  // namespace
