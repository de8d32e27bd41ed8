#include "output/metrics.h"

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>

#include "output/words.h"
#include "text/file.h"

namespace lab {
namespace {

// A value and its labels, without the label of the pair. An unknown value has no sample.
struct Sample {
  std::string value;
  std::string labels = {};
};
using Samples = std::vector<Sample>;

// Formats a label. Names of sources and pairs contain no control characters.
std::string label(const char *name, const std::string &value) {
  std::string text = std::string(name) + "=\"";
  for (const char c : value) {
    if (c == '\\' || c == '"') text += '\\';
    text += c;
  }
  return text + '"';
}

Samples sample_time(std::chrono::system_clock::time_point time) {
  const std::chrono::duration<double> seconds = time.time_since_epoch();
  return seconds.count() == 0 ? Samples{} : Samples{{fmt::format("{:.3f}", seconds.count())}};
}

Samples sample_differing(const PairStatus &pair) {
  Samples samples;
  if (!pair.outcome) return samples;
  for (const auto &[type, count] : summarize(pair.comparison->checks).parameters) {
    samples.push_back(
        {std::to_string(count.differ.size()), label("parameter", parameter_key(type))});
  }
  return samples;
}

struct PairMetric {
  const char *name;
  const char *help;
  Samples (*sample)(const PairStatus &pair);
};
constexpr PairMetric pair_metrics[] = {
    {"mcec_pair_agrees", "1 if the pair agrees, 0 if not, NaN if unknown.",
     [](const PairStatus &pair) -> Samples {
       return {{!pair.outcome ? "NaN" : *pair.outcome == Outcome::agree ? "1" : "0"}};
     }},
    {"mcec_pair_incomplete", "1 if nothing differs but something could not be compared, else 0.",
     [](const PairStatus &pair) -> Samples {
       return {{pair.outcome == Outcome::incomplete ? "1" : "0"}};
     }},
    {"mcec_pair_scopes_disagreeing", "Number of scopes that do not agree.",
     [](const PairStatus &pair) -> Samples {
       if (!pair.outcome) return {};
       return {{std::to_string(std::ranges::count(pair.comparison->checks, false, is_agreed))}};
     }},
    {"mcec_pair_compared_timestamp_seconds", "Time at which the verdict was last confirmed.",
     [](const PairStatus &pair) { return sample_time(pair.compared); }},
    {"mcec_pair_changed_timestamp_seconds", "Time of the last change of the verdict.",
     [](const PairStatus &pair) { return sample_time(pair.changed); }},
    {"mcec_pair_info", "The sources of the pair.",
     [](const PairStatus &pair) -> Samples {
       const auto &[left, right] = pair.sources;
       return {{"1", label("left", left) + "," + label("right", right)}};
     }},
    {"mcec_pair_scopes_differing", "Number of scopes in which a parameter differs.",
     sample_differing},
    {"mcec_source_connected", "1 if the source of the settings of a switch is connected, else 0.",
     [](const PairStatus &pair) -> Samples {
       const auto &[left, right] = pair.connected;
       return {{left ? "1" : "0", label("side", switch_names[0])},
               {right ? "1" : "0", label("side", switch_names[1])}};
     }},
};

std::string format_heading(const char *name, const char *help) {
  return fmt::format("# HELP {0} {1}\n# TYPE {0} gauge\n", name, help);
}

}  // namespace

std::string format_metrics(const FleetStatus &fleet) {
  std::string text = format_heading("mcec_pairs", "Number of pairs with a verdict.");
  for (const auto &outcome : outcomes_by_urgency) {
    text += fmt::format("mcec_pairs{{{}}} {}\n", label("verdict", outcome_name(outcome)),
                        count_pairs(fleet, outcome));
  }
  for (const PairMetric &metric : pair_metrics) {
    text += format_heading(metric.name, metric.help);
    for (const PairStatus &pair : fleet) {
      for (const auto &[value, labels] : metric.sample(pair)) {
        text += fmt::format("{}{{{}{}{}}} {}\n", metric.name, label("pair", pair_name(pair)),
                            labels.empty() ? "" : ",", labels, value);
      }
    }
  }
  return text;
}

std::string find_problem_of_metrics(const std::string &path) {
  std::error_code error;
  const auto there = std::filesystem::status(path, error);
  if (!std::filesystem::exists(there) || std::filesystem::is_regular_file(there)) return "";
  return "found something that is no file; expected a file of metrics, or nothing";
}

std::string write_metrics(const std::string &path, const FleetStatus &fleet) {
  // The collector ignores the temporary file, whose name does not end in .prom.
  const std::string problem = write_file_atomically(path, format_metrics(fleet));
  return problem.empty() ? "" : path + ": " + problem;
}

}  // namespace lab
