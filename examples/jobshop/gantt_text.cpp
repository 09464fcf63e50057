#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

#include "gantt.h"

namespace {

constexpr char kIdle = '.';
constexpr int64_t kColumnsPerAxisMark = 8;

// Background colours of the usual 256, light enough for black letters.
constexpr int kColours[] = {110, 150, 180, 174, 139, 223, 116, 186, 216, 182, 153, 114};

// A row of cells, each the number of a job plus one, or 0.
using Row = std::vector<std::size_t>;

std::string paint(const Row& row, bool colour) {
  std::string text;
  for (std::size_t cell : row) {
    if (cell != 0 && colour) {
      const int code = kColours[(cell - 1) % std::size(kColours)];
      text += "\033[30;48;5;" + std::to_string(code) + "m";
    }
    text += cell == 0 ? kIdle : job_mark(cell - 1);
    if (cell != 0 && colour) text += "\033[0m";
  }
  return text;
}

}  // namespace

char job_mark(std::size_t job) {
  constexpr std::string_view marks =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
  return marks[job % marks.size()];
}

int64_t axis_step(int64_t length, int64_t marks) {
  for (int64_t power = 1;; power *= 10) {
    for (int64_t step : {power, 2 * power, 5 * power}) {
      if (length / step < marks) return step;
    }
  }
}

std::string gantt_text(const Instance& instance, const Schedule& schedule, std::size_t columns,
                       bool colour) {
  const std::string title = "machine ";
  const std::size_t label_size = title.size() + std::to_string(instance.machines - 1).size() + 2;
  // A few cells at least, however narrow the terminal is; one for a unit of time at most.
  const auto room = static_cast<int64_t>(std::max(columns, label_size + 20) - label_size);
  const int64_t length = std::max<int64_t>(schedule.makespan, 1);
  const int64_t cells = std::min(room, length);
  const auto cell_at = [&](int64_t time) {
    return static_cast<std::size_t>(time * cells / length);
  };

  std::vector<Row> rows(instance.machines, Row(static_cast<std::size_t>(cells)));
  for (std::size_t job = 0; job < instance.jobs.size(); ++job) {
    for (std::size_t k = 0; k < instance.jobs[job].size(); ++k) {
      const auto& [machine, duration] = instance.jobs[job][k];
      const int64_t start = schedule.starts[job][k];
      const std::size_t end = cell_at(start + duration);
      for (std::size_t i = cell_at(start); i < end; ++i) rows[machine][i] = job + 1;
    }
  }

  std::string text;
  for (std::size_t machine = 0; machine < rows.size(); ++machine) {
    std::string label = title + std::to_string(machine);
    label.resize(label_size, ' ');
    text += label + paint(rows[machine], colour) + "\n";
  }
  std::string axis;
  const int64_t step = axis_step(length, std::max<int64_t>(cells / kColumnsPerAxisMark, 1));
  for (int64_t time = 0; time <= length; time += step) {
    const std::string mark = std::to_string(time);
    const std::size_t column = label_size + cell_at(time);
    if (column + mark.size() > label_size + static_cast<std::size_t>(cells)) break;
    axis.resize(column, ' ');
    axis += mark;
  }
  return text + axis + "\n";
}
