#include "BaseClasses/TraceFile.h"

#include <fstream>
#include <vector>

#include "BaseClasses/BaseModelClass.h"
#include "BaseClasses/Traceprintf.h"
#include "Performance_Variables/PVModel.h"

namespace {

/// Takes `object` over for the rest of the process. On purpose there is no destruction at the end: what is kept must
/// still serve the last trace line of the last destructor.
template <typename Object>
Object* keepForProcess(std::unique_ptr<Object> object) {
  static auto* const kept = new std::vector<std::unique_ptr<Object>>;
  return kept->emplace_back(std::move(object)).get();
}

}  // namespace

TraceFile::TraceFile() : TraceLevel(1) {
  ::TraceLevel = 1;
}

TraceFile::TraceFile(const char* name)
    // Binary: line feeds are to be the same bytes on every platform.
    : tracefileout(
          keepForProcess(std::make_unique<std::ofstream>(name, std::ios::out | std::ios::trunc | std::ios::binary))) {}

TraceFile::TraceFile(std::ostream* stream) : tracefileout(stream) {}

void TraceFile::printHeader(PVModel* /*model*/) {}
void TraceFile::printFooter() {}
void TraceFile::printInitialState(BaseModelClass* /*model*/) {}
void TraceFile::printState(BaseModelClass* /*model*/) {}
void TraceFile::printState(PVModel* model) {
  printState(model->TheModel);
}
void TraceFile::printFireAction(BaseActionClass* /*action*/, double /*time*/) {}
void TraceFile::printPreFireAction(BaseActionClass* /*action*/) {}
void TraceFile::printPostFireAction(BaseActionClass* /*first*/, BaseActionClass* /*second*/) {}
void TraceFile::newBatch() {}
int TraceFile::printf(int /*level*/, const char* /*format*/, ...) {
  return 0;
}
void TraceFile::printStr(int /*level*/, const char* /*text*/) {}

void TraceFile::setTraceLevel(int level) {
  TraceLevel = level;
  ::TraceLevel = level;
}

namespace support {

TraceFile* keepSink(std::unique_ptr<TraceFile> sink) {
  return keepForProcess(std::move(sink));
}

}  // namespace support
