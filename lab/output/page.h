// The comparison of two switches as a page for a browser.
#pragma once

#include <string>

#include "report/pair.h"

namespace lab {

// The page of a comparison. It needs no other file and loads none. What comes from the switches is
// only ever text in it, and its policy lets the browser run nothing but its own script.
std::string write_page(const PairReport &report);

}  // namespace lab
