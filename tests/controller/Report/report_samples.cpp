// Writes every sample report as <folder>/<name>.html.
//
// usage: controller_report_samples FOLDER
#include <fstream>
#include <iostream>
#include <string>

#include "Report/HtmlReport.h"
#include "controller/Report/SampleReports.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: controller_report_samples FOLDER\n";
    return 2;
  }
  for (const auto& [name, report] : support::sampleReports()) {
    std::ofstream out(std::string(argv[1]) + "/" + name + ".html", std::ios::binary);
    controller::writeHtmlReport(report, out);
    out.close();
    if (!out) {
      std::cerr << "cannot write " << name << ".html\n";
      return 1;
    }
  }
  return 0;
}
