#include "Study/StudyGoal.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace controller {

bool StudyGoal::counts(std::int32_t variable) const {
  return variables.empty() || std::find(variables.begin(), variables.end(), variable) != variables.end();
}

std::string StudyGoal::nameOf(std::int32_t variable) const {
  const auto found = names.find(variable);
  return found == names.end() ? "variable " + std::to_string(variable) : found->second;
}

std::string goalToJson(const StudyGoal& goal) {
  auto names = nlohmann::ordered_json::array();
  for (const auto& [variable, name] : goal.names) {
    names.push_back({{"variable", variable}, {"name", name}});
  }
  const nlohmann::ordered_json json = {{"precision", goal.goal.precision},
                                       {"isRelative", goal.goal.isRelative},
                                       {"confidence", goal.goal.confidence},
                                       {"leastBatches", goal.goal.leastBatches},
                                       {"greatestBatches", goal.goal.greatestBatches},
                                       {"variables", goal.variables},
                                       {"names", names},
                                       {"warmUpBatches", goal.warmUpBatches},
                                       {"batchesTogether", goal.batchesTogether}};
  return json.dump();
}

StudyGoal goalFromJson(const std::string& text) {
  const auto json = nlohmann::json::parse(text);
  StudyGoal goal;
  json.at("precision").get_to(goal.goal.precision);
  json.at("isRelative").get_to(goal.goal.isRelative);
  json.at("confidence").get_to(goal.goal.confidence);
  json.at("leastBatches").get_to(goal.goal.leastBatches);
  json.at("greatestBatches").get_to(goal.goal.greatestBatches);
  json.at("variables").get_to(goal.variables);
  for (const auto& name : json.at("names")) {
    goal.names[name.at("variable").get<std::int32_t>()] = name.at("name").get<std::string>();
  }
  json.at("warmUpBatches").get_to(goal.warmUpBatches);
  json.at("batchesTogether").get_to(goal.batchesTogether);
  return goal;
}

std::vector<double> observed(std::vector<double> batches, const StudyGoal& goal) {
  const auto warmUp = std::min<std::int64_t>(goal.warmUpBatches, static_cast<std::int64_t>(batches.size()));
  batches.erase(batches.begin(), batches.begin() + warmUp);
  if (goal.batchesTogether <= 1) {
    return batches;
  }
  std::vector<double> means;
  const auto size = static_cast<std::size_t>(goal.batchesTogether);
  for (std::size_t begin = 0; begin + size <= batches.size(); begin += size) {
    double sum = 0.0;
    for (std::size_t i = begin; i < begin + size; ++i) {
      sum += batches[i];
    }
    means.push_back(sum / static_cast<double>(size));
  }
  return means;
}

}  // namespace controller
