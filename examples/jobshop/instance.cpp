#include "instance.h"

#include <charconv>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

// Generous, and small enough that no sum of durations leaves 64 bits.
constexpr int64_t kMaxCount = 1'000;
constexpr int64_t kMaxDuration = 1'000'000'000;

// The lines of a file that hold numbers.
class NumberLines {
 public:
  explicit NumberLines(const std::string& path) : path_(path), file_(path) {
    if (!file_ || std::filesystem::is_directory(path)) fail_to_read();
  }

  // Reads the next line that is not blank; returns whether there was one.
  bool next(std::vector<int64_t>& numbers) {
    numbers.clear();
    for (std::string line; numbers.empty() && std::getline(file_, line);) {
      ++line_number_;
      std::istringstream words(line.substr(0, line.find('#')));
      for (std::string word; words >> word;) numbers.push_back(number(word));
    }
    if (file_.bad()) fail_to_read();
    return !numbers.empty();
  }

  [[noreturn]] void fail(const std::string& message) const {
    throw UserError(path_ + ":" + std::to_string(line_number_) + ": " + message);
  }

 private:
  [[noreturn]] void fail_to_read() const { throw UserError("cannot read '" + path_ + "'"); }

  int64_t number(const std::string& word) const {
    int64_t value = 0;
    const char* end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, value);
    if (error == std::errc::result_out_of_range) fail("'" + word + "' is too large");
    if (error != std::errc() || stop != end) fail("'" + word + "' is not a whole number");
    return value;
  }

  std::string path_;
  std::ifstream file_;
  int line_number_ = 0;
};

std::size_t read_count(const NumberLines& lines, int64_t count, const std::string& what) {
  if (count < 1 || count > kMaxCount) {
    lines.fail("the number of " + what + " must be 1 to " + std::to_string(kMaxCount) + ", not " +
               std::to_string(count));
  }
  return static_cast<std::size_t>(count);
}

Operation read_operation(const NumberLines& lines, int64_t machine, int64_t duration,
                         std::size_t machines) {
  if (machine < 0 || machine >= static_cast<int64_t>(machines)) {
    lines.fail("machine " + std::to_string(machine) + " does not exist (machines are 0 to " +
               std::to_string(machines - 1) + ")");
  }
  if (duration < 0 || duration > kMaxDuration) {
    lines.fail("a duration must be 0 to " + std::to_string(kMaxDuration) + ", not " +
               std::to_string(duration));
  }
  return {static_cast<std::size_t>(machine), duration};
}

Job read_job(const NumberLines& lines, const std::vector<int64_t>& numbers, std::size_t index,
             std::size_t machines) {
  if (numbers.size() != 2 * machines) {
    lines.fail("job " + std::to_string(index) + " needs " + std::to_string(2 * machines) +
               " numbers, a machine and a duration for each operation, but has " +
               std::to_string(numbers.size()));
  }
  Job job;
  for (std::size_t i = 0; i < numbers.size(); i += 2) {
    job.push_back(read_operation(lines, numbers[i], numbers[i + 1], machines));
  }
  return job;
}

}  // namespace

std::size_t operation_count(const Instance& instance) {
  return instance.jobs.size() * instance.machines;
}

int64_t total_duration(const Job& job) {
  int64_t total = 0;
  for (const Operation& operation : job) total += operation.duration;
  return total;
}

Instance read_instance(const std::string& path) {
  NumberLines lines(path);
  std::vector<int64_t> numbers;
  if (!lines.next(numbers)) lines.fail("the file holds no numbers");
  if (numbers.size() != 2) lines.fail("expected two numbers, the jobs and the machines");
  const std::size_t jobs = read_count(lines, numbers[0], "jobs");
  const std::size_t machines = read_count(lines, numbers[1], "machines");

  Instance instance = {std::filesystem::path(path).stem().string(), machines, {}};
  while (instance.jobs.size() < jobs) {
    const std::size_t index = instance.jobs.size();
    if (!lines.next(numbers)) {
      lines.fail("the file ends after " + std::to_string(index) + " of " + std::to_string(jobs) +
                 " jobs");
    }
    instance.jobs.push_back(read_job(lines, numbers, index, machines));
  }
  if (lines.next(numbers)) {
    lines.fail("more numbers after the last of " + std::to_string(jobs) + " jobs");
  }
  return instance;
}
