// Runs mcec-lab as a process.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "files.h"

struct Outcome {
  int status;
  std::string out;  // standard output and standard error
};

struct Lab : testing::Test {
  test::TempFolder temporary;
  std::string folder = temporary.path;
  std::string file = folder + "/scenario.yaml";

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

inline constexpr char region[] =
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
