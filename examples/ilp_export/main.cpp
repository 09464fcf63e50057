// Hands a problem that was stated with zorv to another solver, and reads back what that found.
#include <charconv>
#include <fstream>
#include <iostream>

#include "fair.h"
#include "fair_model.h"
#include "lp_writer.h"
#include "mps_writer.h"
#include "solution_reader.h"
#include "user_error.h"

namespace {

enum ExitCode { kDone = 0, kNothing = 1, kMistake = 2 };

const char* const kHelp =
    R"(usage: ilp_export write FAIR MODEL.mps MODEL.lp [--bonus ITEM ITEM N]
       ilp_export read FAIR SOLUTION

Decides what to take to a craft fair. `write` exports the problem in FAIR as an
integer linear program, twice: in free MPS and in LP format. `read` takes the
plain solution file of glpsol and prints the plan in it:

  glpsol --freemps MODEL.mps -w SOLUTION
  glpsol --lp MODEL.lp -w SOLUTION

--bonus adds a profit N for two items together. A product in the objective is
no integer linear program: the library says so and nothing is written.

Exit status: 0 if all went well, 1 if the problem cannot be exported or the
solver found no plan, 2 for a mistake on the command line or in a file.
)";

using Words = std::vector<std::string>;

void write_file(const std::string& path, void (*write)(const zorv::Ilp&, std::ostream&),
                const zorv::Ilp& ilp) {
  std::ofstream file(path);
  write(ilp, file);
  file.close();
  if (!file) throw UserError("cannot write '" + path + "'");
}

// The words "--bonus ITEM ITEM N".
Bonus read_bonus(const Words& words, const Fair& fair) {
  Bonus bonus = {find_item(fair, words[1]), find_item(fair, words[2]), 0};
  const char* end = words[3].data() + words[3].size();
  const auto [stop, error] = std::from_chars(words[3].data(), end, bonus.value);
  if (error != std::errc() || stop != end || bonus.a == bonus.b) {
    throw UserError("a bonus needs two items and a whole number");
  }
  return bonus;
}

ExitCode write(const FairModel& fair, const std::string& mps, const std::string& lp) try {
  const zorv::Ilp ilp(fair.model());
  write_file(mps, write_mps, ilp);
  write_file(lp, write_lp, ilp);
  std::cout << ilp.column_count() << " columns, " << ilp.row_count() << " rows\n";
  return kDone;
} catch (const std::domain_error& not_linear) {
  std::cout << not_linear.what() << "\n";
  return kNothing;
}

ExitCode read(const FairModel& fair, const std::string& solution) {
  const zorv::Ilp ilp(fair.model());
  const std::optional<ColumnValues> values = read_solution(solution, ilp.column_count());
  if (!values) {
    std::cout << "the solver found no plan\n";
    return kNothing;
  }
  std::cout << fair.describe(decode(ilp, *values));
  return kDone;
}

ExitCode run(const Words& words) {
  const bool has_bonus = words.size() == 8 && words[4] == "--bonus";
  if (words.size() == 1 && words[0] == "--help") {
    std::cout << kHelp;
  } else if (words.size() == 3 && words[0] == "read") {
    const Fair fair = read_fair(words[1]);
    return read(FairModel(fair, std::nullopt), words[2]);
  } else if ((words.size() == 4 || has_bonus) && words[0] == "write") {
    const Fair fair = read_fair(words[1]);
    std::optional<Bonus> bonus;
    if (has_bonus) bonus = read_bonus({words.begin() + 4, words.end()}, fair);
    return write(FairModel(fair, bonus), words[2], words[3]);
  } else {
    throw UserError("not understood (--help tells more)");
  }
  return kDone;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run({argv + 1, argv + argc});
  } catch (const UserError& error) {
    std::cerr << "ilp_export: " << error.what() << std::endl;
    return kMistake;
  }
}
