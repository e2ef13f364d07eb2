#include "Report/HtmlReport.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <sstream>
#include <string>

#include "controller/Report/SampleReports.h"

namespace controller {
namespace {

std::string htmlOf(const StudyReport& report) {
  std::ostringstream out;
  writeHtmlReport(report, out);
  return out.str();
}

std::size_t countOf(const std::string& part, const std::string& text) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

/// One experiment with one variable, all of whose numbers are easy to tell apart.
StudyReport smallReport() {
  VariableReport variable;
  variable.name = "length of <queue>";
  variable.estimate = {.count = 12345,
                       .mean = 2.5,
                       .lower = 2.45,
                       .upper = 2.56,
                       .halfWidth = 0.06,
                       .variance = 4.0,
                       .skewness = 1.0,
                       .minimum = 0.0,
                       .maximum = 17.0,
                       .method = EstimateMethod::SkewnessCorrected};
  variable.wantedHalfWidth = 0.05;
  variable.verdict = "open";
  variable.word = "has mean 2.5 and half-width 0.06, wanted 0.05";
  variable.quantiles = {{0.05, 0.5}, {0.25, 1.0}, {0.5, 2.0}, {0.75, 4.0}, {0.95, 9.0}};
  StudyReport report;
  report.title = "Queue & co";
  report.stopReason = "stopped at a signal";
  report.goal = {.precision = 0.02, .isRelative = true, .confidence = 0.95, .leastBatches = 2, .greatestBatches = 0};
  report.provenance = {{"Seed", "31415"}};
  report.experiments.push_back(
      {"Experiment 0", {{"room", "5"}, {"rate", "0.5"}}, "stopped short", "it waits", {}, {variable}});
  return report;
}

TEST(HtmlReportTest, ASmallReportIsTheseBytes) {
  const std::string html = htmlOf(smallReport());
  const std::size_t body = html.find("<body>");
  ASSERT_NE(body, std::string::npos);
  EXPECT_EQ(
      html.substr(0, html.find("<style>")),
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>Queue &amp; co</title>\n");
  EXPECT_EQ(html.substr(body), R"html(<body>
<main>
<header>
<h1>Queue &amp; co</h1>
<p>stopped at a signal</p>
<dl class="facts">
<div><dt>Precision wanted</dt><dd>2 % of the mean at 95 %</dd></div>
<div><dt>Experiments that reached it</dt><dd>0 of 1</dd></div>
<div><dt>Variables</dt><dd>1</dd></div>
<div><dt>Batches</dt><dd>12 345</dd></div>
</dl>
</header>
<section id="experiment-1">
<h2>Experiment 0 <span class="verdict">stopped short</span></h2>
<p>room = 5, rate = 0.5</p>
<p>it waits</p>
<div class="scroll"><table>
<thead><tr><th>Variable</th><th class="text">Precision</th><th>Mean</th><th>Half-width</th><th>Wanted</th><th>Interval from</th><th>to</th><th>Batches</th><th>Minimum</th><th>5 %</th><th>25 %</th><th>50 %</th><th>75 %</th><th>95 %</th><th>Maximum</th><th>Deviation</th><th class="text">Interval by</th></tr></thead>
<tbody>
<tr><th scope="row" class="wrap">length of &lt;queue&gt;</th><td class="text"><span class="verdict">open</span></td><td>2.5000</td><td>0.0600</td><td>0.0500</td><td>2.4500</td><td>2.5600</td><td>12 345</td><td>0</td><td>0.5</td><td>1</td><td>2</td><td>4</td><td>9</td><td>17</td><td>2</td><td class="text">skewness-corrected t</td></tr>
</tbody>
</table></div>
<p class="soft">All intervals of this table hold together with 95 % confidence. The half-width is the longer side of an interval.</p>
<details open>
<summary>Convergence and histograms</summary>
<article class="card">
<h3>length of &lt;queue&gt;</h3>
<p class="soft">It has mean 2.5 and half-width 0.06, wanted 0.05</p>
<p class="soft">Too few batches to draw.</p>
<div class="plots">
</div>
</article>
</details>
</section>
<section>
<h2>Provenance</h2>
<div class="scroll"><table>
<tbody>
<tr><th scope="row">Seed</th><td class="text long">31415</td></tr>
</tbody>
</table></div>
</section>
</main>
</body>
</html>
)html");
}

TEST(HtmlReportTest, AnAbsolutePrecisionIsANumber) {
  StudyReport report = smallReport();
  report.goal.isRelative = false;
  report.goal.precision = 0.25;
  EXPECT_NE(htmlOf(report).find("<dd>0.25 at 95\u202F%</dd>"), std::string::npos);
}

TEST(HtmlReportTest, QuantilesTellTheirError) {
  StudyReport report = smallReport();
  report.experiments[0].variables[0].quantileError = 0.0005;
  EXPECT_NE(htmlOf(report).find(
                "Quantiles of variables with many different values are off by at most 0.05\u202F% of the batches."),
            std::string::npos);
}

TEST(HtmlReportTest, AVariableWithStopTimesHasACurveWithALinePerExperiment) {
  for (const auto& [name, report] : support::sampleReports()) {
    const std::string html = htmlOf(report);
    if (name == "stop-times") {
      EXPECT_EQ(countOf("<h2>out over time</h2>", html), 1U);
      const std::size_t from = html.find("<figure class=\"card curve\">");
      ASSERT_NE(from, std::string::npos);
      const std::string figure = html.substr(from, html.find("</figure>", from) - from);
      EXPECT_EQ(countOf("<circle", figure), 18U * 3U);  // a dot for each stop time
      EXPECT_EQ(countOf("<path class=\"band", figure), 18U);
      EXPECT_EQ(countOf("<li>", figure), 18U);
      EXPECT_EQ(countOf("class=\"line c1 dashed\"", figure), 2U);  // the tenth line, and its place in the legend
      EXPECT_NE(figure.find("<title>load 17, time 2.5: "), std::string::npos);
    } else if (name == "odd") {
      EXPECT_EQ(countOf("card curve", html), 0U);
    }
  }
}

TEST(HtmlReportTest, SeveralExperimentsAreListedWithLinksAndFolded) {
  for (const auto& [name, report] : support::sampleReports()) {
    if (name == "stop-times") {
      const std::string html = htmlOf(report);
      EXPECT_EQ(countOf("<a href=\"#experiment-18\">load 17</a>", html), 1U);
      EXPECT_EQ(countOf("<section id=\"experiment-18\">", html), 1U);
      EXPECT_EQ(countOf("<details>", html), 18U);
      EXPECT_NE(html.find("<dd>9 of 18</dd>"), std::string::npos);
    }
  }
}

TEST(HtmlReportTest, TheSameReportIsTheSameBytes) {
  const auto first = support::sampleReports();
  const auto second = support::sampleReports();
  for (std::size_t at = 0; at < first.size(); ++at) {
    EXPECT_EQ(htmlOf(first[at].second), htmlOf(second[at].second)) << first[at].first;
  }
}

}  // namespace
}  // namespace controller
