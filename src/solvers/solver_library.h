// Solver libraries: found, opened and bound at run time, and open until the process ends.
//
// Every family has one table of functions, made at its first use and constant from then on. A
// function pointer is null if the library lacks an optional symbol; whoever needs it says so.
#pragma once

#include <string>

#include "zorv/solver_abi.h"

namespace zorv {

// An opened library. Lookups return null for what is not there.
class SolverLibrary {
 public:
  // Aborts if the file cannot be opened. `solver_name` begins all messages.
  SolverLibrary(const char* solver_name, const std::string& path);

  template <typename Function>
  void find(Function*& function, const std::string& symbol) const {
    function = reinterpret_cast<Function*>(lookup(symbol));
  }
  // Aborts if the symbol is missing.
  template <typename Function>
  void require(Function*& function, const std::string& symbol) const {
    find(function, symbol);
    if (function == nullptr) refuse_missing(symbol);
  }

 private:
  void* lookup(const std::string& symbol) const;
  [[noreturn]] void refuse_missing(const std::string& symbol) const;

  const char* solver_name_;
  void* handle_;
};

// The folder of easy and klb5 libraries, ending in a slash: ZORV_LIB_DIR if that is set and not
// empty, otherwise where this library lies.
std::string solver_lib_dir();
// The folder that this library lies in, ending in a slash.
std::string own_lib_dir();

// What all engines for binary models have in common. The same names in all families.
struct ConstraintFunctions {
  decltype(&zorv_easy_solver_add_constraint) add_constraint;
  decltype(&zorv_easy_solver_add_constraint_nl) add_constraint_nl;
  decltype(&zorv_easy_solver_add_constraint_set) add_constraint_set;
  decltype(&zorv_easy_solver_set_cons_shape) set_cons_shape;
  decltype(&zorv_easy_solver_set_remainder) set_remainder;
};

struct EasySolverTable {
  decltype(&zorv_easy_solver_create) create;
  decltype(&zorv_easy_solver_create_int) create_int;
  decltype(&zorv_easy_solver_search_int) search_int;
  decltype(&zorv_easy_solver_destroy) destroy;
  decltype(&zorv_easy_solver_search) search;
  decltype(&zorv_easy_solver_sol_list_count) sol_list_count;
  decltype(&zorv_easy_solver_sol_list_get) sol_list_get;
  decltype(&zorv_easy_solver_sol_list_destroy) sol_list_destroy;
  decltype(&zorv_easy_solver_register_callback) register_callback;
  decltype(&zorv_easy_solver_get_info) get_info;
  decltype(&zorv_easy_solver_free_info) free_info;
  ConstraintFunctions constraints;
};

struct ExhaustiveTable {
  decltype(&zorv_exhaustive_create) create;
  decltype(&zorv_exhaustive_destroy) destroy;
  decltype(&zorv_exhaustive_search) search;
  decltype(&zorv_exhaustive_sol_list_count) sol_list_count;
  decltype(&zorv_exhaustive_sol_list_get) sol_list_get;
  decltype(&zorv_exhaustive_sol_list_destroy) sol_list_destroy;
  decltype(&zorv_exhaustive_register_callback) register_callback;
  decltype(&zorv_exhaustive_get_info) get_info;
  decltype(&zorv_exhaustive_free_info) free_info;
  ConstraintFunctions constraints;
};

// What the two binary engines of the klb5 family have in common.
struct Klb5Engine {
  decltype(&zorv_klb5_solver_destroy) destroy;
  decltype(&zorv_klb5_solver_search) search;
  decltype(&zorv_klb5_register_callback) register_callback;
  decltype(&zorv_klb5_sol_list_count) sol_list_count;
  decltype(&zorv_klb5_sol_list_get) sol_list_get;
  decltype(&zorv_klb5_sol_list_destroy) sol_list_destroy;
  decltype(&zorv_klb5_hint_solution) hint_solution;
  decltype(&zorv_klb5_solver_set_external_stop) set_external_stop;
  ConstraintFunctions constraints;
};

// The GPU rounds beside the native integer search. `create` is null unless all of them but
// `set_cons_shape` are there.
struct Klb5Rounds {
  decltype(&zorv_klb5_int_create) create;
  decltype(&zorv_klb5_int_add_cons) add_cons;
  decltype(&zorv_klb5_int_round2) round2;
  decltype(&zorv_klb5_int_hint) hint;
  decltype(&zorv_klb5_int_destroy) destroy;
  decltype(&zorv_klb5_int_set_cons_shape) set_cons_shape;
};

struct Klb5Table {
  decltype(&zorv_klb5_gpu_device_count) gpu_device_count;
  decltype(&zorv_klb5_cpu_solver_create) cpu_create;
  Klb5Engine cpu;
  decltype(&zorv_klb5_cpu_solver_create_int) cpu_create_int;
  decltype(&zorv_klb5_cpu_solver_search_int) cpu_search_int;
  decltype(&zorv_klb5_cpu_register_callback_iv) cpu_register_callback_iv;
  decltype(&zorv_klb5_cpu_hint_iv) cpu_hint_iv;
  decltype(&zorv_klb5_solver_create) gpu_create;  // null if there is no GPU engine
  Klb5Engine gpu;
  Klb5Rounds rounds;
};

// Each opens its library when it is first called, and aborts if that cannot be used.
const EasySolverTable& easy_dispatch();
const ExhaustiveTable& exhaustive_dispatch();
const Klb5Table& klb5_dispatch();

}  // namespace zorv
