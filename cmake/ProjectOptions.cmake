# What every target of ours is built with: the language, the warnings and the rules that keep a run's bytes the same
# on every compiler and in every build type.

# The part that a run's bytes depend on. The installed engine passes it on to the models of others.
add_library(quorva_arithmetic INTERFACE)
add_library(quorva::arithmetic ALIAS quorva_arithmetic)
target_compile_features(quorva_arithmetic INTERFACE cxx_std_20)
# A fused multiply-add rounds once where the written operations round twice, so that its results would depend on the
# processor and the compiler.
target_compile_options(quorva_arithmetic INTERFACE -ffp-contract=off)

# A build that checks arcs has every access to memory instrumented, in the engine, the models here and those of others that
# link it. ThreadSanitizer's own library, which would be called, is not linked: quorva::access_log takes its place.
define_property(TARGET PROPERTY QUORVA_NOT_INSTRUMENTED
  BRIEF_DOCS "Leaves a target out of the instrumentation of QUORVA_CHECK_ARCS")
if(QUORVA_CHECK_ARCS)
  if(QUORVA_SANITIZE)
    message(FATAL_ERROR "QUORVA_CHECK_ARCS takes the place of a sanitizer: leave QUORVA_SANITIZE empty")
  endif()
  target_compile_definitions(quorva_arithmetic INTERFACE QUORVA_CHECK_ARCS)
  target_compile_options(quorva_arithmetic INTERFACE
    $<$<NOT:$<BOOL:$<TARGET_PROPERTY:QUORVA_NOT_INSTRUMENTED>>>:-fsanitize=thread>)
endif()

add_library(project_options INTERFACE)
add_library(quorva::project_options ALIAS project_options)
target_link_libraries(project_options INTERFACE quorva::arithmetic)
set(CMAKE_CXX_EXTENSIONS OFF)

target_compile_options(project_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Werror
  # A failed check names its source file; where the sources lay when they were compiled stays out of the executables.
  -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)

if(QUORVA_LIBRARY_ASSERTIONS)
  target_compile_definitions(project_options INTERFACE _GLIBCXX_ASSERTIONS)
endif()

if(QUORVA_SANITIZE)
  # The check of dynamic types opens descriptors to probe memory, and ends a process that has none left, which one test
  # brings about on purpose.
  target_compile_options(project_options INTERFACE
    -fsanitize=${QUORVA_SANITIZE} -fno-sanitize=vptr -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(project_options INTERFACE -fsanitize=${QUORVA_SANITIZE})
endif()

if(QUORVA_FUZZ)
  target_compile_options(project_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

if(QUORVA_COVERAGE)
  target_compile_options(project_options INTERFACE --coverage)
  target_link_options(project_options INTERFACE --coverage)
  add_library(quorva_counters_on_abort OBJECT "${CMAKE_CURRENT_LIST_DIR}/CountersOnAbort.cpp")
  target_compile_features(quorva_counters_on_abort PRIVATE cxx_std_20)
  target_link_libraries(project_options INTERFACE
    $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:$<TARGET_OBJECTS:quorva_counters_on_abort>>)
endif()

# quorva_layer(<name> SOURCES <file>... [INTERNAL <header>...] [LINKS <layer>...])
#
# One layer of the engine: the static library quorva_<name>, known as quorva::<name>. Its sources may include headers of
# its own and of the layers it links, directly or through them, and no others; scripts/check-includes holds them to it.
# Its headers are installed in the folders that they have under src/, but for the internal ones, which serve the layer's
# own sources alone.
function(quorva_layer name)
  cmake_parse_arguments(PARSE_ARGV 1 layer "" "" "SOURCES;INTERNAL;LINKS")
  add_library(quorva_${name} STATIC ${layer_SOURCES} ${layer_INTERNAL})
  add_library(quorva::${name} ALIAS quorva_${name})
  target_include_directories(quorva_${name} PUBLIC "${PROJECT_SOURCE_DIR}/src")
  list(TRANSFORM layer_LINKS PREPEND quorva::)
  target_link_libraries(quorva_${name} PUBLIC ${layer_LINKS} PRIVATE quorva::project_options)
  if(QUORVA_CHECK_ARCS AND NOT name STREQUAL "access_log")
    target_link_libraries(quorva_${name} PUBLIC quorva::access_log)  # what instrumented code calls
  endif()

  set_property(GLOBAL APPEND PROPERTY QUORVA_LAYERS ${name})
  if(QUORVA_INSTALL)
    list(FILTER layer_SOURCES INCLUDE REGEX "\\.h$")
    cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY "${PROJECT_SOURCE_DIR}/src" OUTPUT_VARIABLE folder)
    install(FILES ${layer_SOURCES} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/quorva/${folder}")
  endif()
endfunction()
