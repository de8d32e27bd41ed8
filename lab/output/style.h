// How what was found is printed for a person.
#pragma once

#include "output/layout.h"

namespace lab {

struct Style {
  Layout layout;
  bool quiet = false;           // verdicts and expectations that are not met only
  bool only_different = false;  // of a check only the scopes that do not agree
};

}  // namespace lab
