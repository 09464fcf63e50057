// What the user has to mend, in one line.
#pragma once

#include <stdexcept>

struct UserError : std::runtime_error {
  using std::runtime_error::runtime_error;
};
