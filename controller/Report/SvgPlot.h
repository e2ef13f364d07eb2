#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace controller {

/// A point in the plot's own units.
struct PlotPoint {
  double x = 0.0;
  double y = 0.0;
};

/// A range of numbers along one side of a plot.
struct PlotAxis {
  double from = 0.0;
  double to = 1.0;             ///< above from
  bool isLogarithmic = false;  ///< then from is above 0
  std::string label;
  std::vector<double> ticks;  ///< where to put numbers; round ones if it is empty
};

/// One plot as inline SVG: a frame with two axes, and what is drawn inside, cut at the frame. Colours and widths come from
/// the classes that the report's style sheet gives; `kind` arguments are such classes. The drawing scales with the page.
class SvgPlot {
 public:
  /// description: for who cannot see the plot; plain text.
  SvgPlot(PlotAxis horizontal, PlotAxis vertical, std::string_view description);

  void line(const std::vector<PlotPoint>& points, std::string_view kind);
  /// The area between two lines that have the same number of points.
  void band(const std::vector<PlotPoint>& upper, const std::vector<PlotPoint>& lower, std::string_view kind);
  /// From `from` to `to` along the horizontal axis, from the bottom up to `height`; hovering shows `hint`, plain text.
  void bar(double from, double to, double height, std::string_view kind, std::string_view hint);
  void horizontalRule(double y, std::string_view kind);
  void verticalRule(double x, std::string_view kind);
  void dot(PlotPoint point, std::string_view kind, std::string_view hint);

  /// The whole element. Call it once, last.
  [[nodiscard]] std::string finish();

 private:
  [[nodiscard]] double horizontal(double x) const;
  [[nodiscard]] double vertical(double y) const;
  void drawPath(const std::vector<PlotPoint>& points, std::string& path, bool isFirst) const;
  [[nodiscard]] std::string frame() const;

  PlotAxis horizontal_;
  PlotAxis vertical_;
  std::string description_;
  double left_ = 0.0;  // room for the numbers of the vertical axis
  std::string inside_;
};

}  // namespace controller
