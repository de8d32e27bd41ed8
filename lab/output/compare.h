// A comparison for a person, made from its document.
#pragma once

#include "output/show.h"

namespace lab {

// The verdict, the scopes that differ (or, when not only_different, all), the notes.
void show_comparison(const Json &told, const ShowOptions &options);

}  // namespace lab
