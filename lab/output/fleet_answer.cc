#include "output/fleet_answer.h"

#include "output/fleet_page.h"
#include "output/metrics.h"
#include "output/page.h"
#include "text/text.h"
#include "text/url.h"

namespace lab {
namespace {

constexpr char html_type[] = "text/html; charset=utf-8";
constexpr std::string_view pair_path = "/pair/";

// A field that is there twice counts as it is the second time.
FleetFilter parse_filter(std::string_view query) {
  FleetFilter filter;
  for (const std::string_view field : split(query, '&')) {
    const std::size_t end = std::min(field.find('='), field.size());
    const std::string value = decode_form(field.substr(std::min(end + 1, field.size())));
    if (field.substr(0, end) == "verdict") filter.verdict = value;
    if (field.substr(0, end) == "name") filter.name = value;
  }
  return filter;
}

}  // namespace

std::optional<HttpReply> answer_request(std::string_view target, const FleetStatus &fleet,
                                        std::chrono::system_clock::time_point now) {
  const std::size_t end = std::min(target.find('?'), target.size());
  const std::string_view path = target.substr(0, end);
  const std::string_view query = target.substr(std::min(end + 1, target.size()));
  if (path == "/") return HttpReply{html_type, write_fleet_page(fleet, parse_filter(query), now)};
  if (path == "/metrics") {
    return HttpReply{"text/plain; version=0.0.4; charset=utf-8", format_metrics(fleet)};
  }
  if (!path.starts_with(pair_path)) return std::nullopt;
  const std::string name = decode_url(path.substr(pair_path.size()));
  const PairStatus *status =
      find_in(fleet, [&](const PairStatus &pair) { return pair_name(pair) == name; });
  if (status == nullptr) return std::nullopt;
  const bool is_shown = status->comparison && (status->outcome || query == "last");
  return HttpReply{html_type,
                   is_shown ? write_page(*status->comparison) : write_unknown_page(*status, now)};
}

}  // namespace lab
