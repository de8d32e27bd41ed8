// Errors of input, as JSON.
#pragma once

#include "output/json.h"
#include "text/error.h"

namespace lab {

// All errors of a source, as a list; of a text file by line and column, else by "where".
Json errors_to_json(const std::string &source, const InputErrors &errors);

// A document with errors only.
Json error_document(Json errors);

}  // namespace lab
