#include "output/metrics.h"

#include <fmt/core.h>

#include <filesystem>

#include "switch/names.h"
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

struct MetricWriter {
  std::string pair;  // the labels that every line has
  std::string text;

  void metric(const char *name, const char *help) {
    text += fmt::format("# HELP {} {}\n# TYPE {} gauge\n", name, help, name);
  }

  void sample(const char *name, const std::string &value, const std::string &labels = "") {
    text += fmt::format("{}{{{}{}{}}} {}\n", name, pair, labels.empty() ? "" : ",", labels, value);
  }
};

std::string format_metrics(const PairStatus &status) {
  MetricWriter writer;
  writer.pair = label("left", status.sources[0]) + "," + label("right", status.sources[1]);
  writer.metric("mcec_pair_agrees", "Does the pair agree? NaN: that is not known.");
  writer.sample("mcec_pair_agrees", !status.outcome                     ? "NaN"
                                    : *status.outcome == Outcome::agree ? "1"
                                                                        : "0");
  writer.metric("mcec_pair_incomplete", "Could something that the verdict needs not be compared?");
  writer.sample("mcec_pair_incomplete", status.outcome == Outcome::incomplete ? "1" : "0");

  // What is not known is left out, rather than as it was.
  if (status.outcome) {
    const Summary summary = summarize(status.comparison->checks);
    writer.metric("mcec_pair_scopes_disagreeing", "Scopes that do not agree.");
    writer.sample("mcec_pair_scopes_disagreeing", std::to_string(summary.disagreeing));
    writer.metric("mcec_pair_scopes_differing", "Scopes in which a parameter differs.");
    for (const auto &[type, count] : summary.parameters) {
      writer.sample("mcec_pair_scopes_differing", std::to_string(count.differ.size()),
                    label("parameter", parameter_key(type)));
    }
  }
  if (status.compared != std::chrono::system_clock::time_point{}) {
    const auto since = std::chrono::duration<double>(status.compared.time_since_epoch()).count();
    writer.metric("mcec_pair_compared_timestamp_seconds",
                  "When the verdict was last known to hold.");
    writer.sample("mcec_pair_compared_timestamp_seconds", fmt::format("{:.3f}", since));
  }
  writer.metric("mcec_source_connected", "Is the source of a switch's settings there?");
  for (std::size_t i = 0; i < status.connected.size(); ++i) {
    writer.sample("mcec_source_connected", status.connected[i] ? "1" : "0",
                  label("side", switch_names[i]));
  }
  return writer.text;
}

}  // namespace

std::string find_problem_of_metrics(const std::string &path) {
  std::error_code error;
  const auto there = std::filesystem::status(path, error);
  if (!std::filesystem::exists(there) || std::filesystem::is_regular_file(there)) return "";
  return "found something that is no file; expected a file of metrics, or nothing";
}

std::string write_metrics(const std::string &path, const PairStatus &status) {
  // The collector passes over names that do not end with .prom, as that of an unfinished file.
  const std::string problem = write_file_atomically(path, format_metrics(status));
  return problem.empty() ? "" : path + ": " + problem;
}

}  // namespace lab
