// How often and how fast EasySolver comes to the best known values of public instances, which it
// reads from a folder of files:
//
//   instances_bench FOLDER [--seeds 10] [--threads 1] [--limit SECONDS] [NAME ...]
//
// Only instances with one of the names in theirs are run, of those that the folder has. Three small
// ones are in bench/instances. The solver library is looked for where the environment variable
// ZORV_LIB_DIR says. A line tells the instance, its best known value, how
// many runs reached it within the time limit, the median time to it, the median of the best values
// of all runs, and millions a second of flips made and of flips tried by sweeps.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

#include "zorv/zorv.h"

namespace {

using Literals = std::vector<uint32_t>;

// A number as the library takes it.
struct Int {
  explicit Int(int64_t value)
      : limb(static_cast<uint64_t>(std::abs(value))), sign(value < 0 ? -1 : value > 0) {}
  CoeffWire wire() { return {sign, 1, &limb}; }
  uint64_t limb;
  int32_t sign;
};

int64_t value_of(CoeffWire& w) {
  const int64_t value = w.nlimbs == 0 ? 0 : static_cast<int64_t>(w.limbs[0]);
  std::free(w.limbs);
  return w.sign < 0 ? -value : value;
}

// Terms on their way into an expression.
struct Terms {
  std::vector<Int> coeffs;
  std::vector<uint32_t> degrees, literals;

  void add(int64_t coeff, const Literals& factors) {
    coeffs.emplace_back(coeff);
    degrees.push_back(static_cast<uint32_t>(factors.size()));
    literals.insert(literals.end(), factors.begin(), factors.end());
  }
  zorv_expr* expr(int64_t constant = 0) {
    std::vector<CoeffWire> wires;
    for (Int& c : coeffs) wires.push_back(c.wire());
    Int k(constant);
    const CoeffWire wire = k.wire();
    return zorv_expr_create_from_bulk(&wire, wires.size(), wires.data(), degrees.data(),
                                      literals.data());
  }
};

// An energy to be made small: objective plus weighted constraints.
struct Problem {
  Terms objective;
  struct Bound {
    Terms body;
    int64_t lo, hi, weight;
  };
  std::vector<Bound> bounds;
  bool as_squares = false;  // (body - lo)^2 in place of a declared constraint

