#include "output/patch_json.h"

namespace lab {
namespace {

constexpr const char *op_names[] = {"add", "remove", "replace"};

// The names down to a place in a dump, as a JSON pointer.
std::string pointer_text(const std::vector<std::string> &path) {
  std::string text;
  for (const std::string &name : path) {
    text += '/';
    for (const char c : name) text += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
  }
  return text;
}

Json to_json(const FieldValue &value) {
  return std::visit([](const auto &texts) { return Json(texts); }, value);
}

// Rows and tables. Their keys are new, and need no looking up.
template <class Value>
Json to_json(const std::map<std::string, Value> &members) {
  Json::object_t object;
  for (const auto &[name, value] : members) object.emplace_back(name, to_json(value));
  return object;
}

}  // namespace

Json patch_to_json(const std::vector<PatchOperation> &patch) {
  Json list = Json::array();
  for (const PatchOperation &operation : patch) {
    Json &one = list.emplace_back();
    one = {{"op", op_names[std::size_t(operation.op)]}, {"path", pointer_text(operation.path)}};
    if (const auto *field = std::get_if<FieldValue>(&operation.value))
      one["value"] = to_json(*field);
    if (const auto *row = std::get_if<Row>(&operation.value)) one["value"] = to_json(*row);
    if (const auto *table = std::get_if<Table>(&operation.value)) one["value"] = to_json(*table);
  }
  return list;
}

}  // namespace lab
