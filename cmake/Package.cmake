# CPack: a Debian package of everything that cmake/Install.cmake installs, by `cpack --preset package`.
set(CPACK_PACKAGE_NAME quorva)
set(CPACK_PACKAGE_VENDOR "Quorva developers")
set(CPACK_PACKAGE_CONTACT "Quorva developers <developers@quorva.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_DESCRIPTION
  "Quorva estimates performance variables of stochastic activity networks:
models of what can happen, how long it takes and what is worth measuring. A
run repeats a model in batches, and gives the same observations, bit for bit,
for the same command line.
.
This package holds the simulator railway, trains on a moving-block line;
quorva, which runs simulators to a wanted precision and reports the results;
man pages of both; and the engine as a static library with its headers and a CMake
package, to make simulators of models of one's own.")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
# Not the umask of whoever makes the package.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "cmake (>= 3.25), g++ (>= 4:12) | clang (>= 1:14)")

# What Debian asks for besides: put beside the installed files before they are packed.
configure_file(cmake/debian/changelog.in "${PROJECT_BINARY_DIR}/debian/changelog" @ONLY)
configure_file(cmake/debian/copyright "${PROJECT_BINARY_DIR}/debian/copyright" COPYONLY)
configure_file(cmake/debian/complete.cmake.in "${PROJECT_BINARY_DIR}/debian/complete.cmake" @ONLY)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_BINARY_DIR}/debian/complete.cmake")
include(CPack)
