# What every target of ours is built with: the language, the warnings and the rules that keep a run's bytes the same
# on every compiler and in every build type.

add_library(project_options INTERFACE)
add_library(quorva::project_options ALIAS project_options)

target_compile_features(project_options INTERFACE cxx_std_20)
set(CMAKE_CXX_EXTENSIONS OFF)

target_compile_options(project_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Werror
  # A fused multiply-add rounds once where the written operations round twice, so that its results would depend on the
  # processor and the compiler.
  -ffp-contract=off)

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

if(QUORVA_COVERAGE)
  target_compile_options(project_options INTERFACE --coverage)
  target_link_options(project_options INTERFACE --coverage)
endif()

# quorva_layer(<name> SOURCES <file>... [LINKS <layer>...])
#
# One layer of the engine: the static library quorva_<name>, known as quorva::<name>. Its sources may include headers of
# its own and of the layers it links, directly or through them, and no others; scripts/check-includes holds them to it.
function(quorva_layer name)
  cmake_parse_arguments(PARSE_ARGV 1 layer "" "" "SOURCES;LINKS")
  add_library(quorva_${name} STATIC ${layer_SOURCES})
  add_library(quorva::${name} ALIAS quorva_${name})
  target_include_directories(quorva_${name} PUBLIC "${PROJECT_SOURCE_DIR}/src")
  list(TRANSFORM layer_LINKS PREPEND quorva::)
  target_link_libraries(quorva_${name} PUBLIC ${layer_LINKS} PRIVATE quorva::project_options)
endfunction()
