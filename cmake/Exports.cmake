# Limits what a shared library shows to the names in a .def file, which is the one list of exports for both systems.

# torvik_limit_exports(TARGET FILE.def)
#   Linux: a version script made from the list. Windows: the list itself, a version resource and, beside the import
#   library of mingw (libTARGET.dll.a), one that MSVC's linker takes (TARGET.lib).
function(torvik_limit_exports target definition)
  if(WIN32)
    target_sources(${target} PRIVATE ${definition})
    torvik_add_version_resource(${target})
    torvik_add_msvc_import_library(${target} ${definition})
  else()
    torvik_write_version_script(${definition} ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
    target_link_options(${target} PRIVATE -Wl,--version-script=${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
    set_target_properties(${target} PROPERTIES LINK_DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
    if(NOT TORVIK_SANITIZE)
      # The sanitizers' functions come with the program; everything else must be found when the library is linked.
      target_link_options(${target} PRIVATE -Wl,--no-undefined)
    endif()
  endif()
endfunction()

function(torvik_write_version_script definition script)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${definition})
  file(STRINGS ${definition} names REGEX "^  [A-Za-z]")
  list(TRANSFORM names STRIP)
  list(JOIN names ";\n    " joined)
  file(CONFIGURE OUTPUT ${script} CONTENT "{\n  global:\n    ${joined};\n  local:\n    *;\n};\n")
endfunction()

function(torvik_add_version_resource target)
  configure_file(${PROJECT_SOURCE_DIR}/src/api/version.rc.in ${CMAKE_CURRENT_BINARY_DIR}/version.rc @ONLY)
  target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/version.rc)
endfunction()

function(torvik_add_msvc_import_library target definition)
  find_program(TORVIK_DLLTOOL NAMES llvm-dlltool llvm-dlltool-14 REQUIRED)
  set(library ${CMAKE_BINARY_DIR}/${target}.lib)
  add_custom_command(
    OUTPUT ${library}
    COMMAND ${TORVIK_DLLTOOL} -m i386:x86-64 -D ${target}.dll -d ${definition} -l ${library}
    DEPENDS ${definition}
    VERBATIM)
  add_custom_target(${target}_msvc_import_library ALL DEPENDS ${library})
endfunction()
