#include "Report/SvgPlot.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "Report/HtmlText.h"
#include "Report/RoundNumbers.h"

namespace controller {

namespace {

// In the drawing's own pixels, which are those of the page where the plot has its full width.
constexpr double kWidth = 440.0;
constexpr double kHeight = 240.0;
constexpr double kRight = 14.0;
constexpr double kTop = 10.0;
constexpr double kBottom = 42.0;
constexpr double kDigitWidth = 7.2;  // of the numbers' font

constexpr double kInnerHeight = kHeight - kTop - kBottom;

double stepOf(const std::vector<double>& numbers) {
  return numbers.size() < 2 ? 0.0 : numbers[1] - numbers[0];
}

/// Powers of ten, and between them 2 and 5 where there are few.
std::vector<double> logarithmicTicks(double from, double to) {
  std::vector<double> ticks;
  const bool areFew = std::log10(to / from) < 2.5;
  const auto last = static_cast<int>(std::floor(std::log10(to)));
  for (auto exponent = static_cast<int>(std::floor(std::log10(from))); exponent <= last; ++exponent) {
    const double power = std::pow(10.0, exponent);
    for (const double factor : {1.0, 2.0, 5.0}) {
      const double tick = factor * power;
      if ((factor == 1.0 || areFew) && tick >= from && tick <= to) {
        ticks.push_back(tick);
      }
    }
  }
  return ticks;
}

void fillTicks(PlotAxis& axis, int steps) {
  if (axis.ticks.empty()) {
    axis.ticks = axis.isLogarithmic ? logarithmicTicks(axis.from, axis.to) : roundNumbers(axis.from, axis.to, steps);
  }
}

std::string tickText(const PlotAxis& axis, double tick) {
  return numberInWords(tick, axis.isLogarithmic ? 0.0 : stepOf(axis.ticks));
}

std::size_t longestText(const PlotAxis& axis) {
  std::size_t longest = 1;
  for (const double tick : axis.ticks) {
    longest = std::max(longest, tickText(axis, tick).size());
  }
  return longest;
}

double share(const PlotAxis& axis, double value) {
  return axis.isLogarithmic ? std::log(value / axis.from) / std::log(axis.to / axis.from)
                            : (value - axis.from) / (axis.to - axis.from);
}

}  // namespace

SvgPlot::SvgPlot(PlotAxis horizontal, PlotAxis vertical, std::string_view description)
    : horizontal_(std::move(horizontal)), vertical_(std::move(vertical)), description_(escaped(description)) {
  fillTicks(vertical_, 5);
  left_ = 26.0 + kDigitWidth * static_cast<double>(longestText(vertical_));
  fillTicks(horizontal_, 6);
  // Long numbers would run into each other: every other one goes until they do not.
  const double room = kWidth - left_ - kRight;
  while (horizontal_.ticks.size() > 2 && static_cast<double>(horizontal_.ticks.size()) *
                                                 (static_cast<double>(longestText(horizontal_)) + 2.0) * kDigitWidth >
                                             room) {
    std::vector<double> fewer;
    for (std::size_t at = 0; at < horizontal_.ticks.size(); at += 2) {
      fewer.push_back(horizontal_.ticks[at]);
    }
    horizontal_.ticks = fewer;
  }
}

double SvgPlot::horizontal(double x) const {
  // Far outside is as good as a little outside, and keeps the numbers short.
  return std::clamp(share(horizontal_, x), -1.0, 2.0) * (kWidth - left_ - kRight);
}

double SvgPlot::vertical(double y) const {
  return (1.0 - std::clamp(share(vertical_, y), -1.0, 2.0)) * kInnerHeight;
}

void SvgPlot::drawPath(const std::vector<PlotPoint>& points, std::string& path, bool isFirst) const {
  for (const PlotPoint& point : points) {
    fmt::format_to(std::back_inserter(path), "{}{:.1f} {:.1f}", isFirst ? "M" : "L", horizontal(point.x),
                   vertical(point.y));
    isFirst = false;
  }
}

void SvgPlot::line(const std::vector<PlotPoint>& points, std::string_view kind) {
  if (points.empty()) {
    return;
  }
  std::string path;
  drawPath(points, path, true);
  inside_ += fmt::format("<path class=\"line {}\" d=\"{}\"/>\n", kind, path);
}

void SvgPlot::band(const std::vector<PlotPoint>& upper, const std::vector<PlotPoint>& lower, std::string_view kind) {
  if (upper.empty()) {
    return;
  }
  std::string path;
  drawPath(upper, path, true);
  drawPath({lower.rbegin(), lower.rend()}, path, false);
  inside_ += fmt::format("<path class=\"band {}\" d=\"{}Z\"/>\n", kind, path);
}

void SvgPlot::bar(double from, double to, double height, std::string_view kind, std::string_view hint) {
  const double left = horizontal(from);
  const double top = vertical(height);
  const double width = std::max(horizontal(to) - left, 1.0);
  const double gap = width > 4.0 ? 1.0 : 0.0;
  inside_ += fmt::format(
      "<rect class=\"bar {}\" x=\"{:.1f}\" y=\"{:.1f}\" width=\"{:.1f}\" height=\"{:.1f}\"><title>{}</title></rect>\n",
      kind, left + gap / 2.0, top, width - gap, kInnerHeight - top, escaped(hint));
}

void SvgPlot::horizontalRule(double y, std::string_view kind) {
  line({{horizontal_.from, y}, {horizontal_.to, y}}, kind);
}

void SvgPlot::verticalRule(double x, std::string_view kind) {
  line({{x, vertical_.from}, {x, vertical_.to}}, kind);
}

void SvgPlot::dot(PlotPoint point, std::string_view kind, std::string_view hint) {
  inside_ += fmt::format("<circle class=\"dot {}\" cx=\"{:.1f}\" cy=\"{:.1f}\" r=\"3\"><title>{}</title></circle>\n",
                         kind, horizontal(point.x), vertical(point.y), escaped(hint));
}

std::string SvgPlot::frame() const {
  const double right = kWidth - kRight;
  const double bottom = kHeight - kBottom;
  std::string text;
  for (const double tick : vertical_.ticks) {
    const double y = kTop + vertical(tick);
    text += fmt::format("<path class=\"grid\" d=\"M{:.1f} {:.1f}H{:.1f}\"/>", left_, y, right);
    text += fmt::format("<text class=\"tick\" x=\"{:.1f}\" y=\"{:.1f}\" text-anchor=\"end\">{}</text>\n", left_ - 6.0,
                        y + 4.0, tickText(vertical_, tick));
  }
  for (const double tick : horizontal_.ticks) {
    const double x = left_ + horizontal(tick);
    const std::string number = tickText(horizontal_, tick);
    // A long number at the end would be cut off there.
    const double middle = std::min(x, kWidth - kDigitWidth * static_cast<double>(number.size()) / 2.0);
    text += fmt::format("<path class=\"axis\" d=\"M{:.1f} {:.1f}v4\"/>", x, bottom);
    text += fmt::format("<text class=\"tick\" x=\"{:.1f}\" y=\"{:.1f}\" text-anchor=\"middle\">{}</text>\n", middle,
                        bottom + 16.0, number);
  }
  text += fmt::format("<path class=\"axis\" d=\"M{:.1f} {:.1f}H{:.1f}\"/>\n", left_, bottom, right);
  text += fmt::format("<text class=\"label\" x=\"{:.1f}\" y=\"{:.1f}\" text-anchor=\"middle\">{}</text>\n",
                      (left_ + right) / 2.0, kHeight - 8.0, escaped(horizontal_.label));
  text += fmt::format(
      "<text class=\"label\" transform=\"translate(12 {:.1f}) rotate(-90)\" text-anchor=\"middle\">{}</text>\n",
      kTop + kInnerHeight / 2.0, escaped(vertical_.label));
  return text;
}

std::string SvgPlot::finish() {
  // An inner element cuts off what lies outside of it, and needs no name for that.
  return fmt::format(
      "<svg class=\"plot\" viewBox=\"0 0 {:.0f} {:.0f}\" role=\"img\" aria-label=\"{}\">\n{}<svg x=\"{:.1f}\" "
      "y=\"{:.1f}\" "
      "width=\"{:.1f}\" height=\"{:.1f}\">\n{}</svg>\n</svg>\n",
      kWidth, kHeight, description_, frame(), left_, kTop, kWidth - left_ - kRight, kInnerHeight, inside_);
}

}  // namespace controller