  zorv_model* model();
};

zorv_model* Problem::model() {
  zorv_expr* e = objective.expr();
  for (Bound& b : bounds) {
    zorv_expr* body = b.body.expr(as_squares ? -b.lo : 0);
    Int lo(b.lo), hi(b.hi), weight(b.weight);
    const CoeffWire ends[] = {lo.wire(), hi.wire(), weight.wire()};
    zorv_expr* c =
        as_squares ? zorv_expr_mul_expr(body, body) : zorv_cons_between(body, &ends[0], &ends[1]);
    zorv_expr_imul_int(c, &ends[2]);
    zorv_expr_iadd_expr(e, c);
    zorv_expr_destroy(c);
    zorv_expr_destroy(body);
  }
  zorv_expr* simple = zorv_expr_simplify_as_binary(e);
  zorv_model* m = zorv_model_create(simple);
  zorv_expr_destroy(simple);
  zorv_expr_destroy(e);
  return m;
}

Literals variables(uint64_t n) {
  const uint32_t first = zorv_new_var_array("x", &n, 1);
  Literals all(n);
  std::iota(all.begin(), all.end(), first);
  return all;
}

int64_t next(std::istream& in) {
  int64_t value;
  if (!(in >> value)) throw std::runtime_error("a number is missing");
  return value;
}
std::vector<int64_t> next(std::istream& in, int64_t count) {
  std::vector<int64_t> values;
  while (count-- > 0) values.push_back(next(in));
  return values;
}

Problem max_cut(std::istream& in) {
  const Literals x = variables(next(in));
  int64_t edges = next(in);
  in.ignore(100, '\n');  // a remark
  Problem p;
  for (; edges > 0; --edges) {
    const uint32_t i = x[next(in) - 1], j = x[next(in) - 1];
    const int64_t w = next(in);
    p.objective.add(2 * w, {i, j});
    p.objective.add(-w, {i});
    p.objective.add(-w, {j});
  }
  return p;
}

Problem qubo(std::istream& in) {
  const Literals x = variables(next(in));
  Problem p;
  for (int64_t m = next(in); m > 0; --m) {
    const uint32_t i = x[next(in) - 1], j = x[next(in) - 1];
    const int64_t q = next(in);
    i == j ? p.objective.add(q, {i}) : p.objective.add(2 * q, {i, j});
  }
  return p;
}

Problem assignment(std::istream& in, bool as_squares) {
  const int64_t n = next(in);
  next(in);
  const auto a = next(in, n * n), b = next(in, n * n);
  const Literals x = variables(n * n);
  Problem p;
  p.as_squares = as_squares;
  int64_t most = 0;
  for (int64_t i = 0; i < n; ++i) {
    most = std::max(most, std::accumulate(&a[i * n], &a[i * n] + n, int64_t{0}));
    for (int64_t j = 0; j < n; ++j) {
      for (int64_t k = 0; k < n * n && a[i * n + j] != 0; ++k) {
        const uint32_t first = x[i * n + k / n], second = x[j * n + k % n];
        if (b[k] == 0 || (i != j) != (k / n != k % n)) continue;
        first == second ? p.objective.add(a[i * n + j] * b[k], {first})
                        : p.objective.add(a[i * n + j] * b[k], {first, second});
      }
    }
  }
  const int64_t weight = most * *std::max_element(b.begin(), b.end());
  for (int64_t i = 0; i < n; ++i) {
    Terms row, column;
    for (int64_t k = 0; k < n; ++k) {
      row.add(1, {x[i * n + k]});
      column.add(1, {x[k * n + i]});
    }
    p.bounds.push_back({row, 1, 1, weight});
    p.bounds.push_back({column, 1, 1, weight});
  }
  return p;
}

Problem knapsacks(std::istream& in) {
  const int64_t n = next(in), m = next(in);
  next(in);
  const Literals x = variables(n);
  Problem p;
  const auto profits = next(in, n), weights = next(in, n * m), capacities = next(in, m);
  for (int64_t i = 0; i < n; ++i) p.objective.add(-profits[i], {x[i]});
  for (int64_t k = 0; k < m; ++k) {
    Terms body;
    for (int64_t i = 0; i < n; ++i) body.add(weights[k * n + i], {x[i]});
    p.bounds.push_back({body, 0, capacities[k], 1000});
  }
  return p;
}

Problem quadratic_knapsack(std::istream& in) {
  std::string name;
  in >> name;
  const int64_t n = next(in);
  const Literals x = variables(n);
  Problem p;
  for (int64_t i = 0; i < n; ++i) p.objective.add(-next(in), {x[i]});
  for (int64_t i = 0; i < n; ++i) {
    for (int64_t j = i + 1; j < n; ++j) {
      if (const int64_t profit = next(in)) p.objective.add(-profit, {x[i], x[j]});
    }
  }
  next(in);
  const int64_t capacity = next(in);
  Terms body;
  for (int64_t i = 0; i < n; ++i) body.add(next(in), {x[i]});
  p.bounds.push_back({body, 0, capacity, 1000});
  return p;
}

// The sum of squared correlations of a sequence of signs 1 - 2x, multiplied out by the library.
zorv_model* low_autocorrelation(int64_t n) {
  const Literals x = variables(n);
  zorv_expr* energy = Terms().expr();
  for (int64_t k = 1; k < n; ++k) {
    Terms correlation;
    for (int64_t i = 0; i + k < n; ++i) {
      correlation.add(-2, {x[i]});
      correlation.add(-2, {x[i + k]});
      correlation.add(4, {x[i], x[i + k]});
    }
    zorv_expr* c = correlation.expr(n - k);
    zorv_expr* square = zorv_expr_mul_expr(c, c);
    zorv_expr_iadd_expr(energy, square);
    zorv_expr_destroy(square);
    zorv_expr_destroy(c);
  }
  zorv_expr* simple = zorv_expr_simplify_as_binary(energy);
  zorv_model* m = zorv_model_create(simple);
  zorv_expr_destroy(simple);
  zorv_expr_destroy(energy);
  return m;
}

// A matrix of n x n uniform coefficients from -100 to 100, all of them there.
Problem dense(int64_t n) {
  const Literals x = variables(n);
  Problem p;
  uint64_t draw = 1;
  for (int64_t i = 0; i < n; ++i) {
    for (int64_t j = i; j < n; ++j) {
      draw = draw * 6364136223846793005u + 1442695040888963407u;
      const int64_t q = static_cast<int64_t>((draw >> 33) % 201) - 100;
      i == j ? p.objective.add(q, {x[i]}) : p.objective.add(q, {x[i], x[j]});
    }
  }
  return p;
}

struct Instance {
  const char* name;
  const char* file;  // null for one that is generated
  int64_t best;      // as published; energies of maximisation problems are its negative
  bool is_maximum;
  double limit;
  std::function<zorv_model*(std::istream&)> read;
};

template <typename Read, typename... Args>
std::function<zorv_model*(std::istream&)> by(Read read, Args... args) {
  return [=](std::istream& in) { return read(in, args...).model(); };
}
std::function<zorv_model*(std::istream&)> sequence(int64_t n) {
  return [=](std::istream&) { return low_autocorrelation(n); };
}

const std::vector<Instance> kInstances = {
    {"cut24", "maxcut/cut24.txt", 94, true, 2, by(max_cut)},
    {"dense24", "qubo/dense24.sparse", -4258, false, 2, by(qubo)},
    {"walk5", "qap/walk5.dat", 275, false, 2, by(assignment, false)},
    {"G1", "maxcut/G1.txt", 11624, true, 10, by(max_cut)},
    {"G14", "maxcut/G14.txt", 3064, true, 20, by(max_cut)},
    {"G22", "maxcut/G22.txt", 13359, true, 20, by(max_cut)},
    {"G43", "maxcut/G43.txt", 6660, true, 10, by(max_cut)},
    {"G50", "maxcut/G50.txt", 5880, true, 10, by(max_cut)},
    {"G55", "maxcut/G55.txt", 10299, true, 10, by(max_cut)},
    {"bqp50-1", "qubo/bqp50-1.sparse", -2098, false, 2, by(qubo)},
    {"bqp100-1", "qubo/bqp100-1.sparse", -7970, false, 2, by(qubo)},
    {"bqp250-1", "qubo/bqp250-1.sparse", -45607, false, 2, by(qubo)},
    {"bqp500-1", "qubo/bqp500-1.sparse", -116586, false, 2, by(qubo)},
    {"bqp1000-2", "qubo/bqp1000-2.sparse", -354932, false, 5, by(qubo)},
    {"gka6a", "qubo/gka6a.sparse", -3980, false, 2, by(qubo)},
    {"gka7b", "qubo/gka7b.sparse", -160, false, 2, by(qubo)},
    {"gka1d", "qubo/gka1d.sparse", -6333, false, 2, by(qubo)},
    {"gka1f", "qubo/gka1f.sparse", -61194, false, 2, by(qubo)},
    {"dense2500", nullptr, -2132268, false, 10, [](std::istream&) { return dense(2500).model(); }},
    {"labs30", nullptr, 59, false, 5, sequence(30)},
    {"labs40", nullptr, 108, false, 10, sequence(40)},
    {"labs50", nullptr, 153, false, 60, sequence(50)},
    {"nug12", "qap/nug12.dat", 578, false, 5, by(assignment, false)},
    {"nug12-squares", "qap/nug12.dat", 578, false, 5, by(assignment, true)},
    {"tai12a", "qap/tai12a.dat", 224416, false, 5, by(assignment, false)},
    {"tai12a-squares", "qap/tai12a.dat", 224416, false, 5, by(assignment, true)},
    {"chr12a", "qap/chr12a.dat", 9552, false, 5, by(assignment, false)},
    {"esc16a", "qap/esc16a.dat", 68, false, 5, by(assignment, false)},
    {"tai20a", "qap/tai20a.dat", 703482, false, 20, by(assignment, false)},
    {"tai20a-squares", "qap/tai20a.dat", 703482, false, 20, by(assignment, true)},
    {"nug30", "qap/nug30.dat", 6124, false, 20, by(assignment, false)},
    {"mkp5x100", "mkp/OR5x100-0.25_1.dat", 24381, true, 10, by(knapsacks)},
    {"mkp10x250", "mkp/OR10x250-0.50_1.dat", 110913, true, 10, by(knapsacks)},
    {"mkp30x100", "mkp/OR30x100-0.25_1.dat", 21946, true, 10, by(knapsacks)},
    {"qkp100", "qkp/jeu_100_25_1.txt", 18558, true, 10, by(quadratic_knapsack)},
};

struct Options {
  std::string folder, threads = "1";
  uint64_t seeds = 10;
  double limit = 0;  // 0: the instance's own
  std::vector<std::string> names;

