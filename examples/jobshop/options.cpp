#include "options.h"

#include <charconv>
#include <random>

const char* const kHelp =
    R"(usage: jobshop [OPTIONS] FILE

Finds a short schedule for the job shop in FILE and draws it. FILE holds the
number of jobs and of machines, then a line for each job with the machine (from
0) and the duration of each of its operations in turn; '#' starts a comment.

  --time-limit SECONDS  stop after this time (10)
  --target MAKESPAN     stop at a schedule that is this short; without it only
                        one that is proved to be the shortest ends the search early
  --horizon TIME        look for schedules that end by this time at first (the
                        makespan of the best priority rule)
  --weight N            what breaking a constraint costs (2)
  --seed N              first state of the random numbers (a new one each time)
  --threads N           search threads (one for each processor)
  --svg FILE            draw the schedule into FILE as well
  --quiet               no line for each new best
  --help                show this text

Exit status: 0 if all went well, 1 if no schedule meets the target or horizon,
2 for a mistake on the command line or in FILE.
)";

namespace {

// The arguments from left to right.
class Arguments {
 public:
  explicit Arguments(const std::vector<std::string>& words) : words_(words) {}

  bool empty() const { return next_ == words_.size(); }
  const std::string& next() { return option_ = words_[next_++]; }

  const std::string& value() {
    if (empty()) throw UserError("option '" + option_ + "' needs a value");
    return words_[next_++];
  }

  template <typename Number>
  Number number(Number least, Number most, const char* kind = "a whole number") {
    const std::string& text = value();
    Number number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || !(number >= least && number <= most)) {
      throw UserError("option '" + option_ + "': '" + text + "' is not " + kind + " in range");
    }
    return number;
  }

 private:
  const std::vector<std::string>& words_;
  std::size_t next_ = 0;
  std::string option_;
};

constexpr int64_t kMaxTime = 1'000'000'000'000'000;
constexpr int64_t kMaxWeight = 1'000'000;
constexpr double kMaxSeconds = 1e9;
constexpr unsigned kMaxThreads = 1024;

}  // namespace

Options parse_options(const std::vector<std::string>& arguments) {
  Options options;
  options.search.seed = std::random_device()();
  Arguments words(arguments);
  while (!words.empty()) {
    const std::string& word = words.next();
    if (word == "--help" || word == "-h") {
      options.help = true;
      return options;
    } else if (word == "--time-limit") {
      options.search.time_limit_seconds = words.number(0.0, kMaxSeconds, "a number of seconds");
    } else if (word == "--target") {
      options.search.target = words.number<int64_t>(0, kMaxTime);
    } else if (word == "--horizon") {
      options.search.horizon = words.number<int64_t>(0, kMaxTime);
    } else if (word == "--weight") {
      options.search.weight = words.number<int64_t>(1, kMaxWeight);
    } else if (word == "--seed") {
      options.search.seed = words.number<uint64_t>(0, UINT64_MAX);
    } else if (word == "--threads") {
      options.search.threads = words.number<unsigned>(1, kMaxThreads);
    } else if (word == "--svg") {
      options.svg_file = words.value();
    } else if (word == "--quiet") {
      options.search.show_progress = false;
    } else if (word.size() > 1 && word.front() == '-') {
      throw UserError("unknown option '" + word + "' (--help lists them)");
    } else if (!options.file.empty()) {
      throw UserError("more than one file: '" + options.file + "' and '" + word + "'");
    } else {
      options.file = word;
    }
  }
  if (options.file.empty()) throw UserError("no file (--help tells more)");
  return options;
}
