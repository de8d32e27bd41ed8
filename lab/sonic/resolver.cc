#include "sonic/resolver.h"

#include <arpa/inet.h>
#include <netdb.h>

#include <string_view>
#include <system_error>

#include "text/text.h"

namespace lab {
namespace {

// What the process says: a line for each address, or this and what is wrong.
constexpr char problem_mark = '!';

std::string find_addresses(const std::string &host) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  addrinfo *found = nullptr;
  const int error = getaddrinfo(host.c_str(), nullptr, &hints, &found);
  std::string text = error != 0 ? problem_mark + std::string(gai_strerror(error)) : "";
  for (const addrinfo *at = error == 0 ? found : nullptr; at != nullptr; at = at->ai_next) {
    char address[NI_MAXHOST];
    if (getnameinfo(at->ai_addr, at->ai_addrlen, address, sizeof address, nullptr, 0,
                    NI_NUMERICHOST) == 0) {
      text += address + std::string("\n");
    }
  }
  return text;
}

}  // namespace

bool is_address(const std::string &host) {
  in6_addr address;
  return inet_pton(AF_INET, host.c_str(), &address) == 1 ||
         inet_pton(AF_INET6, host.c_str(), &address) == 1;
}

std::unique_ptr<Resolver> start_resolver(const std::string &host) {
  auto resolver = std::make_unique<Resolver>();
  try {
    resolver->process = start_writer([&host] { return find_addresses(host); });
  } catch (const std::system_error &problem) {
    resolver->process.text = problem_mark + std::string(problem.what());
  }
  return resolver;
}

std::optional<Resolved> poll_resolver(Resolver &resolver) {
  if (!read_output(resolver.process)) return std::nullopt;
  Resolved resolved;
  std::string_view output = resolver.process.text;
  if (output.starts_with(problem_mark)) {
    resolved.problem = "the host is not known: " + printable(output.substr(1));
    return resolved;
  }
  if (output.ends_with('\n')) output.remove_suffix(1);
  for (const std::string_view line : split(output, '\n')) {
    if (!line.empty()) resolved.addresses.emplace_back(line);
  }
  if (resolved.addresses.empty()) resolved.problem = "the host has no address";
  return resolved;
}

}  // namespace lab
