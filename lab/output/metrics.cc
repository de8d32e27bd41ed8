#include "output/metrics.h"

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>

#include "output/words.h"
#include "text/file.h"
#include "text/text.h"

namespace lab {
namespace {

// A label's value; the sources' names have been made printable.
std::string label(const char *name, const std::string &value) {
  std::string text = std::string(name) + "=\"";
  for (const char c : value) {
    if (c == '\\' || c == '"') text += '\\';
    text += c;
  }
  return text + '"';
}

// One of the pairs, with what its metrics are made of.
struct MeasuredPair {
  const PairStatus &status;
  std::string label;
  std::optional<Summary> summary;  // of what is known
};

struct MetricWriter {
  std::vector<MeasuredPair> pairs;
  std::string text;
};

void add_metric(MetricWriter &writer, const char *name, const char *help) {
  writer.text += fmt::format("# HELP {} {}\n# TYPE {} gauge\n", name, help, name);
}

void add_sample(MetricWriter &writer, const char *name, const std::string &labels,
                const std::string &value) {
  writer.text += fmt::format("{}{{{}}} {}\n", name, labels, value);
}

std::string format_seconds(std::chrono::system_clock::time_point time) {
  if (time == std::chrono::system_clock::time_point{}) return "";
  return fmt::format("{:.3f}", std::chrono::duration<double>(time.time_since_epoch()).count());
}

// Metrics with one sample for each pair. What is not known has none, rather than what it was.
struct PairMetric {
  const char *name;
  const char *help;
  std::string (*value)(const MeasuredPair &pair);
};
constexpr PairMetric pair_metrics[] = {
    {"mcec_pair_agrees", "Does the pair agree? NaN: that is not known.",
     [](const MeasuredPair &pair) -> std::string {
       if (!pair.status.outcome) return "NaN";
       return *pair.status.outcome == Outcome::agree ? "1" : "0";
     }},
    {"mcec_pair_incomplete", "Could something that the verdict needs not be compared?",
     [](const MeasuredPair &pair) -> std::string {
       return pair.status.outcome == Outcome::incomplete ? "1" : "0";
     }},
    {"mcec_pair_scopes_disagreeing", "Scopes that do not agree.",
     [](const MeasuredPair &pair) {
       return pair.summary ? std::to_string(pair.summary->disagreeing) : "";
     }},
    {"mcec_pair_compared_timestamp_seconds", "When the verdict was last known to hold.",
     [](const MeasuredPair &pair) { return format_seconds(pair.status.compared); }},
    {"mcec_pair_changed_timestamp_seconds", "Since when the verdict is what it is.",
     [](const MeasuredPair &pair) { return format_seconds(pair.status.changed); }},
};

void add_counts(MetricWriter &writer) {
  add_metric(writer, "mcec_pairs", "How many pairs have a verdict.");
  for (const auto &outcome : all_outcomes) {
    const auto count =
        std::count_if(writer.pairs.begin(), writer.pairs.end(),
                      [&](const MeasuredPair &pair) { return pair.status.outcome == outcome; });
    add_sample(writer, "mcec_pairs", label("verdict", outcome_name(outcome)),
               std::to_string(count));
  }
}

void add_details(MetricWriter &writer) {
  add_metric(writer, "mcec_pair_info", "The sources of the pair.");
  for (const auto &[status, pair, summary] : writer.pairs) {
    const auto &[left, right] = status.sources;
    add_sample(writer, "mcec_pair_info",
               pair + "," + label("left", left) + "," + label("right", right), "1");
  }
  add_metric(writer, "mcec_pair_scopes_differing", "Scopes in which a parameter differs.");
  for (const auto &[status, pair, summary] : writer.pairs) {
    if (!summary) continue;
    for (const auto &[type, count] : summary->parameters) {
      add_sample(writer, "mcec_pair_scopes_differing",
                 pair + "," + label("parameter", parameter_key(type)),
                 std::to_string(count.differ.size()));
    }
  }
  add_metric(writer, "mcec_source_connected", "Is the source of a switch's settings there?");
  for (const auto &[status, pair, summary] : writer.pairs) {
    for (std::size_t side = 0; side < status.connected.size(); ++side) {
      add_sample(writer, "mcec_source_connected", pair + "," + label("side", switch_names[side]),
                 status.connected[side] ? "1" : "0");
    }
  }
}

}  // namespace

std::string format_metrics(const FleetStatus &fleet) {
  MetricWriter writer;
  for (const PairStatus &status : fleet) {
    writer.pairs.push_back({status, label("pair", pair_name(status)), {}});
    if (status.outcome) writer.pairs.back().summary = summarize(status.comparison->checks);
  }
  add_counts(writer);
  for (const PairMetric &metric : pair_metrics) {
    add_metric(writer, metric.name, metric.help);
    for (const MeasuredPair &pair : writer.pairs) {
      const std::string value = metric.value(pair);
      if (!value.empty()) add_sample(writer, metric.name, pair.label, value);
    }
  }
  add_details(writer);
  return writer.text;
}

std::string find_problem_of_metrics(const std::string &path) {
  std::error_code error;
  const auto there = std::filesystem::status(path, error);
  if (!std::filesystem::exists(there) || std::filesystem::is_regular_file(there)) return "";
  return "found something that is no file; expected a file of metrics, or nothing";
}

std::string write_metrics(const std::string &path, const FleetStatus &fleet) {
  // The collector passes over names that do not end with .prom, as that of an unfinished file.
  const std::string problem = write_file_atomically(path, format_metrics(fleet));
  return problem.empty() ? "" : path + ": " + problem;
}

}  // namespace lab
