#include "sonic/resolver.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>

#include "text/text.h"

namespace lab {
namespace {

// What the process says: a line for each address, or this and what is wrong.
constexpr char problem_mark = '!';

[[noreturn]] void find_addresses(const std::string &host, int out) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
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
  const ssize_t written = write(out, text.data(), text.size());
  _exit(written == static_cast<ssize_t>(text.size()) ? 0 : 1);
}

}  // namespace

Resolver::~Resolver() {
  if (pid > 0) {
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
  }
  if (pipe >= 0) close(pipe);
}

bool is_address(const std::string &host) {
  in6_addr address;
  return inet_pton(AF_INET, host.c_str(), &address) == 1 ||
         inet_pton(AF_INET6, host.c_str(), &address) == 1;
}

std::unique_ptr<Resolver> start_resolver(const std::string &host) {
  auto resolver = std::make_unique<Resolver>();
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) == 0) {
    resolver->pipe = ends[0];
    resolver->pid = fork();
    if (resolver->pid == 0) find_addresses(host, ends[1]);
    close(ends[1]);
  }
  if (resolver->pid < 0) resolver->said = problem_mark + std::string(std::strerror(errno));
  return resolver;
}

std::optional<Resolved> hear(Resolver &resolver) {
  pollfd ready{resolver.pipe, POLLIN, 0};
  while (resolver.pipe >= 0) {
    if (poll(&ready, 1, 0) <= 0) return std::nullopt;
    char text[1024];
    const ssize_t got = read(resolver.pipe, text, sizeof text);
    if (got <= 0) break;
    resolver.said.append(text, static_cast<std::size_t>(got));
  }
  Resolved resolved;
  const std::string &said = resolver.said;
  if (said.starts_with(problem_mark)) {
    resolved.problem = "the host is not known: " + printable(said.substr(1));
    return resolved;
  }
  for (std::size_t at = 0; at < said.size();) {
    const std::size_t end = std::min(said.find('\n', at), said.size());
    resolved.addresses.push_back(said.substr(at, end - at));
    at = end + 1;
  }
  if (resolved.addresses.empty()) resolved.problem = "the host has no address";
  return resolved;
}

}  // namespace lab
