#include "Statistics/Estimate.h"

namespace controller {

const char* nameOf(EstimateMethod method) noexcept {
  switch (method) {
    case EstimateMethod::StudentT:
      return "Student t";
    case EstimateMethod::SkewnessCorrected:
      return "skewness-corrected t";
    case EstimateMethod::ClopperPearson:
      return "Clopper-Pearson";
    case EstimateMethod::Constant:
      break;
  }
  return "constant";
}

}  // namespace controller
