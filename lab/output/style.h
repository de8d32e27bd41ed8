// How what was found is printed for a person.
#pragma once

#include "output/layout.h"
#include "output/sides.h"

namespace lab {

struct Style {
  Layout layout;
  bool quiet = false;  // verdicts and expectations that are not met only
  bool only_different =
      false;              // of a check only the scopes that do not agree, or differ as accepted
  bool is_short = false;  // long lists that are equal on both sides are cut
  SideNames sides = switch_names;
};

}  // namespace lab
