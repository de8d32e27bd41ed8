#include "output/metrics.h"

#include <fmt/core.h>

#include <filesystem>
#include <map>

#include "output/told.h"
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

struct Writer {
  std::string pair;  // the labels that every line has
  std::string text;

  void metric(const char *name, const char *help) {
    text += fmt::format("# HELP {} {}\n# TYPE {} gauge\n", name, help, name);
  }

  void sample(const char *name, const std::string &value, const std::string &labels = "") {
    text += fmt::format("{}{{{}{}{}}} {}\n", name, pair, labels.empty() ? "" : ",", labels, value);
  }
};

std::string metrics_of(const Told &told, const std::array<bool, 2> &connected,
                       std::chrono::system_clock::time_point compared) {
  Writer writer;
  writer.pair = label("left", told.sides[0].source) + "," + label("right", told.sides[1].source);
  writer.metric("mcec_pair_agrees", "Does the pair agree? NaN: that is not known.");
  writer.sample("mcec_pair_agrees", !told.agree ? "NaN" : *told.agree ? "1" : "0");

  // What is not known is not told, rather than as it was.
  if (told.agree) {
    std::map<std::string, int> scopes_differing;
    int disagreeing = 0;
    for (const Json &check : told.comparison["checks"]) {
      if (!agrees(check)) ++disagreeing;
      for (const Json &parameter : check["parameters"]) scopes_differing[parameter["parameter"]];
      for (const std::string &key : differing(check)) ++scopes_differing[key];
    }
    writer.metric("mcec_pair_scopes_disagreeing", "Scopes that do not agree.");
    writer.sample("mcec_pair_scopes_disagreeing", std::to_string(disagreeing));
    writer.metric("mcec_pair_scopes_differing", "Scopes in which a parameter differs.");
    for (const auto &[key, count] : scopes_differing) {
      writer.sample("mcec_pair_scopes_differing", std::to_string(count), label("parameter", key));
    }
  }
  if (compared != std::chrono::system_clock::time_point{}) {
    const auto since = std::chrono::duration<double>(compared.time_since_epoch()).count();
    writer.metric("mcec_pair_compared_timestamp_seconds",
                  "When the verdict was last known to hold.");
    writer.sample("mcec_pair_compared_timestamp_seconds", fmt::format("{:.3f}", since));
  }
  writer.metric("mcec_source_connected", "Is the source of a switch's settings there?");
  for (std::size_t i = 0; i < connected.size(); ++i) {
    writer.sample("mcec_source_connected", connected[i] ? "1" : "0",
                  label("side", switch_names[i]));
  }
  return writer.text;
}

}  // namespace

std::string problem_of_metrics(const std::string &path) {
  std::error_code error;
  const auto there = std::filesystem::status(path, error);
  if (!std::filesystem::exists(there) || std::filesystem::is_regular_file(there)) return "";
  return "found something that is no file; expected a file of metrics, or nothing";
}

std::string write_metrics(const std::string &path, const Told &told,
                          const std::array<bool, 2> &connected,
                          std::chrono::system_clock::time_point compared) {
  // The collector passes over names that do not end with .prom, as that of an unfinished file.
  return write_file_atomically(path, metrics_of(told, connected, compared));
}

}  // namespace lab
