// The HTTP server of a watch: a page of all pairs, their comparisons, and metrics.
#pragma once

#include <chrono>
#include <optional>

#include "io/http.h"
#include "report/status.h"

namespace lab {

// Answers "/?verdict=disagree&name=rack", "/metrics" and "/pair/rack 12"; nullopt for other paths.
std::optional<HttpReply> answer_request(const HttpRequest &request, const FleetStatus &fleet,
                                        std::chrono::system_clock::time_point now);

}  // namespace lab
