// The comparison of two switches as a page for a browser.
#pragma once

#include <string>

#include "output/json.h"

namespace lab {

// The page of a document of `mcec-lab compare`. It needs no other file and loads none. What the
// switches say is only ever text in it, and its policy lets the browser run nothing but its own
// script.
std::string page_of(const Json &document);

}  // namespace lab
