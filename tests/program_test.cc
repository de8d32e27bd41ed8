// The program of --on-change: its events, its environment, and its failures.

#include "io/program.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "files.h"

namespace lab {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

struct ProgramTest : testing::Test {
  test::TempFolder temporary;
  fs::path folder = temporary.path;
  Loop loop;
  std::vector<std::string> problems;
  std::optional<ChangeProgram> program;

  fs::path write(const std::string &name, const std::string &text, unsigned mode) {
    std::ofstream(folder / name) << text;
    fs::permissions(folder / name, fs::perms(mode));
    return folder / name;
  }
  void use(const std::string &script, ProgramLimits limits = {}) {
    const fs::path path =
        write("program", "#!/bin/sh\ncd " + folder.string() + "\n" + script, 0700);
    program.emplace(loop, path, limits, [&](const std::string &text) { problems.push_back(text); });
  }
  // Runs the loop until a condition is met.
  void wait_until(const std::function<bool()> &is_met) {
    const TimePoint ends = Clock::now() + 60s;
    Timer timer(loop, [&] {
      if (is_met() || Clock::now() >= ends) return loop.stop();
      timer.set_after(5ms);
    });
    timer.set_after({});
    loop.run();
    ASSERT_TRUE(is_met());
  }
  void wait_for_all() {
    wait_until([&] { return program->running.empty() && program->waiting.empty(); });
  }
  std::size_t count(const std::string &prefix) {
    return std::size_t(std::count_if(fs::directory_iterator(folder), {}, [&](const auto &entry) {
      return entry.path().filename().string().starts_with(prefix);
    }));
  }
};

TEST_F(ProgramTest, GetsTheLastEventOfEachPair) {
  // The program runs as long as the file "hold" exists.
  use(R"(read -r event; echo "$event" >>order; touch running.$event
while [ -e hold ]; do sleep 0.01; done; rm running.$event)",
      {.at_once = 2, .time = 60s});
  write("hold", "", 0600);
  for (const auto &[pair, event] :
       {std::pair("a", "a1"), {"a", "a2"}, {"b", "b1"}, {"c", "c1"}, {"a", "a3"}, {"c", "c2"}}) {
    program->run(pair, event + std::string("\n"));
  }
  wait_until([&] { return count("running.") == 2; });
  EXPECT_EQ(program->waiting.size(), 2U);
  fs::remove(folder / "hold");
  wait_for_all();
  std::ifstream order(folder / "order");
  EXPECT_EQ(std::multiset<std::string>(std::istream_iterator<std::string>(order), {}),
            (std::multiset<std::string>{"a1", "a3", "b1", "c2"}));
  EXPECT_TRUE(problems.empty()) << problems[0];
}

TEST_F(ProgramTest, StartsWithoutInheritedSignalsAndFiles) {
  const int kept = open(write("kept-open", "", 0600).c_str(), O_RDONLY);
  std::signal(SIGPIPE, SIG_IGN);
  use(R"(wc -c >size; grep -E '^Sig(Ign|Blk)' /proc/$$/status | cut -f2 | sort -u >signals
ls -l /proc/$$/fd >files; [ $$ = $(ps -o pgid= -p $$) ] && touch leader)");
  program->run("", std::string(1 << 20, 'x'));
  wait_for_all();
  close(kept);
  EXPECT_EQ(test::read_file(folder / "size"), "1048576\n");
  EXPECT_EQ(test::read_file(folder / "signals"), "0000000000000000\n");
  const std::string files = test::read_file(folder / "files");
  EXPECT_NE(files.find("event"), files.npos) << files;
  EXPECT_EQ(files.find("kept-open"), files.npos) << files;
  EXPECT_TRUE(fs::exists(folder / "leader"));
}

TEST_F(ProgramTest, ReportsFailures) {
  use(R"(read -r event; eval "$event")");
  program->run("a", "exit 3\n");
  program->run("b", "kill -TERM $$\n");
  wait_for_all();
  program->limits.time = 200ms;
  program->run("c", "sleep 60 & sleep 60\n");
  wait_for_all();
  write("program", "touch " + (folder / "shell").string() + "\n", 0700);
  program->run("d", "\n");
  wait_for_all();
  EXPECT_FALSE(fs::exists(folder / "shell"));
  fs::remove(folder / "program");
  program->run("", "\n");
  std::sort(problems.begin(), problems.end());
  const std::string path = (folder / "program").string();
  EXPECT_EQ(problems,
            (std::vector<std::string>{path + " cannot be started: No such file or directory",
                                      "a: " + path + " ended with status 3",
                                      "b: " + path + " was killed: Terminated",
                                      "c: " + path + " did not end within 0.2 s",
                                      "d: " + path + " cannot be started: Exec format error"}));
  EXPECT_EQ(find_program_problem(path), "No such file or directory");
  EXPECT_EQ(find_program_problem(folder), "it is not a file");
  EXPECT_EQ(find_program_problem(write("x", "", 0600)), "it is not executable");
}

TEST_F(ProgramTest, EndsWithItsOwner) {
  use("sleep 60 & echo $! >child.new; mv child.new child; wait");
  program->run("a", "");
  wait_until([&] { return fs::exists(folder / "child"); });
  program.reset();
  const int child = std::stoi(test::read_file(folder / "child"));
  const std::string command = "/proc/" + std::to_string(child) + "/cmdline";
  for (int i = 0; i < 1000 && !test::read_file(command).empty(); ++i) usleep(10000);
  EXPECT_EQ(test::read_file(command), "");
}

}  // namespace
}  // namespace lab
