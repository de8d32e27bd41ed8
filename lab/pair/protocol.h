// What a switch is asked, and what it answers: the whole of what the lab and its two switches say
// to one another. How it travels, wire.h knows.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "switch/settings.h"

namespace lab {

// What an operation of the library is about: the switch, or one interface.
struct Scope {
  bool global = true;
  uint32_t port = 0;
};

// --- answers ---

// An answer without content.
struct Done {};

// The result of an operation.
struct Result {
  uint32_t code;
};

// What an extraction hands to its caller, and how a command was answered.
struct Extracted {
  struct Record {
    uint32_t type;
    uint32_t valid;
    bool global;
    uint32_t port;
  };
  struct Response {
    bool accepted;
    std::string text;  // of a refusal
  };
  uint32_t result;
  std::vector<Record> records;
  std::vector<Entry> values;
  std::vector<Response> responses;  // at most one, unless the library is at fault
};

struct Exported {
  uint32_t result;
  Bytes array;  // without bytes: there is none
};

// The display records of a scope.
struct Reported {
  struct Record {
    uint32_t type;
    std::string component;
    std::string name;
    std::string value;
  };
  uint32_t result;
  std::vector<Record> records;
};

// What the library finds about a parameter alone.
enum class State : uint8_t {
  same,             // it compares it, and it agrees
  different,        // it compares it, and it does not
  same_on_twins,    // disabled VLANs that differ on other VLANs only
  missing_at_peer,  // it compares it and refuses without it
  only_at_peer,     // it does not look at it
  not_in_mode,      // what follows is not compared, each for another reason
  not_without_twins,
  ignored_on_pod,
  not_without_mode,
};

// One scope of a check as one switch sees it.
struct View {
  struct Parameter {
    uint16_t type;
    std::optional<Bytes> local;
    std::optional<Bytes> peer;
    State state;
  };
  // A port of the channel that is not set like the port that speaks for it.
  struct InconsistentPort {
    uint32_t port;
    std::vector<uint16_t> types;
  };
  uint32_t verdict = 0;
  bool pod = false;
  std::vector<Parameter> parameters;
  std::vector<InconsistentPort> inconsistent;
  // When disabled VLANs were compared.
  std::optional<Vlans> pass;
  std::optional<Vlans> fail;
};

struct Checked {
  std::vector<View> views;  // in the order of the scopes
};

// --- what is asked ---

// Be this switch: its world, and what its cache holds at first.
struct SetUp {
  using Answer = Done;
  Settings settings;
};

struct ChangeWorld {
  using Answer = Done;
  WorldChange change;
};

struct Command {
  using Answer = Extracted;
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
  using Answer = Extracted;
  Scope scope;
  std::vector<Entry> entries;
};

struct CacheUpdate {
  using Answer = Result;
  Scope scope;
  std::vector<Entry> entries;
};

struct Delete {
  using Answer = Result;
  Scope scope;
};

struct Export {
  using Answer = Exported;
  Scope scope;
};

struct Rebuild {
  using Answer = Result;
  Scope scope;
  Bytes array;
};

struct Report {
  using Answer = Reported;
  Scope scope;
};

// Let an operation of the platform fail, from its nth use on.
struct Fail {
  using Answer = Done;
  uint32_t operation;  // standin_operation_t
  uint32_t nth;
  uint32_t times;
};

struct Crash {
  using Answer = Done;
  int32_t signal;
};

// Compare with the peer, which is asked the same at the same time, scope by scope.
struct Check {
  using Answer = Checked;
  struct Compared {
    Scope scope;
    bool present = true;           // false: this switch has no such channel, it has nothing to send
    std::vector<uint32_t> others;  // ports of the channel without the one that stands for it
  };
  std::vector<Compared> scopes;
  std::optional<Vlans> twins;  // nothing: disabled VLANs are left out
};

struct Request {
  bool log = false;  // are the lines of the event history wanted?
  std::variant<SetUp, ChangeWorld, Command, Update, CacheUpdate, Delete, Export, Rebuild, Report,
               Fail, Crash, Check>
      asked;
};

struct Reply {
  std::string problem;  // not empty: it could not be done, and there is no answer
  std::vector<std::string> log;
  std::variant<Done, Result, Extracted, Exported, Reported, Checked> answer;
};

}  // namespace lab
