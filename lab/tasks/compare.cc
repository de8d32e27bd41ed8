#include "tasks/compare.h"

#include "draimiofaf/types.h"
#include "output/fix.h"
#include "output/notes.h"
#include "output/patch_json.h"
#include "output/told.h"
#include "pair/scopes.h"
#include "report/notes.h"
#include "sonic/fix.h"
#include "switch/digest.h"
#include "switch/values.h"
#include "tasks/check.h"

namespace lab {
namespace {

const char *spanning_tree_text(const Settings &settings) {
  if (!settings.spanning_tree) return "off";
  const Entry *mode = find_entry(settings.parameters, STP_MCEC_TYPE1_STP_MODE);
  if (mode == nullptr) return "unknown";
  if (mode->value == word(STP_MCEC_STP_MODE_MST)) return "mst";
  return mode->value == word(STP_MCEC_STP_MODE_RAPID_PVST) ? "rapid-pvst" : "unknown";
}

Json told_side(const Side &side) {
  return {{"source", side.source},
          {"name", printable(side.settings.name)},
          {"spanning-tree", spanning_tree_text(side.settings)}};
}

// The switches of a pair, brought up as they are set, check everything.
Json checks_of(const Sides &sides) {
  Pair pair;
  Requests set_up;
  for (std::size_t i = 0; i < sides.size(); ++i) {
    set_up[i] = Request{false, SetUp{sides[i].settings}};
  }
  ask(pair, set_up);
  const PairOfSettings settings = settings_of(sides);
  std::vector<PairScope> scopes = channel_scopes(settings);
  scopes.insert(scopes.begin(), PairScope{});
  return check_scopes([&](const Requests &requests) { return ask(pair, requests); }, scopes,
                      twin_vlans(settings), nullptr);
}

// The digests of both VLAN maps, to be snapshot against what real switches show.
void add_digest(const PairOfSettings &settings, Json &parameter) {
  for (std::size_t i = 0; i < settings.size(); ++i) {
    const Entry *map = find_entry(settings[i]->parameters, STP_MCEC_TYPE1_MST_REGION_VI_MAP);
    parameter["digest"][switch_names[i]] =
        map != nullptr ? Json(region_digest(map->value)) : Json(nullptr);
  }
}

// The channel that a check is about; empty: it is the switch.
std::string channel_of(const Json &check) {
  return check.contains("ports") ? check["scope"].get<std::string>() : "";
}

std::array<const Rows *, 2> rows_of(const Sides &sides) {
  std::array<const Rows *, 2> rows{};
  for (std::size_t i = 0; i < sides.size(); ++i) {
    rows[i] = sides[i].rows ? &*sides[i].rows : nullptr;
  }
  return rows;
}

Fix find_fix_of_row(const Sides &sides, const Json &check, const Json &parameter) {
  return find_fix(settings_of(sides), rows_of(sides), channel_of(check), parameter["type"]);
}

void add_fix(const Sides &sides, const Json &check, Json &parameter) {
  const Fix fix = find_fix_of_row(sides, check, parameter);
  const bool have_rows = sides[0].rows && sides[1].rows;
  if (!have_rows) {
    parameter["fix"] = {{"text", describe_fix(fix)}};
    return;
  }
  Json &told = parameter["fix"] = Json::object();
  for (std::size_t i = 0; i < sides.size(); ++i) {
    if (fix.alone[i]) {
      told[switch_names[i]] = patch_to_json(make_patch(*sides[i].rows, *fix.alone[i]));
    }
  }
  for (std::size_t i = 0; fix.both && i < sides.size(); ++i) {
    told["both"][switch_names[i]] = patch_to_json(make_patch(*sides[i].rows, (*fix.both)[i]));
  }
  told["text"] = describe_fix(fix);
}

void complete(const Sides &sides, Json &check) {
  const bool is_out = !agrees(check);
  for (Json &parameter : check["parameters"]) {
    if (parameter["type"] == STP_MCEC_TYPE1_MST_REGION_VI_MAP) {
      add_digest(settings_of(sides), parameter);
    }
    if (is_out && !check.contains("only") && is_out_of_step(parameter)) {
      add_fix(sides, check, parameter);
    }
  }
}

// Where spanning tree is off, nothing is compared; that is said first.
void tell_off(const Sides &sides, Json &told) {
  std::string where;
  for (std::size_t i = 0; i < sides.size(); ++i) {
    if (sides[i].settings.spanning_tree) continue;
    where =
        where.empty() ? std::string("on the ") + switch_names[i] + " switch" : "on both switches";
  }
  if (where.empty()) return;
  told["agree"] = !sides[0].settings.spanning_tree && !sides[1].settings.spanning_tree;
  told["notes"].insert(told["notes"].begin(),
                       "Spanning tree is off " + where + ": " +
                           (told["agree"] ? "nothing runs." : "no check is made."));
}

}  // namespace

PairOfSettings settings_of(const Sides &sides) {
  return {&sides[0].settings, &sides[1].settings};
}

Json compare(const Sides &sides) {
  const PairOfSettings settings = settings_of(sides);
  Json told = {{"version", 1}, {"agree", true}};
  for (std::size_t i = 0; i < sides.size(); ++i) told[switch_names[i]] = told_side(sides[i]);
  told["twin-vlans"] = vlan_text(twin_vlans(settings));
  told["checks"] = Json::array();
  told["notes"] = Json::array();
  for (const Note &note : find_notes(settings, false)) {
    const std::string scope = note.channel.empty() ? "" : printable(note.channel) + ": ";
    told["notes"].push_back(scope + describe_note(note));
  }
  if (settings[0]->spanning_tree && settings[1]->spanning_tree) {
    told["checks"] = checks_of(sides);
    for (Json &check : told["checks"]) complete(sides, check);
    told["agree"] = all_agree(told["checks"]);
  }
  tell_off(sides, told);
  return told;
}

std::array<Json, 2> fixes(const Sides &sides, const Json &told,
                          const std::array<bool, 2> &changes) {
  std::array<Changes, 2> all;
  for (const Json &check : told["checks"]) {
    for (const Json &parameter : check["parameters"]) {
      if (!parameter.contains("fix")) continue;
      const Fix fix = find_fix_of_row(sides, check, parameter);
      // What both sides must do together is done by those that may change; else the right follows.
      const std::size_t one = changes[1] ? 1 : 0;
      for (std::size_t i = 0; i < sides.size(); ++i) {
        const Changes *made = fix.both && changes[i]     ? &(*fix.both)[i]
                              : i == one && fix.alone[i] ? &*fix.alone[i]
                                                         : nullptr;
        if (made != nullptr) all[i].insert(all[i].end(), made->begin(), made->end());
      }
    }
  }
  return {patch_to_json(make_patch(*sides[0].rows, all[0])),
          patch_to_json(make_patch(*sides[1].rows, all[1]))};
}

}  // namespace lab
