#include "Command/Version.h"

namespace controller {

const char* programVersion() {
  return QUORVA_VERSION;
}

const char* programCommit() {
  return QUORVA_COMMIT;
}

}  // namespace controller