  bool wants(const std::string& name) const {
    return names.empty() || std::any_of(names.begin(), names.end(), [&](const auto& part) {
             return name.find(part) != std::string::npos;
           });
  }
};

Options read_options(int argc, char** argv) {
  if (argc < 2) throw std::runtime_error("which folder?");
  Options options;
  options.folder = argv[1];
  for (int i = 2; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg.rfind("--", 0) == 0 && i + 1 == argc) throw std::runtime_error(arg + " what?");
    if (arg == "--seeds") {
      options.seeds = std::stoull(argv[++i]);
    } else if (arg == "--threads") {
      options.threads = argv[++i];
    } else if (arg == "--limit") {
      options.limit = std::stod(argv[++i]);
    } else {
      options.names.push_back(arg);
    }
  }
  return options;
}

struct Run {
  int64_t energy;
  double seconds, run_time;
  double flips, tries;
};

Run run(zorv_easy_wrapper* solver, double variables, const Instance& instance,
        const Options& options, uint64_t seed) {
  const int64_t target = instance.is_maximum ? -instance.best : instance.best;
  const std::string texts[] = {std::to_string(options.limit > 0 ? options.limit : instance.limit),
                               std::to_string(target), std::to_string(seed)};
  const ParamPair params[] = {{"time_limit", texts[0].c_str()},
                              {"target_energy", texts[1].c_str()},
                              {"seed", texts[2].c_str()},
                              {"threads", options.threads.c_str()},
                              {nullptr, nullptr}};
  zorv_result* r = zorv_easy_solver_wrapper_search(solver, params, nullptr);
  CoeffWire energy = {0, 0, nullptr};
  zorv_easy_solver_result_energy(r, &energy);
  Run run = {value_of(energy), zorv_easy_solver_result_tts(r), 0, 0, 0};
  for (uint64_t i = 0; i < zorv_easy_solver_result_info_count(r); ++i) {
    const std::string key = zorv_easy_solver_result_info_key(r, i);
    const char* value = zorv_easy_solver_result_info_value(r, i);
    if (key == "flips") run.flips = std::strtod(value, nullptr);
    if (key == "sweeps") run.tries = std::strtod(value, nullptr) * variables;
    if (key == "run_time") run.run_time = std::strtod(value, nullptr);
  }
  zorv_easy_solver_result_destroy(r);
  return run;
}

