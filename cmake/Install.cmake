# What `cmake --install` puts in place: the railway and the controlling program with their man pages and completion; for models of others the engine's headers (which
# quorva_layer installs), its archives, and the CMake package Quorva.
include(CMakePackageConfigHelpers)

set(quorva_cmake_folder "${CMAKE_INSTALL_LIBDIR}/cmake/Quorva")

# The layers are many so that each can be held to its place; who only links them wants one archive.
get_property(engine_layers GLOBAL PROPERTY QUORVA_LAYERS)
list(REMOVE_ITEM engine_layers main)
list(TRANSFORM engine_layers REPLACE "(.+)" "$<TARGET_OBJECTS:quorva_\\1>" OUTPUT_VARIABLE engine_objects)
add_library(quorva STATIC ${engine_objects})
target_link_libraries(quorva PUBLIC quorva::arithmetic Threads::Threads)
if(WIN32)
  target_link_libraries(quorva PUBLIC ws2_32)
endif()
if(QUORVA_SANITIZE)
  target_link_options(quorva INTERFACE -fsanitize=${QUORVA_SANITIZE})
endif()

# The entry is an archive of its own, as a program of tests brings one along.
add_library(quorva_entry STATIC $<TARGET_OBJECTS:quorva_main>)
target_link_libraries(quorva_entry PUBLIC quorva)

# Others link them by the names that the models here use: quorva::engine and quorva::main.
set_target_properties(quorva PROPERTIES EXPORT_NAME engine LINKER_LANGUAGE CXX)
set_target_properties(quorva_entry PROPERTIES EXPORT_NAME main LINKER_LANGUAGE CXX OUTPUT_NAME quorva_main)
set_target_properties(quorva_arithmetic PROPERTIES EXPORT_NAME arithmetic)
install(TARGETS quorva quorva_entry quorva_arithmetic
  EXPORT QuorvaTargets
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/quorva")
install(EXPORT QuorvaTargets NAMESPACE quorva:: DESTINATION "${quorva_cmake_folder}")

# A model that was written against an earlier version of the same first number builds against this one.
configure_package_config_file(cmake/QuorvaConfig.cmake.in "${PROJECT_BINARY_DIR}/QuorvaConfig.cmake"
  INSTALL_DESTINATION "${quorva_cmake_folder}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/QuorvaConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES
    "${PROJECT_BINARY_DIR}/QuorvaConfig.cmake"
    "${PROJECT_BINARY_DIR}/QuorvaConfigVersion.cmake"
    cmake/QuorvaAddSimulator.cmake
  DESTINATION "${quorva_cmake_folder}")

install(TARGETS railway RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
configure_file(docs/railway.1.in "${PROJECT_BINARY_DIR}/railway.1" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/railway.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
if(TARGET quorva_program)
  install(TARGETS quorva_program RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
  configure_file(docs/quorva.1.in "${PROJECT_BINARY_DIR}/quorva.1" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/quorva.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
  # The program itself knows its options.
  install(CODE [[
    file(MAKE_DIRECTORY "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/share/bash-completion/completions")
    execute_process(COMMAND "$<TARGET_FILE:quorva_program>" completion bash COMMAND_ERROR_IS_FATAL ANY
      OUTPUT_FILE "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/share/bash-completion/completions/quorva")]])
endif()
install(FILES README.md CHANGELOG.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(DIRECTORY docs DESTINATION "${CMAKE_INSTALL_DOCDIR}" FILES_MATCHING PATTERN "*.md" PATTERN "*.dtd" PATTERN "*.xml")
