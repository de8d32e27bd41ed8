// Runs, checks and explanations, as text and JSON.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "lab.h"

namespace {

using Json = nlohmann::json;

TEST_F(Lab, PrintsBothSidesAndTheirVerdicts) {
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
            "    INCONSISTENT on the left: port 0x1001 differs from 0x1000: ifi-port-type\n"
            "    parameter      left       right         comparison\n"
            "    ifi-port-type  Edge Port  Network Port  different\n"
            "    channel 11\n"
            "    MISSING on the left   (STP_MCEC_ERR_TYPE1_PARAM_NULL, 0x40DD003A)\n"
            "    parameter      left  right      comparison\n"
            "    ifi-port-type  -     Edge Port  missing on the left\n"
            "    checked 3 scopes; 3 differ: mst-region-name (1), ifi-port-type (1), missing\n"
            "    on the left (1), inconsistent ports (1)\n"
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

TEST_F(Lab, AlignsNamesByTheirWidth) {
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

TEST_F(Lab, ReadsTheStateFilesThatItWrites) {
  write(
      "ports:\n"
      "- {ports: 0x1000-0x1001, member: 10, parameters: {ifi-port-guard: root}}\n"
      "- {ports: 0x1001, parameters: {ifi-port-guard: none}}\n");
  const Outcome written = lab("capture " + file);
  EXPECT_EQ(written.out,
            "# Settings of a switch: a state file of mcec-lab.\n"
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

TEST_F(Lab, PrintsUnmetExpectations) {
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

TEST_F(Lab, PredictsWithoutChanges) {
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
  EXPECT_EQ(none.out,
            file + ": step 4 is neither a command nor an update; expected one of 1, 2, 3\n");
}

TEST_F(Lab, WritesStepsAsJson) {
  const Outcome outcome =
      run(std::string(region) + "- check: switch\n- {export: switch, as: it}\n", "--json --log");
  const Json document = Json::parse(outcome.out);
  EXPECT_EQ(document["met"], true);
  EXPECT_EQ(document["steps"][0]["checks"][0]["verdicts"]["right"]["code"], 0x40DD003D);
  EXPECT_EQ(document["steps"][0]["checks"][0]["parameters"][2]["left"], "east");
  const std::string line = document["steps"][0]["switches"]["left"]["log"].back();
  EXPECT_NE(line.find("3 type-1 compat check failed"), line.npos);
  EXPECT_EQ(document["steps"][1]["switches"]["left"]["parameters"][0]["bytes"], "00000004");
}

TEST_F(Lab, WrapsLongValues) {
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

TEST_F(Lab, InjectsFailuresIntoTheLibraryOnly) {
  const Json document =
      Json::parse(run(std::string(region) + "- {fail: tlv-add, on: left}\n"
                                            "- {update: {loop-guard: enabled}, on: left}\n"
                                            "- {command: gbl-loopguard, on: left}\n"
                                            "- {fail: tlv-find, on: left}\n"
                                            "- check: switch\n"
                                            "- {fail: allocation, on: right}\n"
                                            "- check: switch\n",
                      "--json")
                      .out);
  // The lab builds messages of updates and tables of checks without failures.
  EXPECT_EQ(document["steps"][1]["switches"]["left"]["result"]["code"], 0);
  EXPECT_EQ(document["steps"][2]["switches"]["left"]["answer"], "internal error: Failed TLV add");
  const Json &first = document["steps"][4]["checks"][0];
  EXPECT_EQ(first["verdicts"]["left"]["name"], "STP_MCEC_ERR_FAILURE");
  EXPECT_EQ(first["parameters"][0]["states"]["left"], "same");
  // A switch without an array is checked without it.
  const Json &second = document["steps"][6]["checks"][0];
  EXPECT_EQ(second["verdicts"]["left"]["name"], "STP_MCEC_ERR_TYPE1_PARAM_NULL");
  EXPECT_EQ(second["verdicts"]["right"]["name"], "STP_MCEC_ERR_TYPE1_PARAM_NULL");
}

TEST_F(Lab, ExplainsAndLists) {
  const Json listed = Json::parse(lab("list --json").out);
  EXPECT_EQ(listed["parameters"].size(), 12U);
  EXPECT_EQ(listed["parameters"][6]["default"], "Enabled");
  EXPECT_EQ(listed["commands"].size(), 15U);
  EXPECT_EQ(listed["commands"][12]["sets"][0], "ifi-port-type");
  for (const Json &parameter : listed["parameters"]) {
    const Outcome outcome = lab("explain " + parameter["parameter"].get<std::string>());
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.out.find(parameter["mismatch"]["name"].get<std::string>()),
              std::string::npos);
    EXPECT_NE(outcome.out.find("\neffect      "), std::string::npos);
  }
  EXPECT_NE(lab("explain 40DD003F").out.find("AC36177F50283CD4B83821D8AB26DE62"),
            std::string::npos);
  for (const Json &result : listed["results"]) {
    EXPECT_EQ(lab("explain " + result["name"].get<std::string>()).status, 0);
  }
  EXPECT_NE(lab("explain 41b70016").out.find("no multi-chassis port channel"), std::string::npos);
  EXPECT_NE(lab("explain 62").out.find("not a command of this library, but routed"),
            std::string::npos);
  EXPECT_EQ(lab("explain nonsense").status, 2);
}

}  // namespace
