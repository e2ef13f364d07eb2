# quorva_add_simulator(NAME <name> SOURCES <file>... [INCLUDES <folder>...] [LINKS <target>...])
#
# A simulator: the executable <name>, made of a model's sources, the engine and its main. The same function builds the
# models of this project and, behind find_package(Quorva), those of any other.
#
#   NAME      the executable
#   SOURCES   the model's files; one of them defines GenerateStudy and DestructStudy, which the engine calls
#   INCLUDES  folders that the model's includes start from; the calling CMakeLists.txt's own, if none is given
#   LINKS     libraries of the model's own
#
# The model is an object library of its own, <name>_model, so that its tests can link it: an archive ahead of the engine on
# the link line would not offer GenerateStudy. The engine brings the language and the options that results depend on.
function(quorva_add_simulator)
  cmake_parse_arguments(PARSE_ARGV 0 simulator "" "NAME" "SOURCES;INCLUDES;LINKS")
  if(NOT simulator_NAME OR NOT simulator_SOURCES)
    message(FATAL_ERROR "quorva_add_simulator: NAME <name> and SOURCES <file>... are needed")
  endif()
  if(simulator_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "quorva_add_simulator: what is meant by: ${simulator_UNPARSED_ARGUMENTS}")
  endif()
  if(NOT simulator_INCLUDES)
    set(simulator_INCLUDES ".")
  endif()

  set(model ${simulator_NAME}_model)
  add_library(${model} OBJECT ${simulator_SOURCES})
  foreach(folder IN LISTS simulator_INCLUDES)
    cmake_path(ABSOLUTE_PATH folder BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}" NORMALIZE)
    target_include_directories(${model} PUBLIC "${folder}")
  endforeach()
  target_link_libraries(${model} PUBLIC quorva::engine ${simulator_LINKS})

  add_executable(${simulator_NAME})
  target_link_libraries(${simulator_NAME} PRIVATE ${model} quorva::main)

  set_target_properties(${model} ${simulator_NAME} PROPERTIES CXX_EXTENSIONS OFF)
endfunction()
