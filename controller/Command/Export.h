#pragma once

#include <functional>
#include <string>

#include "Store/StudyStore.h"
#include "Study/StudyGoal.h"

namespace controller {

/// Takes a text piece by piece.
using TextSink = std::function<void(const std::string&)>;

/// The estimates of a study, or its observations, as CSV (RFC 4180 with line feeds) or JSON. Nothing of it depends on when,
/// where and by how many workers the units were run: the same study under the same goal gives the same bytes. Numbers have
/// as many digits as it takes to read the same double back.
void exportEstimatesAsCsv(StudyStore& store, const StudyGoal& goal, const TextSink& sink);
void exportEstimatesAsJson(StudyStore& store, const StudyGoal& goal, const TextSink& sink);
/// Each batch that counts, as the simulator gave it; memory for one unit. A row: experiment, unit, batch, variable, value.
void exportObservationsAsCsv(StudyStore& store, const StudyGoal& goal, const TextSink& sink);
/// One JSON object a line for each unit.
void exportObservationsAsJson(StudyStore& store, const StudyGoal& goal, const TextSink& sink);

}  // namespace controller
