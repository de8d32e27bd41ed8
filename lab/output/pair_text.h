// A comparison for a person.
#pragma once

#include "output/style.h"
#include "report/pair.h"

namespace lab {

// The verdict, the scopes (those that differ, or all), the notes.
void print_comparison(const PairReport &report, const Style &style);

// "spanning tree is off on the left switch: no check is made"; empty: it runs on both.
std::string describe_spanning_tree_off(const PairReport &report);

// "rapid-pvst", "mst", "off", "unknown".
const char *spanning_tree_name(SpanningTree spanning_tree);

}  // namespace lab
