// Requests to a switch process and its replies. wire.h encodes them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "pair/scopes.h"
#include "switch/settings.h"

namespace lab {

// The switch, or one interface of it.
struct Scope {
  bool global = true;
  uint32_t port = 0;
};

// --- replies ---

struct ParameterRecord {
  uint32_t type = 0;
  std::string port;  // empty: the switch
  bool is_valid = true;

  bool operator==(const ParameterRecord &) const = default;
};

struct CommandAnswer {
  bool is_accepted = false;
  std::string text;  // the message of a refusal
};

// A record of the library's report.
struct DisplayRecord {
  std::string scope;  // "switch", or the name of a port
  uint32_t type = 0;
  std::string component;
  std::string name;
  std::string value;
};

// The results of all operations of a request.
struct SwitchReport {
  std::optional<uint32_t> result;  // the first that is not 0, else 0
  bool is_command = false;
  std::optional<CommandAnswer> answer;  // nullopt if the command was not answered
  std::optional<std::vector<ParameterRecord>> records;
  std::optional<std::vector<Entry>> values;  // from extractions, without duplicates
  std::optional<Bytes> exported;             // an array; empty if the export failed
  std::optional<std::vector<DisplayRecord>> display;
  std::vector<std::string> log;
};

// A port whose parameters differ from those of the first port of its channel on the same switch.
struct InconsistentPort {
  std::string name;
  std::vector<uint16_t> types;  // of the parameters that differ

  bool operator==(const InconsistentPort &) const = default;
};

// The check of one scope on one switch.
struct ScopeAnswer {
  uint32_t code = 0;  // the library's result
  bool on_pod = false;
  std::optional<uint32_t> mode;  // the cached spanning-tree mode; nullopt if none is cached
  Bytes array;                   // sent to the peer; empty if the export failed
  std::vector<InconsistentPort> inconsistent;
};

struct Reply {
  std::string problem;  // empty if the request succeeded
  SwitchReport report;
  std::vector<ScopeAnswer> checked;  // in the order of the scopes
};

// --- operations ---

// Replaces the switch of the process: the state of its platform and the contents of its cache.
struct SetUp {
  Settings settings;
};

// Changes the state of the platform. The cache stays as it is.
struct ChangePlatform {
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

// Makes an operation of the platform fail, from its nth use on.
struct Fail {
  uint32_t operation;  // standin_operation_t
  uint32_t nth;
  uint32_t times;
};

struct Crash {
  int32_t signal;
};

// Compares scopes with the peer. Both switches need the same request at the same time.
struct Check {
  std::vector<PairScope> scopes;
  std::optional<Vlans> twins;  // nullopt: disabled VLANs are not compared
};

using Operation = std::variant<SetUp, ChangePlatform, Command, Update, CacheUpdate, Delete, Export,
                               Rebuild, Report, Fail, Crash, Check>;

struct Request {
  bool log = false;  // the reply contains the event history
  std::vector<Operation> operations;
};

}  // namespace lab
