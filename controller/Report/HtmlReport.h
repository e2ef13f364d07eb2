#pragma once

#include <ostream>

#include "Report/StudyReport.h"

namespace controller {

/// Writes the report as one HTML document that needs nothing beside it: no server, no script, no font or picture from
/// elsewhere. Plots are inline SVG; light or dark as the reader's system asks for; narrow windows scroll wide tables.
/// Every text of the report is escaped. The same report gives the same bytes.
void writeHtmlReport(const StudyReport& report, std::ostream& out);

}  // namespace controller
