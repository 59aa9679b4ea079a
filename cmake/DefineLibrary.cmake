# vrx_declare_folder(<path> [DEPENDS <path>...])
#
# Says from which folders the files of <path> may include: those in DEPENDS, which are declared before it, and what these may
# include. A folder inside <path> without a declaration of its own belongs to <path>. Test include_order checks it.
function(vrx_declare_folder path)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "DEPENDS")
  list(JOIN arg_DEPENDS " " depends)
  set_property(GLOBAL APPEND PROPERTY VRX_FOLDERS "${path}: ${depends}")
endfunction()

# vrx_define_library(<folder> HEADERS <file>... [SOURCES <file>...] [LANE_SOURCES <file>...] [DEPENDS <folder>...])
#
# Declares one folder of vrxmath/ as a unit, vrx::<folder>. A unit is a static library of its own, which tests and
# benchmarks link, so that internals are reachable without being exported; its objects also go into the one
# library that is installed (vrx_define_umbrella), so no file is listed twice. DEPENDS names the folders that it
# may include; an unknown one fails at configure time. LANE_SOURCES are compiled once per instruction set (LaneSets.cmake).
function(vrx_define_library folder)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "HEADERS;SOURCES;LANE_SOURCES;DEPENDS")
  add_library(vrx_${folder}_objects OBJECT ${arg_SOURCES} ${arg_HEADERS})
  vrx_compile_together(vrx_${folder}_objects)
  set(objects vrx_${folder}_objects)
  if(arg_LANE_SOURCES)
    vrx_add_lane_objects(vrx_${folder}_lanes lane_objects SOURCES ${arg_LANE_SOURCES})
    list(APPEND objects ${lane_objects})
  endif()
  add_library(vrx_${folder} STATIC)
  foreach(target IN LISTS objects)
    target_sources(vrx_${folder} PRIVATE $<TARGET_OBJECTS:${target}>)
  endforeach()
  set_property(GLOBAL APPEND PROPERTY VRX_UNIT_OBJECTS ${objects})
  add_library(vrx::${folder} ALIAS vrx_${folder})
  set_target_properties(vrx_${folder}_objects PROPERTIES POSITION_INDEPENDENT_CODE ON)
  set_target_properties(vrx_${folder} PROPERTIES LINKER_LANGUAGE CXX)
  target_compile_definitions(vrx_${folder}_objects PRIVATE VRX_BUILDING)
  if(NOT BUILD_SHARED_LIBS)
    target_compile_definitions(vrx_${folder}_objects PUBLIC VRX_STATIC)
  endif()
  target_compile_definitions(vrx_${folder} PUBLIC VRX_STATIC)
  foreach(target vrx_${folder}_objects vrx_${folder})
    target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR})
    target_link_libraries(${target} PUBLIC vrx_numeric_flags PRIVATE vrx_build_flags)
  endforeach()
  foreach(dependency IN LISTS arg_DEPENDS)
    target_link_libraries(vrx_${folder} PUBLIC vrx::${dependency})
  endforeach()
  foreach(header IN LISTS arg_HEADERS)
    set_property(GLOBAL APPEND PROPERTY VRX_HEADERS vrxmath/${folder}/${header})
  endforeach()
  list(TRANSFORM arg_DEPENDS PREPEND vrxmath/)
  vrx_declare_folder(vrxmath/${folder} DEPENDS vrxmath ${arg_DEPENDS})
  install(FILES ${arg_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vrxmath/${folder})
endfunction()

# Makes the umbrella a DLL that exports its functions by number, as exports/vrxmath.txt lists them, and holds the
# resources. Where it is, there are also the runtime libraries that it shares with its hosts: an exception crosses from
# one module to the other only where both find the same unwinder.
function(vrx_define_dll)
  if(NOT BUILD_SHARED_LIBS)
    message(FATAL_ERROR "On Windows the library is a DLL: set BUILD_SHARED_LIBS")
  endif()
  find_package(Python3 REQUIRED COMPONENTS Interpreter)
  get_property(object_targets GLOBAL PROPERTY VRX_UNIT_OBJECTS)
  list(TRANSFORM object_targets REPLACE "(.+)" "$<TARGET_OBJECTS:\\1>" OUTPUT_VARIABLE objects)
  set(object_list ${CMAKE_BINARY_DIR}/vrx_objects.txt)
  file(GENERATE OUTPUT ${object_list} CONTENT "$<JOIN:${objects},\n>\n")
  # For scripts/windows/number_exports.sh, which looks at the objects when the list does not fit them.
  add_custom_target(vrx_objects DEPENDS ${object_targets})

  set(tool ${PROJECT_SOURCE_DIR}/scripts/exports.py)
  set(exports ${PROJECT_SOURCE_DIR}/exports/vrxmath.txt)
  set(definition ${CMAKE_CURRENT_BINARY_DIR}/vrxmath.def)
  add_custom_command(OUTPUT ${definition}
    COMMAND Python3::Interpreter ${tool} def ${exports} ${object_list} ${definition}
    DEPENDS ${tool} ${exports} ${object_list} ${objects} VERBATIM
    COMMENT "Checking the export numbers against the build")
  add_custom_target(vrx_definition DEPENDS ${definition})
  add_dependencies(vrxmath vrx_definition)
  vrx_version_resource(vrxmath "Colour science of industrial colour matching")
  target_sources(vrxmath PRIVATE $<TARGET_OBJECTS:vrx_resources>)
  target_link_options(vrxmath PRIVATE ${definition} -shared-libgcc)
  set_target_properties(vrxmath PROPERTIES PREFIX "" LINK_DEPENDS ${definition})
  # A release is optimised for speed and carries no names of its own either.
  target_link_options(vrxmath PRIVATE $<$<CONFIG:Release>:-s>)

  # Without their symbols, which are nine tenths of them.
  set(runtime_files "")
  file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
  foreach(name libstdc++-6.dll libwinpthread-1.dll libgcc_s_dw2-1.dll libgcc_s_seh-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name} OUTPUT_VARIABLE file
      OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(IS_ABSOLUTE ${file} AND EXISTS ${file})
      set(stripped ${CMAKE_BINARY_DIR}/bin/${name})
      execute_process(COMMAND ${CMAKE_STRIP} --strip-unneeded -o ${stripped} ${file} COMMAND_ERROR_IS_FATAL ANY)
      list(APPEND runtime_files ${stripped})
    endif()
  endforeach()
  install(FILES ${runtime_files} DESTINATION ${CMAKE_INSTALL_BINDIR})
  set_target_properties(vrxmath PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
endfunction()

# Adds the version resource that the system shows of a DLL or a program.
function(vrx_version_resource target description)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL EXECUTABLE)
    set(suffix exe)
  else()
    set(suffix dll)
  endif()
  set(name ${target})
  string(REPLACE "." "," numbers ${PROJECT_VERSION},0)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/version.rc.in ${target}_version.rc @ONLY)
  target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc)
