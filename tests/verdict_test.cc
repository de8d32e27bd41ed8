// A table of situations. All outputs must have the same verdict for each.

#include <gtest/gtest.h>

#include <cstdio>
#include <nlohmann/json.hpp>

#include "draimiofaf/types.h"
#include "output/events.h"
#include "output/json.h"
#include "output/metrics.h"
#include "output/page.h"
#include "output/print.h"
#include "switch/values.h"

namespace lab {
namespace {

// Makes a report on two switches in MST with a channel, which agree.
PairReport make_report() {
  PairReport report;
  for (SideReport &side : report.sides) {
    side.source = "a.json";
    side.spanning_tree = SpanningTree::mst;
  }
  report.checks.resize(2);
  report.checks[1].scope = {PairScope::Kind::of_channel, "PortChannel1", {}};
  for (PairScope::End &end : report.checks[1].scope.ends) end.port_name = "PortChannel1";
  return report;
}

ScopeReport &add_difference(PairReport &report) {
  ScopeReport &scope = report.checks[1];
  scope.codes = {STP_MCEC_ERR_TYPE1_IFI_PORT_GUARD, STP_MCEC_ERR_TYPE1_IFI_PORT_GUARD};
  ParameterReport parameter;
  parameter.type = STP_MCEC_TYPE1_IFI_PORT_GUARD;
  parameter.values = {word_value(0), word_value(1)};
  parameter.states = {State::different, State::different};
  scope.parameters.push_back(parameter);
  return scope;
}

void add_warning(PairReport &report) {
  Note note;
  note.kind = NoteKind::no_peer_link;
  note.side = 0;
  report.notes.push_back(note);
}

struct Situation {
  const char *name;
  void (*change)(PairReport &report);
  Outcome outcome;
  Status status;
};

const Situation situations[] = {
    {"agree", [](PairReport &) {}, Outcome::agree, agreed},
    {"different", [](PairReport &report) { add_difference(report); }, Outcome::disagree, disagreed},
    {"accepted",
     [](PairReport &report) {
       add_difference(report).parameters[0].accepted = Acceptance{"a reason", ""};
     },
     Outcome::agree, agreed},
    {"missing channel",
     [](PairReport &report) {
       report.checks[1].scope.ends[1].present = false;
       report.checks[1].codes = {STP_MCEC_ERR_TYPE1_PARAM_NULL, STP_MCEC_ERR_TYPE1_PARAM_NULL};
     },
     Outcome::disagree, disagreed},
    {"inconsistent ports",
     [](PairReport &report) {
       report.checks[1].inconsistent[0] = {{"Ethernet4", {STP_MCEC_TYPE1_IFI_PORT_GUARD}}};
     },
     Outcome::disagree, disagreed},
    {"not checked", [](PairReport &report) { report.checks[0].codes[0] = STP_MCEC_ERR_FAILURE; },
     Outcome::disagree, disagreed},
    {"off on one side",
     [](PairReport &report) {
       report.sides[1].spanning_tree = SpanningTree::off;
       report.checks.clear();
     },
     Outcome::disagree, disagreed},
    {"off on both sides",
     [](PairReport &report) {
       for (SideReport &side : report.sides) side.spanning_tree = SpanningTree::off;
       report.checks.clear();
     },
     Outcome::agree, agreed},
    {"incomplete",
     [](PairReport &report) {
       report.incomplete = {{Incomplete::no_channels, {}}};
     },
     Outcome::incomplete, incomplete},
    {"incomplete, accepted",
     [](PairReport &report) {
       report.incomplete = {{Incomplete::no_channels, Acceptance{"a reason", ""}}};
     },
     Outcome::incomplete, agreed},
    {"incomplete and different",
     [](PairReport &report) {
       report.incomplete = {{Incomplete::no_twin_vlans, {}}};
       add_difference(report);
     },
     Outcome::disagree, disagreed},
    {"warning", add_warning, Outcome::agree, agreed},
    {"warning, strict",
     [](PairReport &report) {
       add_warning(report);
       report.is_strict = true;
     },
     Outcome::disagree, disagreed},
};

// The words of an output for agree, disagree and incomplete.
using Words = std::array<const char *, 3>;

void expect_word(const std::string &text, const Words &words, Outcome outcome) {
  for (std::size_t i = 0; i < words.size(); ++i) {
    EXPECT_EQ(text.find(words[i]) != text.npos, i == std::size_t(outcome)) << words[i] << text;
  }
}

std::string printed(const std::function<void()> &print) {
  testing::internal::CaptureStdout();
  print();
  std::fflush(stdout);
  return testing::internal::GetCapturedStdout();
}

std::string metrics_of(const PairReport &report, Outcome outcome) {
  PairStatus status;
  status.sources = {"a", "b"};
  status.outcome = outcome;
  status.comparison = std::make_shared<PairReport>(report);
  return format_metrics({status});
}

TEST(Verdict, IsTheSameInEveryOutput) {
  for (const Situation &situation : situations) {
    SCOPED_TRACE(situation.name);
    PairReport report = make_report();
    situation.change(report);
    const Outcome outcome = find_outcome(report);
    EXPECT_EQ(outcome, situation.outcome);
    EXPECT_EQ(find_status(report), situation.status);

    const Json json = Json::parse(format_comparison(report));
    EXPECT_EQ(json["verdict"], outcome_name(outcome));
    EXPECT_EQ(json["agree"], outcome == Outcome::agree);
    const std::string text = printed([&] { print_comparison(report, {}); });
    expect_word(text.substr(0, text.find('\n')),
                {"The pair agrees", "The pair does NOT agree", "NOT COMPARED"}, outcome);
    const std::string line = printed([&] { print_pair_result({"p", {}, report}, {}, false); });
    expect_word(line, {"p: agrees", "p: DIFFERENT", "p: NOT COMPARED"}, outcome);
    const std::string page = write_page(report);
    const std::size_t heading = page.find("<h1");
    expect_word(page.substr(heading, page.find("</h1>") - heading),
                {"The pair agrees", "The pair does not agree", "ot compared"}, outcome);

    Event event;
    event.outcome = outcome;
    event.comparison = std::make_shared<PairReport>(report);
    EXPECT_EQ(Json::parse(format_event(event))["verdict"], json["verdict"]);
    expect_word(describe_event(event),
                {"the pair agrees", "the pair does not agree", "the pair was not compared"},
                outcome);
    const std::string metrics = metrics_of(report, outcome);
    const auto has = [&](const char *name, bool value) {
      const std::string sample = std::string(name) + "{pair=\"a b\"} ";
      return metrics.find(sample + (value ? "1\n" : "0\n")) != metrics.npos;
    };
    EXPECT_TRUE(has("mcec_pair_agrees", outcome == Outcome::agree)) << metrics;
    EXPECT_TRUE(has("mcec_pair_incomplete", outcome == Outcome::incomplete)) << metrics;
  }
}

}  // namespace
}  // namespace lab