void measure(const Instance& instance, const Options& options) {
  std::ifstream in;
  if (instance.file != nullptr) {
    in.open(options.folder + "/" + instance.file);
    if (!in) return;
  }
  zorv_model* model = instance.read(in);
  const auto variables = static_cast<double>(zorv_model_var_count(model));
  zorv_easy_wrapper* solver = zorv_easy_solver_wrapper_create(model);
  std::vector<double> times;
  std::vector<int64_t> energies;
  double flips = 0, tries = 0, seconds = 0;
  uint64_t reached = 0;
  for (uint64_t seed = 1; seed <= options.seeds; ++seed) {
    const Run r = run(solver, variables, instance, options, seed);
    const bool is_there = r.energy <= (instance.is_maximum ? -instance.best : instance.best);
    reached += is_there;
    times.push_back(is_there ? r.seconds : HUGE_VAL);
    energies.push_back(instance.is_maximum ? -r.energy : r.energy);
    flips += r.flips;
    tries += r.tries;
    seconds += r.run_time;
  }
  std::sort(times.begin(), times.end());
  std::sort(energies.begin(), energies.end());
  std::printf(
      "%-15s best known %9ld  reached %2lu/%-2lu  median %8.4f s  worst %8.4f s  value %9ld  %7.2f "
      "M flips/s  %6.1f M tries/s\n",
      instance.name, instance.best, reached, options.seeds, times[times.size() / 2], times.back(),
      energies[energies.size() / 2], flips / seconds / 1e6, tries / seconds / 1e6);
  std::fflush(stdout);
  zorv_easy_solver_wrapper_destroy(solver);
  zorv_model_destroy(model);
}

}  // namespace

int main(int argc, char** argv) try {
  const Options options = read_options(argc, argv);
  for (const Instance& instance : kInstances) {
    if (options.wants(instance.name)) measure(instance, options);
  }
} catch (const std::exception& e) {
  std::fprintf(stderr, "%s\n", e.what());
  return 1;
}
