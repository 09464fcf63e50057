#include <algorithm>
#include <iterator>
#include <sstream>

#include "gantt.h"

namespace {

// All in pixels.
constexpr double kChartWidth = 1000;
constexpr double kLeft = 100;
constexpr double kRight = 30;
constexpr double kTop = 50;
constexpr double kRowHeight = 40;
constexpr double kBarHeight = 30;
constexpr double kLegendColumn = 70;
constexpr double kLegendRow = 24;
constexpr double kCharacterWidth = 8;

constexpr int64_t kAxisMarks = 14;

// Hues all around the circle; the lightness alternates, so that next ones differ in both.
std::string colour_of(std::size_t job, std::size_t jobs) {
  constexpr int kLightness[] = {74, 60, 67};
  return "hsl(" + std::to_string(360 * job / jobs) + ",60%," +
         std::to_string(kLightness[job % std::size(kLightness)]) + "%)";
}

std::string escape(const std::string& text) {
  std::string escaped;
  for (char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

class Drawing {
 public:
  Drawing(const Instance& instance, const Schedule& schedule)
      : instance_(instance),
        schedule_(schedule),
        length_(std::max<int64_t>(schedule.makespan, 1)),
        bottom_(kTop + kRowHeight * static_cast<double>(instance.machines)) {}

  std::string draw() {
    const auto per_row = static_cast<std::size_t>(kChartWidth / kLegendColumn);
    const std::size_t legend_rows = (instance_.jobs.size() + per_row - 1) / per_row;
    const double height = bottom_ + 50 + kLegendRow * static_cast<double>(legend_rows);
    const double width = kLeft + kChartWidth + kRight;
    out_ << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << width << "\" height=\""
         << height << "\" viewBox=\"0 0 " << width << " " << height
         << "\" font-family=\"sans-serif\" font-size=\"13\">\n"
         << "<rect class=\"page\" width=\"100%\" height=\"100%\" fill=\"white\"/>\n";
    text(kLeft, 28, "start",
         escape(instance_.name) + ": makespan " + std::to_string(schedule_.makespan),
         "font-size=\"18\"");
    draw_axis();
    for (std::size_t job = 0; job < instance_.jobs.size(); ++job) draw_job(job);
    draw_legend(per_row);
    out_ << "</svg>\n";
    return out_.str();
  }

 private:
  double x_at(int64_t time) const {
    return kLeft + kChartWidth * static_cast<double>(time) / static_cast<double>(length_);
  }

  void text(double x, double y, const char* anchor, const std::string& words,
            const char* more = "") {
    out_ << "<text x=\"" << x << "\" y=\"" << y << "\" text-anchor=\"" << anchor << "\" " << more
         << ">" << words << "</text>\n";
  }

  void bar(double x, double y, double width, double height, std::size_t job) {
    out_ << "<rect x=\"" << x << "\" y=\"" << y << "\" width=\"" << width << "\" height=\""
         << height << "\" rx=\"3\" fill=\"" << colour_of(job, instance_.jobs.size())
         << "\" stroke=\"#444\" stroke-width=\"0.7\"";
  }

  void draw_axis() {
    const int64_t step = axis_step(length_, kAxisMarks);
    for (int64_t time = 0; time <= length_; time += step) {
      const double x = x_at(time);
      out_ << "<line x1=\"" << x << "\" y1=\"" << kTop << "\" x2=\"" << x << "\" y2=\""
           << bottom_ + 5 << "\" stroke=\"#ddd\"/>\n";
      text(x, bottom_ + 20, "middle", std::to_string(time), "fill=\"#444\"");
    }
    for (std::size_t machine = 0; machine < instance_.machines; ++machine) {
      const double y = kTop + kRowHeight * static_cast<double>(machine);
      text(kLeft - 10, y + kRowHeight / 2 + 5, "end", "machine " + std::to_string(machine));
    }
    out_ << "<line x1=\"" << kLeft << "\" y1=\"" << bottom_ << "\" x2=\"" << kLeft + kChartWidth
         << "\" y2=\"" << bottom_ << "\" stroke=\"#444\"/>\n";
  }

  void draw_job(std::size_t job) {
    const std::string name = std::to_string(job);
    for (std::size_t k = 0; k < instance_.jobs[job].size(); ++k) {
      const auto& [machine, duration] = instance_.jobs[job][k];
      const int64_t start = schedule_.starts[job][k];
      const double x = x_at(start);
      const double width = x_at(start + duration) - x;
      const double y =
          kTop + kRowHeight * static_cast<double>(machine) + (kRowHeight - kBarHeight) / 2;
      bar(x, y, width, kBarHeight, job);
      out_ << "><title>job " << name << ", operation " << k << ": machine " << machine << ", "
           << start << " to " << start + duration << "</title></rect>\n";
      if (width >= kCharacterWidth * static_cast<double>(name.size() + 1)) {
        text(x + width / 2, y + kBarHeight / 2 + 5, "middle", name, "pointer-events=\"none\"");
      }
    }
  }

  void draw_legend(std::size_t per_row) {
    for (std::size_t job = 0; job < instance_.jobs.size(); ++job) {
      const std::size_t row = job / per_row;
      const double x = kLeft + kLegendColumn * static_cast<double>(job % per_row);
      const double y = bottom_ + 38 + kLegendRow * static_cast<double>(row);
      bar(x, y, 14, 14, job);
      out_ << "/>\n";
      text(x + 20, y + 12, "start", "job " + std::to_string(job));
    }
  }

  const Instance& instance_;
  const Schedule& schedule_;
  int64_t length_;
  double bottom_;  // of the rows
  std::ostringstream out_;
};

}  // namespace

std::string gantt_svg(const Instance& instance, const Schedule& schedule) {
  return Drawing(instance, schedule).draw();
}
