#include "solvers/solver_library.h"

#include <dlfcn.h>
#include <elf.h>

#include <cstdlib>
#include <cstring>
#include <fstream>

#include "core/fatal.h"
#include "core/solver_type.h"
#include "core/var_registry.h"
#include "zorv/zorv.h"

namespace zorv {

namespace {

// Whether a part of the library that is to be mapped lies beyond the end of the file, as after a
// copy that broke off. The loader does not look, and would end the process by SIGBUS.
bool is_cut_off(const std::string& path) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  const auto size = static_cast<uint64_t>(file.tellg());
  const auto read_at = [&file](uint64_t offset, auto& record) {
    file.seekg(static_cast<std::streamoff>(offset));
    return static_cast<bool>(file.read(reinterpret_cast<char*>(&record), sizeof(record)));
  };
  Elf64_Ehdr header;
  if (!read_at(0, header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) return false;
  for (uint64_t i = 0; i < header.e_phnum; ++i) {
    Elf64_Phdr part;
    if (!read_at(header.e_phoff + i * header.e_phentsize, part)) return true;
    if (part.p_type == PT_LOAD && part.p_offset + part.p_filesz > size) return true;
  }
  return false;
}

void find_constraints(const SolverLibrary& library, const std::string& prefix,
                      ConstraintFunctions& functions) {
  library.find(functions.add_constraint, prefix + "add_constraint");
  library.find(functions.add_constraint_nl, prefix + "add_constraint_nl");
  library.find(functions.add_constraint_set, prefix + "add_constraint_set");
  library.find(functions.set_cons_shape, prefix + "set_cons_shape");
  library.find(functions.set_remainder, prefix + "set_remainder");
}

// What the tables of the first two families have in common.
template <typename Table>
void bind_binary_engine(const SolverLibrary& library, const std::string& prefix, Table& table) {
  library.require(table.create, prefix + "create");
  library.require(table.destroy, prefix + "destroy");
  library.require(table.search, prefix + "search");
  library.require(table.sol_list_count, prefix + "sol_list_count");
  library.require(table.sol_list_get, prefix + "sol_list_get");
  library.require(table.sol_list_destroy, prefix + "sol_list_destroy");
  library.require(table.register_callback, prefix + "register_callback");
  library.find(table.get_info, prefix + "get_info");
  library.find(table.free_info, prefix + "free_info");
  find_constraints(library, prefix, table.constraints);
}

EasySolverTable load_easy() {
  const SolverLibrary library("EasySolver", solver_lib_dir() + "easysolver_" + kSolverType + ".so");
  EasySolverTable table;
  bind_binary_engine(library, "zorv_easy_solver_", table);
  library.find(table.create_int, "zorv_easy_solver_create_int");
  library.find(table.search_int, "zorv_easy_solver_search_int");
  return table;
}

// ZORV_LIB_DIR has no say here, on purpose: an enumeration proves what it finds, so it stays the
// one that was installed with this library.
ExhaustiveTable load_exhaustive() {
  const SolverLibrary library("ExhaustiveSolver", own_lib_dir() + "exhaustive_cppint.so");
  ExhaustiveTable table;
  bind_binary_engine(library, "zorv_exhaustive_", table);
  return table;
}

void find_gpu_engine(const SolverLibrary& library, Klb5Table& table) {
  library.find(table.gpu_create, "zorv_klb5_solver_create");
  if (table.gpu_create == nullptr) return;
  library.find(table.gpu.destroy, "zorv_klb5_solver_destroy");
  library.find(table.gpu.search, "zorv_klb5_solver_search");
  library.find(table.gpu.register_callback, "zorv_klb5_register_callback");
  library.find(table.gpu.sol_list_count, "zorv_klb5_sol_list_count");
  library.find(table.gpu.sol_list_get, "zorv_klb5_sol_list_get");
  library.find(table.gpu.sol_list_destroy, "zorv_klb5_sol_list_destroy");
  library.find(table.gpu.hint_solution, "zorv_klb5_hint_solution");
  library.find(table.gpu.set_external_stop, "zorv_klb5_solver_set_external_stop");
}

void find_rounds(const SolverLibrary& library, Klb5Rounds& rounds) {
  library.find(rounds.create, "zorv_klb5_int_create");
  library.find(rounds.add_cons, "zorv_klb5_int_add_cons");
  library.find(rounds.round2, "zorv_klb5_int_round2");
  library.find(rounds.hint, "zorv_klb5_int_hint");
  library.find(rounds.destroy, "zorv_klb5_int_destroy");
  library.find(rounds.set_cons_shape, "zorv_klb5_int_set_cons_shape");
  const bool is_complete = rounds.add_cons != nullptr && rounds.round2 != nullptr &&
                           rounds.hint != nullptr && rounds.destroy != nullptr;
  if (!is_complete) rounds.create = nullptr;
}

Klb5Table load_klb5() {
  const SolverLibrary library("KLB5Solver", solver_lib_dir() + "klb5_cppint.so");
  Klb5Table table = {};
  library.require(table.gpu_device_count, "zorv_klb5_gpu_device_count");
  library.require(table.cpu_create, "zorv_klb5_cpu_solver_create");
  library.find(table.cpu_create_int, "zorv_klb5_cpu_solver_create_int");
  library.find(table.cpu_search_int, "zorv_klb5_cpu_solver_search_int");
  library.find(table.cpu_register_callback_iv, "zorv_klb5_cpu_register_callback_iv");
  library.find(table.cpu_hint_iv, "zorv_klb5_cpu_hint_iv");
  find_constraints(library, "zorv_klb5_cpu_", table.cpu.constraints);
  find_constraints(library, "zorv_klb5_", table.gpu.constraints);
  library.require(table.cpu.destroy, "zorv_klb5_cpu_solver_destroy");
  library.require(table.cpu.search, "zorv_klb5_cpu_solver_search");
  library.require(table.cpu.register_callback, "zorv_klb5_cpu_register_callback");
  library.require(table.cpu.sol_list_count, "zorv_klb5_cpu_sol_list_count");
  library.require(table.cpu.sol_list_get, "zorv_klb5_cpu_sol_list_get");
  library.require(table.cpu.sol_list_destroy, "zorv_klb5_cpu_sol_list_destroy");
  library.find(table.cpu.hint_solution, "zorv_klb5_cpu_hint_solution");
  library.find(table.cpu.set_external_stop, "zorv_klb5_cpu_solver_set_external_stop");
  find_gpu_engine(library, table);
  find_rounds(library, table.rounds);
  return table;
}

}  // namespace

SolverLibrary::SolverLibrary(const char* solver_name, const std::string& path)
    : solver_name_(solver_name), handle_(nullptr) {
  if (is_cut_off(path)) fatal(solver_name, ": failed to load ", path, ": file too short");
  handle_ = dlopen(path.c_str(), RTLD_NOW);
  if (handle_ == nullptr) fatal(solver_name, ": failed to load ", path, ": ", dlerror());
}

void* SolverLibrary::lookup(const std::string& symbol) const {
  return dlsym(handle_, symbol.c_str());
}

void SolverLibrary::refuse_missing(const std::string& symbol) const {
  fatal(solver_name_, ": symbol not found: ", symbol);
}

std::string solver_lib_dir() {
  const char* configured = std::getenv("ZORV_LIB_DIR");
  if (configured == nullptr || *configured == '\0') return own_lib_dir();
  std::string folder = configured;
  if (folder.back() != '/') folder += '/';
  return folder;
}

std::string own_lib_dir() {
  Dl_info info;
  if (dladdr(reinterpret_cast<const void*>(&zorv_var_reset), &info) == 0 ||
      info.dli_fname == nullptr) {
    return "lib/";
  }
  const std::string file = info.dli_fname;
  const size_t slash = file.rfind('/');
  return slash == std::string::npos ? "./" : file.substr(0, slash + 1);
}

const EasySolverTable& easy_dispatch() {
  static const EasySolverTable table = load_easy();
  return table;
}

const ExhaustiveTable& exhaustive_dispatch() {
  static const ExhaustiveTable table = load_exhaustive();
  return table;
}

const Klb5Table& klb5_dispatch() {
  static const Klb5Table table = load_klb5();
  return table;
}

}  // namespace zorv
