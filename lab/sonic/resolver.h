// The addresses of a host, found without waiting: by a process of its own, for that may take long.
#pragma once

#include <sys/types.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace lab {

// Ends its process with this record.
struct Resolver {
  pid_t pid = -1;
  int pipe = -1;  // can be read when there is something to hear
  std::string said;

  Resolver() = default;
  Resolver(const Resolver &) = delete;
  Resolver &operator=(const Resolver &) = delete;
  ~Resolver();
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
std::optional<Resolved> hear(Resolver &resolver);

}  // namespace lab
