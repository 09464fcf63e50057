// The command line of the program.
#pragma once

#include <string>
#include <vector>

#include "search.h"

struct Options {
  std::string file;
  std::string svg_file;  // empty for none
  bool help = false;
  SearchOptions search;
};

extern const char* const kHelp;

// Throws UserError on anything that it does not understand.
Options parse_options(const std::vector<std::string>& arguments);
