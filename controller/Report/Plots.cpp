#include "Report/Plots.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "Report/RoundNumbers.h"
#include "Report/SvgPlot.h"

namespace controller {

namespace {

/// Collects the range of numbers that a plot has to show.
class Range {
 public:
  void include(double number) {
    if (std::isfinite(number)) {
      from_ = std::min(from_, number);
      to_ = std::max(to_, number);
    }
  }
  [[nodiscard]] bool isEmpty() const { return from_ > to_; }

  /// With some room on both sides; a single number gets as much as is its own size.
  [[nodiscard]] PlotAxis axis(std::string label) const {
    const double size = to_ - from_;
    const double magnitude = std::max(std::fabs(from_), std::fabs(to_));
    const bool isPoint = !(size > magnitude * 1e-14);
    const double room = !isPoint ? 0.06 * size : magnitude > 0.0 ? 0.5 * magnitude : 1.0;
    PlotAxis axis;
    axis.from = from_ - room;
    axis.to = to_ + room;
    axis.label = std::move(label);
    return axis;
  }

 private:
  double from_ = std::numeric_limits<double>::infinity();
  double to_ = -std::numeric_limits<double>::infinity();
};

bool isDrawable(const Range& range) {
  if (range.isEmpty()) {
    return false;
  }
  const PlotAxis axis = range.axis("");
  return std::isfinite(axis.from) && std::isfinite(axis.to) &&
         std::isfinite(axis.to - axis.from);  // or else it overflows
}

std::string intervalInWords(double mean, double lower, double upper) {
  const double step = (upper - lower) / 100.0;
  return fmt::format("{} ({} to {})", numberInWords(mean, step), numberInWords(lower, step),
                     numberInWords(upper, step));
}

}  // namespace

std::string convergencePlot(const VariableReport& variable) {
  std::vector<PlotPoint> means;
  std::vector<PlotPoint> upper;
  std::vector<PlotPoint> lower;
  Range range;
  const double wanted = variable.wantedHalfWidth;
  const double last = variable.estimate.mean;
  for (const ConvergencePoint& point : variable.convergence) {
    const bool isFinite = std::isfinite(point.mean) && std::isfinite(point.lower) && std::isfinite(point.upper);
    if (!isFinite || point.count * 1000 < variable.estimate.count) {
      continue;
    }
    const auto count = static_cast<double>(point.count);
    means.push_back({count, point.mean});
    upper.push_back({count, point.upper});
    lower.push_back({count, point.lower});
    // The first intervals are far wider than those that matter.
    if (point.count * 30 >= variable.estimate.count) {
      range.include(point.lower);
      range.include(point.upper);
    }
  }
  if (wanted <= 5.0 * variable.estimate.halfWidth) {
    range.include(last - wanted);
    range.include(last + wanted);
  }
  if (means.size() < 2 || !isDrawable(range)) {
    return "";
  }
  PlotAxis batches;
  batches.from = means.front().x;
  batches.to = means.back().x;
  batches.isLogarithmic = true;
  batches.label = "batches";
  SvgPlot plot(
      batches, range.axis("mean"),
      fmt::format("Convergence of {}: {} after {} batches", variable.name,
                  intervalInWords(last, variable.estimate.lower, variable.estimate.upper), variable.estimate.count));
  plot.band(upper, lower, "c0");
  plot.horizontalRule(last - wanted, "wanted");
  plot.horizontalRule(last + wanted, "wanted");
  plot.line(means, "c0");
  return plot.finish();
}

std::string histogramPlot(const VariableReport& variable) {
  const std::vector<HistogramBin>& bins = variable.histogram;
  if (bins.empty() || variable.estimate.count == 0) {
    return "";
  }
  // Bars of single values are as wide as the smallest distance between two of them leaves room for.
  double half =
      bins.size() == 1 ? std::max(std::fabs(bins[0].from) * 0.05, 0.5) : std::numeric_limits<double>::infinity();
  for (std::size_t at = 1; at < bins.size(); ++at) {
    half = std::min(half, 0.4 * (bins[at].from - bins[at - 1].from));
  }
  const bool areValues = bins.front().from == bins.front().to;
  Range range;
  double greatest = 0.0;
  for (const HistogramBin& bin : bins) {
    const double room = bins.size() == 1 ? 4.0 * half : half;
    range.include(areValues ? bin.from - room : bin.from);
    range.include(areValues ? bin.to + room : bin.to);
    greatest = std::max(greatest, static_cast<double>(bin.count));
  }
  if (!isDrawable(range)) {
    return "";
  }
  const double percent = 100.0 / static_cast<double>(variable.estimate.count);
  PlotAxis values = range.axis("observation");
  if (areValues && bins.size() <= 12) {
    for (const HistogramBin& bin : bins) {
      values.ticks.push_back(bin.from);
    }
  }
  PlotAxis shares;
  shares.to = std::max(greatest * percent * 1.06, 1e-9);
  shares.label = "% of batches";
  SvgPlot plot(values, shares, fmt::format("Histogram of {}", variable.name));
  for (const HistogramBin& bin : bins) {
    const double height = static_cast<double>(bin.count) * percent;
    const std::string what = areValues ? numberInWords(bin.from)
                                       : fmt::format("{} to {}", numberInWords(bin.from, bin.to - bin.from),
                                                     numberInWords(bin.to, bin.to - bin.from));
    plot.bar(areValues ? bin.from - half : bin.from, areValues ? bin.to + half : bin.to, height, "c0",
             fmt::format("{}: {:.3g} %", what, height));
  }
  if (std::isfinite(variable.estimate.mean)) {
    plot.verticalRule(variable.estimate.mean, "mark");
  }
  return plot.finish();
}

std::string colourOfLine(std::size_t line) {
  return fmt::format("c{}{}", line % 8, line / 8 == 0 ? "" : line / 8 == 1 ? " dashed" : " dotted");
}

std::string stopTimePlot(const std::string& group, const std::vector<StopTimeLine>& lines) {
  Range times;
  Range means;
  for (const StopTimeLine& line : lines) {
    for (const VariableReport* variable : line.variables) {
      times.include(*variable->stopTime);
      means.include(variable->estimate.mean);
      means.include(variable->estimate.lower);
      means.include(variable->estimate.upper);
    }
  }
  if (!isDrawable(times) || !isDrawable(means)) {
    return "";
  }
  SvgPlot plot(times.axis("time"), means.axis("mean"), fmt::format("{} over time, one line per experiment", group));
  for (std::size_t number = 0; number < lines.size(); ++number) {
    const std::string colour = colourOfLine(number);
    std::vector<PlotPoint> line;
    std::vector<PlotPoint> upper;
    std::vector<PlotPoint> lower;
    for (const VariableReport* variable : lines[number].variables) {
      const Estimate& estimate = variable->estimate;
      if (!std::isfinite(estimate.mean)) {
        continue;
      }
      const double time = *variable->stopTime;
      line.push_back({time, estimate.mean});
      upper.push_back({time, std::isfinite(estimate.upper) ? estimate.upper : estimate.mean});
      lower.push_back({time, std::isfinite(estimate.lower) ? estimate.lower : estimate.mean});
    }
    plot.band(upper, lower, colour);
    plot.line(line, colour);
    for (std::size_t at = 0; at < line.size(); ++at) {
      plot.dot(line[at], colour,
               fmt::format("{}, time {}: {}", lines[number].experiment, numberInWords(line[at].x),
                           intervalInWords(line[at].y, lower[at].y, upper[at].y)));
    }
  }
  return plot.finish();
}

}  // namespace controller
