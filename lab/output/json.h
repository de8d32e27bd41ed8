// JSON documents keep the order in which their fields are written. Only the sources that make them
// include the whole library.
#pragma once

#include <nlohmann/json_fwd.hpp>

namespace lab {

using Json = nlohmann::ordered_json;

}  // namespace lab
