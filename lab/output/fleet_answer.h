// What is served of the pairs that are watched: their page, their metrics, and their comparisons.
#pragma once

#include <chrono>
#include <optional>
#include <string_view>

#include "io/http.h"
#include "report/status.h"

namespace lab {

// `target`: "/?verdict=disagree&name=rack", "/metrics", "/pair/rack%2012". Nothing: there is no
// such page.
std::optional<HttpReply> answer_request(std::string_view target, const FleetStatus &fleet,
                                        std::chrono::system_clock::time_point now);

}  // namespace lab