endfunction()

# Gathers the objects of every unit into the installed library `vrxmath`, with its CMake and pkg-config packages.
function(vrx_define_umbrella)
  get_property(objects GLOBAL PROPERTY VRX_UNIT_OBJECTS)
  add_library(vrxmath)
  add_library(vrxmath::vrxmath ALIAS vrxmath)
  foreach(target IN LISTS objects)
    target_sources(vrxmath PRIVATE $<TARGET_OBJECTS:${target}>)
  endforeach()
  set_target_properties(vrxmath PROPERTIES
    LINKER_LANGUAGE CXX VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
  if(BUILD_SHARED_LIBS AND UNIX AND NOT APPLE)
    # The visibility flags hide what is ours; the script also hides the standard library's templates, which would
    # otherwise be exported with default visibility and keep the library from being unloaded.
    set(exports ${PROJECT_SOURCE_DIR}/cmake/exports.map)
    target_link_options(vrxmath PRIVATE LINKER:--version-script=${exports})
    set_property(TARGET vrxmath APPEND PROPERTY LINK_DEPENDS ${exports})
  endif()
  if(WIN32)
    vrx_define_dll()
  endif()
  target_compile_features(vrxmath INTERFACE cxx_std_20)
  target_include_directories(vrxmath INTERFACE
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_link_libraries(vrxmath PUBLIC vrx_numeric_flags PRIVATE $<BUILD_INTERFACE:vrx_build_flags>)
  set(pc_definitions "")
  if(NOT BUILD_SHARED_LIBS)
    target_compile_definitions(vrxmath INTERFACE VRX_STATIC)
    set(pc_definitions " -DVRX_STATIC")
  endif()

  install(TARGETS vrxmath vrx_numeric_flags EXPORT vrxmathTargets)
  install(EXPORT vrxmathTargets NAMESPACE vrxmath:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vrxmath)
  include(CMakePackageConfigHelpers)
  configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/vrxmathConfig.cmake.in vrxmathConfig.cmake
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vrxmath)
  write_basic_package_version_file(vrxmathConfigVersion.cmake COMPATIBILITY SameMinorVersion)
  # The flags that travel with the library, as CMake hands them on. The language is the host's choice from C++20
  # on; the headers say so where it is older.
  get_target_property(pc_flags vrx_numeric_flags INTERFACE_COMPILE_OPTIONS)
  list(JOIN pc_flags " " pc_flags)
  # Relative to the file itself, so that an installed tree may be moved.
  file(RELATIVE_PATH pc_prefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/vrxmath.pc.in vrxmath.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vrxmathConfig.cmake
                ${CMAKE_CURRENT_BINARY_DIR}/vrxmathConfigVersion.cmake
          DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vrxmath)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vrxmath.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
  install(FILES ${PROJECT_SOURCE_DIR}/vrxmath/export.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vrxmath)
endfunction()
