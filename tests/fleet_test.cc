// Metrics and pages of watched pairs.

#include <gtest/gtest.h>

#include "output/fleet_page.h"
#include "output/metrics.h"
#include "report/verdict.h"

namespace lab {
namespace {

using std::chrono::system_clock;

constexpr char hostile[] = "<i>\"\\ 100%/\u00fc";

PairStatus make_status(const char *name, std::optional<Outcome> outcome) {
  auto report = std::make_shared<PairReport>();
  if (outcome == Outcome::incomplete) report->incomplete = {{Incomplete::no_channels, {}}};
  return {
      .name = name,
      .sources = {"a.json", "b.json"},
      .outcome = outcome,
      .unknown =
          UnknownCause{
              .kind = UnknownCause::Kind::disconnected, .side = 0, .reason = "<gone>", .error = {}},
      .comparison = report,
      .connected = {outcome.has_value(), true},
      .compared = system_clock::time_point(std::chrono::milliseconds(2500)),
      .changed = {}};
}

FleetStatus make_fleet() {
  FleetStatus fleet = {make_status("rack1", Outcome::agree), make_status(hostile, std::nullopt),
                       make_status("rack3", Outcome::incomplete), make_status("", Outcome::agree)};
  fleet[3].changed = system_clock::time_point(std::chrono::seconds(100));
  return fleet;
}

TEST(Fleet, Metrics) {
  const std::string text = format_metrics(make_fleet());
  const char *samples[] = {
      "mcec_pairs{verdict=\"disagree\"} 0",
      "mcec_pairs{verdict=\"unknown\"} 1",
      "mcec_pairs{verdict=\"agree\"} 2",
      "mcec_pair_agrees{pair=\"rack1\"} 1",
      "mcec_pair_agrees{pair=\"<i>\\\"\\\\ 100%/\u00fc\"} NaN",
      "mcec_pair_agrees{pair=\"rack3\"} 0",
      "mcec_pair_agrees{pair=\"a.json b.json\"} 1",
      "mcec_pair_incomplete{pair=\"rack1\"} 0",
      "mcec_pair_incomplete{pair=\"rack3\"} 1",
      "mcec_pair_info{pair=\"rack1\",left=\"a.json\",right=\"b.json\"} 1",
      "mcec_pair_compared_timestamp_seconds{pair=\"rack1\"} 2.500",
      "mcec_pair_changed_timestamp_seconds{pair=\"a.json b.json\"} 100.000",
      "mcec_source_connected{pair=\"rack1\",side=\"left\"} 1",
      "mcec_source_connected{pair=\"<i>\\\"\\\\ 100%/\u00fc\",side=\"left\"} 0",
  };
  for (const char *sample : samples) {
    EXPECT_NE(text.find("\n" + std::string(sample) + "\n"), text.npos) << sample << "\n" << text;
  }
  for (const char *sample : {"mcec_pair_changed_timestamp_seconds{pair=\"rack1\"",
                             "mcec_pair_scopes_disagreeing{pair=\"<i>"}) {
    EXPECT_EQ(text.find(sample), text.npos) << text;
  }
  // Each metric is described once, before its samples.
  for (std::size_t at = 0; (at = text.find("# HELP ", at)) != text.npos; ++at) {
    const std::string line = text.substr(at, text.find(' ', at + 7) + 1 - at);
    EXPECT_EQ(text.find(line, at + 1), text.npos) << line;
  }
}

TEST(Fleet, AnswersRequests) {
  const struct {
    HttpRequest request;
    std::vector<const char *> has;
    std::vector<const char *> has_not;
  } rows[] = {
      {{"/", {}},
       {"4 of 4 pairs", "Unknown: 1 of 4", ">&lt;i&gt;&quot;",
        "pair/%3Ci%3E%22%5C%20100%25%2F%C3%BC\"", "agree: 2</a>"},
       {"<i>"}},
      {{"/", {}},
       {"left is disconnected: &lt;gone&gt;", "neither switch has", "<td>1 h 1 min<small>"},
       {"1970-01-01 00:00:00"}},
      {{"/", {{"verdict", "agree"}, {"name", ""}}},
       {"2 of 4 pairs", ">rack1<", ">a.json b.json<"},
       {">rack3<"}},
      {{"/", {{"verdict", "agree"}, {"name", "RACK1"}}},
       {"1 of 4 pairs", "value=\"RACK1\""},
       {">rack3<"}},
      {{"/", {{"name", "100% \""}}}, {"0 of 4 pairs", "value=\"100% &quot;\""}, {">rack3<"}},
      {{"/metrics", {}}, {"mcec_pairs{"}, {}},
      {{"/pair/rack1", {}}, {"The pair agrees"}, {}},
      {{"/pair/a.json b.json", {}}, {"The pair agrees"}, {}},
      {{"/pair/" + std::string(hostile), {}},
       {"left is disconnected: &lt;gone&gt;", "?last\""},
       {"<i>"}},
      {{"/pair/" + std::string(hostile), {{"last", ""}}}, {"The pair agrees"}, {"gone"}},
      {{"/pair/rack", {}}, {}, {}},
      {{"/pair", {}}, {}, {}},
      {{"/metrics/", {}}, {}, {}},
      {{"", {}}, {}, {}},
  };
  const auto now = system_clock::time_point(std::chrono::seconds(3760));
  for (const auto &row : rows) {
    const auto reply = answer_request(row.request, make_fleet(), now);
    ASSERT_EQ(reply.has_value(), !row.has.empty()) << row.request.path;
    for (const char *text : row.has) {
      EXPECT_NE(reply->body.find(text), std::string::npos)
          << row.request.path << text << reply->body;
    }
    for (const char *text : row.has_not) {
      EXPECT_EQ(reply->body.find(text), std::string::npos)
          << row.request.path << text << reply->body;
    }
  }
}

}  // namespace
}  // namespace lab
