// The addresses of a host, found without waiting: by a process of its own, for that may take long.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "text/child.h"

namespace lab {

struct Resolver {
  ChildProcess process;
};

struct Resolved {
  std::vector<std::string> addresses;
  std::string problem;  // not empty: there are none
};

// Is it an address, and no name?
bool is_address(const std::string &host);

// Where no process can be made, that is what will be heard.
std::unique_ptr<Resolver> start_resolver(const std::string &host);

// Nothing: it is not known yet.
std::optional<Resolved> poll_resolver(Resolver &resolver);

}  // namespace lab
