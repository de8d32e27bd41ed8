// JSON documents keep the order in which their fields are told.
#pragma once

#include <nlohmann/json.hpp>

namespace lab {

using Json = nlohmann::ordered_json;

}  // namespace lab
