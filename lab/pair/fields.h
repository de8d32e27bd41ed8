// How a record travels between processes of the lab: its fields, in their order.
#pragma once

#include <cereal/archives/binary.hpp>
#include <cereal/types/array.hpp>
#include <cereal/types/bitset.hpp>
#include <cereal/types/map.hpp>
#include <cereal/types/optional.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/utility.hpp>
#include <cereal/types/variant.hpp>
#include <cereal/types/vector.hpp>

#define LAB_FIELDS(Record, ...)                  \
  template <class Archive>                       \
  void serialize(Archive &archive, Record &it) { \
    archive(__VA_ARGS__);                        \
  }
