# quorva_model(<name> SOURCES <file>...)
#
# A model: the executable <name>, in the folder bin of the build, made of the object library <name>_model, which the
# model's tests link too. An object library, as the engine calls the model's GenerateStudy, which an archive ahead of the
# engine on the link line would not offer.
function(quorva_model name)
  cmake_parse_arguments(PARSE_ARGV 1 model "" "" "SOURCES")
  add_library(${name}_model OBJECT ${model_SOURCES})
  target_include_directories(${name}_model PUBLIC "${PROJECT_SOURCE_DIR}/models")
  target_link_libraries(${name}_model PUBLIC quorva::engine PRIVATE quorva::project_options)

  add_executable(${name})
  target_link_libraries(${name} PRIVATE ${name}_model quorva::main quorva::project_options)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
endfunction()
