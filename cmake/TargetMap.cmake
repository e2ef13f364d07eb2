# Writes what CMake knows of every target into the build directory's file target-map.txt, one tab-separated fact a line:
#
#   source  <name>  <absolute path>
#   uses    <name>  <target>                    <name> links <target>
#   passes  <name>  <target>                    who links <name> also gets <target>
#
# Not part of a normal build: scripts/check-includes has CMake include this file at the project() call
# (CMAKE_PROJECT_quorva_INCLUDE), and the map is written when the top folder has been processed.

function(quorva_map_fact)
  list(JOIN ARGV "\t" fact)
  set_property(GLOBAL APPEND_STRING PROPERTY QUORVA_TARGET_MAP "${fact}\n")
endfunction()

# A library's private links stand in its public list too, wrapped in LINK_ONLY: they are linked, but nothing of theirs is
# seen, so that they are left out there. A target that a package brought is known in the folders that asked for the package
# alone, and is told by its name.
function(quorva_map_links target property kind)
  get_target_property(links ${target} ${property})
  foreach(link IN LISTS links)
    if(TARGET "${link}")
      get_target_property(aliased "${link}" ALIASED_TARGET)
      if(aliased)
        set(link "${aliased}")
      endif()
      quorva_map_fact(${kind} ${target} ${link})
    elseif(link MATCHES "^[A-Za-z0-9_]+::[A-Za-z0-9_]+$")
      quorva_map_fact(${kind} ${target} ${link})
    endif()
  endforeach()
endfunction()

function(quorva_map_directory directory)
  get_property(targets DIRECTORY "${directory}" PROPERTY BUILDSYSTEM_TARGETS)
  foreach(target IN LISTS targets)
    get_target_property(sources ${target} SOURCES)
    if(sources)
      foreach(source IN LISTS sources)
        cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY "${directory}" NORMALIZE)
        quorva_map_fact(source ${target} ${source})
      endforeach()
    endif()
    quorva_map_links(${target} INTERFACE_LINK_LIBRARIES passes)
    get_target_property(type ${target} TYPE)
    if(NOT type STREQUAL "INTERFACE_LIBRARY")  # such a target has nothing to link itself
      quorva_map_links(${target} LINK_LIBRARIES uses)
    endif()
  endforeach()
  get_property(subdirectories DIRECTORY "${directory}" PROPERTY SUBDIRECTORIES)
  foreach(subdirectory IN LISTS subdirectories)
    quorva_map_directory("${subdirectory}")
  endforeach()
endfunction()

function(quorva_write_target_map)
  quorva_map_directory("${CMAKE_SOURCE_DIR}")
  get_property(facts GLOBAL PROPERTY QUORVA_TARGET_MAP)
  file(WRITE "${CMAKE_BINARY_DIR}/target-map.txt" "${facts}")
endfunction()

cmake_language(DEFER CALL quorva_write_target_map)
