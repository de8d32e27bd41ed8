// Many pairs at once: a process for each comparison, as many at a time as there are processors.

#include <fmt/core.h>

#include <algorithm>
#include <map>
#include <sstream>
#include <thread>

#include "cli/commands.h"
#include "output/told.h"
#include "sonic/source.h"
#include "switch/names.h"
#include "tasks/compare.h"
#include "text/child.h"
#include "text/file.h"
#include "text/text.h"
#include "text/wait.h"

namespace lab {
namespace {

struct PairLine {
  int number;  // of its line, from 1
  std::string name;
  std::array<std::string, 2> sources;
};

// A comparison under way: its process, and the document that it writes.
struct Job {
  const PairLine *pair;
  ChildProcess process;
};

// What the comparisons came to.
struct Tally {
  std::size_t agree = 0;
  std::vector<std::string> differing;  // a line for each pair
  std::size_t not_compared = 0;
  Status status = agreed;
};

constexpr const char *line_form = "a name, the left and the right source, separated by tabs";

// Sources are relative to the folder of the list.
std::string in_folder(const std::string &source, const std::string &folder) {
  const bool is_absolute = source.starts_with('/') || source.find("://") != source.npos;
  return is_absolute ? source : folder + source;
}

std::vector<PairLine> read_pairs(const std::string &path, InputErrors &errors) {
  std::vector<PairLine> pairs;
  const std::string text = read_file(path, errors);
  std::istringstream lines(std::string(without_byte_order_mark(text)));
  const std::string folder = path.substr(0, path.rfind('/') + 1);
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) {
    if (line.ends_with('\r')) line.pop_back();
    if (line.empty() || line[0] == '#') continue;
    const std::vector<std::string_view> parts = split(line, '\t');
    const bool has_empty =
        std::any_of(parts.begin(), parts.end(), [](auto part) { return part.empty(); });
    if (parts.size() == 3 && !has_empty) {
      pairs.push_back(
          {number,
           printable(parts[0]),
           {in_folder(std::string(parts[1]), folder), in_folder(std::string(parts[2]), folder)}});
    } else {
      // Not a line of ours: what it contains may be a secret.
      errors.push_back({number, 1, "",
                        fmt::format("found {} part{}{}", parts.size(), parts.size() == 1 ? "" : "s",
                                    has_empty ? ", not all of them filled" : ""),
                        line_form});
    }
  }
  if (pairs.empty() && errors.empty()) {
    errors.push_back({1, 1, "", "found no pair", std::string("lines of ") + line_form});
  }
  return pairs;
}

// The document of a pair: that of a comparison, or its errors, under its name.
Json document_of(const PairLine &pair) {
  Json told = {{"pair", pair.name}, {"version", 1}};
  Sides sides;
  Json errors = Json::array();
  for (std::size_t i = 0; i < sides.size(); ++i) {
    ReadSide read = read_side(pair.sources[i], i, Format::by_content);
    for (Json &error : errors_to_json(read.side.source, read.errors)) {
      errors.push_back(std::move(error));
    }
    sides[i] = std::move(read.side);
  }
  if (!errors.empty()) {
    told["errors"] = std::move(errors);
  } else {
    told.update(compare(sides));
  }
  return told;
}

Json failure_of(const PairLine &pair, const std::string &problem) {
  return {
      {"pair", pair.name},
      {"version", 1},
      {"errors", {{{"source", pair.name}, {"where", ""}, {"found", problem}, {"expected", ""}}}}};
}

std::string document_text(const PairLine &pair) {
  try {
    return document_of(pair).dump(-1, ' ', false, Json::error_handler_t::replace);
  } catch (const std::bad_alloc &) {
    return failure_of(pair, "there is not enough memory").dump();
  } catch (const std::exception &problem) {
    return failure_of(pair, printable(problem.what())).dump();
  }
}

// "mst-region-name (1), ifi-port-guard (3)".
std::string differences_text(const Json &checks) {
  std::map<std::string, std::size_t> counts;
  std::size_t missing = 0;
  for (const Json &check : checks) {
    if (check.contains("only")) ++missing;
    for (const std::string &key : differing(check)) counts[key] += check.contains("only") ? 0 : 1;
  }
  std::string text;
  for (const std::string &key : parameter_keys()) {
    if (counts[key] == 0) continue;
    text += fmt::format("{}{} ({})", text.empty() ? "" : ", ", key, counts[key]);
  }
  if (missing > 0) {
    text += fmt::format("{}channels on one side only ({})", text.empty() ? "" : ", ", missing);
  }
  return text.empty() ? "spanning tree is off on one side" : text;
}

// A line for a pair, and what it adds to the whole.
void tell(const Json &told, const Arguments &arguments, const Layout &layout, Tally &tally) {
  const std::string name = told["pair"];
  Cell said;
  if (told.contains("errors")) {
    ++tally.not_compared;
    tally.status = wrong;
    const Json &first = told["errors"][0];
    const std::string place = first["where"];
    const std::size_t more = told["errors"].size() - 1;
    said = {fmt::format("NOT COMPARED: {}: {}{}{}", first["source"].get<std::string>(),
                        place.empty() ? "" : place + " ", first["found"].get<std::string>(),
                        more > 0 ? fmt::format(" and {} more", more) : ""),
            Colour::yellow};
  } else if (told["agree"]) {
    ++tally.agree;
    said = {"agrees", Colour::green};
  } else {
    tally.status = std::max(tally.status, disagreed);
    said = {"DIFFERENT: " + differences_text(told["checks"]), Colour::red};
    tally.differing.push_back(name + ": " + differences_text(told["checks"]));
  }
  if (arguments.json) {
    fmt::print("{}\n", told.dump());
    std::fflush(stdout);
  } else {
    put_line(name + ": " + coloured(said.text, said.colour, layout));
  }
}

void compare_all(const std::vector<PairLine> &pairs, const Arguments &arguments, Tally &tally) {
  const std::size_t at_once = std::max(1U, std::thread::hardware_concurrency());
  const Layout layout = standard_layout(arguments.no_color);
  std::vector<Job> jobs;
  for (auto next = pairs.begin(); next != pairs.end() || !jobs.empty();) {
    for (; next != pairs.end() && jobs.size() < at_once; ++next) {
      jobs.push_back({&*next, start_writer([&pair = *next] { return document_text(pair); })});
    }
    std::vector<pollfd> ready;
    for (const Job &job : jobs) ready.push_back({job.process.output, POLLIN, 0});
    wait(ready, TimePoint::max());
    for (std::size_t i = jobs.size(); i-- > 0;) {
      if (ready[i].revents == 0 || !read_output(jobs[i].process)) continue;
      const Json told = Json::parse(jobs[i].process.text, nullptr, false);
      const bool is_whole = told.is_object();
      tell(is_whole ? told : failure_of(*jobs[i].pair, "the comparison died"), arguments, layout,
           tally);
      jobs.erase(jobs.begin() + static_cast<std::ptrdiff_t>(i));
    }
  }
}

}  // namespace

Status compare_pairs(const Arguments &arguments) {
  if (!arguments.left.empty() || !arguments.fix.first.empty() || !arguments.html.empty()) {
    print_error(
        "mcec-lab compare: --pairs stands alone; expected no sources, no --patch and no --html");
    return wrong;
  }
  InputErrors errors;
  const std::vector<PairLine> pairs = read_pairs(arguments.pairs, errors);
  const std::string source = printable(arguments.pairs);
  print_errors(source, errors);
  Tally tally;
  if (!errors.empty()) {
    tally.status = wrong;
    if (arguments.json) {
      fmt::print("{}\n", Json({{"version", 1}, {"errors", errors_to_json(source, errors)}}).dump());
    }
  }
  if (pairs.empty()) return wrong;
  compare_all(pairs, arguments, tally);
  if (arguments.json) return tally.status;
  put_line(fmt::format("{} pairs: {} agree, {} differ, {} not compared", pairs.size(), tally.agree,
                       tally.differing.size(), tally.not_compared));
  for (const std::string &line : tally.differing) put_line(line, 4);
  return tally.status;
}

}  // namespace lab
