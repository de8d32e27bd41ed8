// What is served of the pairs that are watched: their page, their metrics, and their comparisons.
#pragma once

#include <chrono>
#include <optional>

#include "io/http.h"
#include "report/status.h"

namespace lab {

// "/?verdict=disagree&name=rack", "/metrics", "/pair/rack 12". Nothing: there is no such page.
std::optional<HttpReply> answer_request(const HttpRequest &request, const FleetStatus &fleet,
                                        std::chrono::system_clock::time_point now);

}  // namespace lab
