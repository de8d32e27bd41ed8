// What a switch is asked, and what it answers: the whole of what the lab and its two switches say
// to one another. How it travels, wire.h knows.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "pair/scopes.h"
#include "switch/settings.h"

namespace lab {

// What an operation of the library is about: the switch, or one interface.
struct Scope {
  bool global = true;
  uint32_t port = 0;
};

// --- answers ---

struct ParameterRecord {
  uint32_t type = 0;
  std::string port;  // empty: the switch
  bool is_valid = true;

  bool operator==(const ParameterRecord &) const = default;
};

struct CommandAnswer {
  bool is_accepted = false;
  std::string text;  // of a refusal
};

// A record for display.
struct DisplayRecord {
  std::string scope;  // "switch", or a port
  uint32_t type = 0;
  std::string component;
  std::string name;
  std::string value;
};

// What came of all operations of a request.
struct SwitchReport {
  std::optional<uint32_t> result;  // the first that is not 0
  bool is_command = false;
  std::optional<CommandAnswer> answer;  // to a command; nothing: it was not answered
  std::optional<std::vector<ParameterRecord>> records;
  std::optional<std::vector<Entry>> values;  // handed out by an extraction, the same ones once
  std::optional<Bytes> exported;             // an array; without bytes: there is none
  std::optional<std::vector<DisplayRecord>> display;
  std::vector<std::string> log;
};

// A port that is not configured like the first port of its channel on the same switch.
struct InconsistentPort {
  std::string name;
  std::vector<uint16_t> types;

  bool operator==(const InconsistentPort &) const = default;
};

// One scope of a check on one switch.
struct ScopeAnswer {
  uint32_t code = 0;  // the library's result
  bool on_pod = false;
  std::optional<uint32_t> mode;  // by which the library compares; nothing: none is cached
  Bytes array;                   // that was sent to the peer; without bytes: none
  std::vector<InconsistentPort> inconsistent;
};

struct Reply {
  std::string problem;  // not empty: the request could not be done
  SwitchReport report;
  std::vector<ScopeAnswer> checked;  // in the order of the scopes
};

// --- operations ---

// Be this switch: its world, and what its cache holds at first.
struct SetUp {
  Settings settings;
};

// The same switch in a world that has changed.
struct ChangeWorld {
  Settings settings;
};

struct Command {
  struct Attribute {
    uint32_t id;
    Bytes value;
  };
  uint32_t id;
  bool positive;
  std::vector<Attribute> attributes;
};

// An update message of the spanning-tree process.
struct Update {
  Scope scope;
  std::vector<Entry> entries;
};

struct CacheUpdate {
  Scope scope;
  std::vector<Entry> entries;
};

struct Delete {
  Scope scope;
};

struct Export {
  Scope scope;
};

struct Rebuild {
  Scope scope;
  Bytes array;
};

struct Report {
  Scope scope;
};

// Let an operation of the platform fail, from its nth use on.
struct Fail {
  uint32_t operation;  // standin_operation_t
  uint32_t nth;
  uint32_t times;
};

struct Crash {
  int32_t signal;
};

// Compare with the peer, which is asked the same at the same time, scope by scope.
struct Check {
  std::vector<PairScope> scopes;
  std::optional<Vlans> twins;  // nothing: disabled VLANs are left out
};

using Operation = std::variant<SetUp, ChangeWorld, Command, Update, CacheUpdate, Delete, Export,
                               Rebuild, Report, Fail, Crash, Check>;

struct Request {
  bool log = false;  // are the lines of the event history wanted?
  std::vector<Operation> operations;
};

}  // namespace lab
