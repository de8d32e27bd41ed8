// What must hold of a source, wherever it is given.
#pragma once

#include "sonic/source.h"
#include "texts.h"

inline void look_at_source(const std::string &text) {
  const lab::ParsedSource parsed = lab::parse_source(text, 0);
  const lab::Source &source = parsed.source;
  check_errors(parsed.errors, "");
  must(lab::printable(source.shown) == source.shown, "a source can be shown");
  const std::size_t login = std::min(source.shown.find("://"), source.shown.size());
  const std::string host =
      source.shown.substr(login, source.shown.find_first_of("/?", login + 3) - login);
  must(source.password.empty() || host.find(':' + source.password + '@') == std::string::npos,
       "a password is not shown");
  must(!parsed.errors.empty() || !source.place.empty() || text.empty(), "a source has a place");
}
