#include "Performance_Variables/ModelGroupClass.h"

#include <algorithm>
#include <cstddef>

ModelGroupClass::~ModelGroupClass() {
  delete[] ModelList;
}

void ModelGroupClass::CreateModelList(int the_num_models) {
  delete[] ModelList;
  NumModels = the_num_models;
  ModelList = new BaseModelClass* [static_cast<std::size_t>(the_num_models)] {};
}

void ModelGroupClass::SetModel(int ModelIndex, BaseModelClass* ModelAddress) {
  ModelList[ModelIndex] = ModelAddress;
}

bool ModelGroupClass::IsDependentOnModel(const BaseModelClass* TheModel) const {
  return std::find(ModelList, ModelList + NumModels, TheModel) != ModelList + NumModels;
}
