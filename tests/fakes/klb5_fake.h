// How a test steers the fake of the klb5 family. Its export klb5_fake() hands out the one record,
// which all functions of the fake read at each call.
#pragma once

#include <functional>
#include <vector>

#include "fakes/recorder.h"

namespace fake {

struct Klb5Answer {
  Coeff energy;
  std::vector<uint64_t> bits;
  double tts;
};

// A search of a library's engine in progress.
struct Klb5Search {
  void* wrapper;
  const uint8_t* stop;  // null if nobody set it
  SolverCallback callback;
  SolverCallbackIv callback_iv;
};

// A batch of candidates as it came in. State s has the words from s * words on, and so forth.
struct Klb5Batch {
  uint64_t number;  // from 1 on
  uint32_t count;
  const uint64_t* bits;
  const Coeff* ints;
};

struct Klb5Fake {
  bool is_quiet = false;  // writes no lines
  int32_t devices = 1;

  // The engines: the best solution, the list of the others, null if that is empty, and the
  // integers of the best.
  std::vector<Klb5Answer> answers = {{0, {}, 0.0}};
  std::vector<Coeff> ints;
  bool has_facts = false;
  std::function<void(const Klb5Search&)> during_search;

  // The rounds, which improve every state, if they do, and mark every second one. A status other
  // than 0 comes from the test.
  std::function<int32_t(const Klb5Batch&)> before_round;
  bool improves = true;
  std::vector<uint64_t> begins_at;  // bits to improve in place of those that come in; may be empty
  Coeff energy_error = 0;           // added to what the rounds report
  Coeff value_error = 0;  // added to the first integer variable, with the energy that results
};

}  // namespace fake

extern "C" fake::Klb5Fake* klb5_fake();
